#include "transport/net/raw_port.h"

#include <gtest/gtest.h>

#include <numeric>
#include <utility>

#include "simulators/tcp_peer.h"
#include "simulators/virtual_canon.h"
#include "simulators/virtual_d4_epson.h"
#include "simulators/virtual_epson.h"
#include "support/snmp_agent.h"
#include "support/test_clock.h"
#include "vendors/epson.h"
#include "vendors/epson_exchange.h"

namespace tintoral {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;
using test::EpsonReply;

constexpr const char* kAddress = "10.77.0.11";
constexpr std::uint16_t kPort = 9100;

// A virtual printer on the raw port.
struct Printer {
    explicit Printer(const test::EpsonSetup& setup = {}, test::TcpManners manners = {})
        : epson(setup),
          peer(kAddress, kPort,
               {[this] { epson.connected(); }, [this](Bytes b) { return epson.onReceive(b); }},
               std::move(manners)) {}

    test::VirtualEpson epson;
    test::TcpPeer peer;
};

test::EpsonSetup onlyVariant(std::size_t variant, EpsonReply form) {
    test::EpsonSetup setup;
    setup.replies.fill(EpsonReply::None);
    setup.replies.at(variant) = form;
    return setup;
}

PrinterRecord recordOf(const char* maker, const char* address = kAddress) {
    return {{std::string(keys::makerName), maker},
            {std::string(keys::modelName), "Stylus Photo R800"},
            {std::string(keys::ipAdrs), address},
            {std::string(keys::port), kPort}};
}

// One call, and how long it took; the pauses between send and receive are counted, not waited.
struct Query {
    int result;
    StatusText status{"before"};
    InkQuantities ink;
    milliseconds took;
    std::chrono::microseconds paused;

    // `inquire` is called with a place for the ink levels and one for the status.
    template <typename Inquire>
    explicit Query(Inquire inquire) {
        test::TestClock clock;
        const ScopedClock scope(clock);
        const auto start = std::chrono::steady_clock::now();
        result = inquire(ink, status);
        took = std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start);
        paused = std::accumulate(clock.pauses().begin(), clock.pauses().end(), 0us);
    }
    explicit Query(PrinterRecord& record)
        : Query([&](auto& i, auto& s) { return port9100GetInkStatus(record, i, s); }) {}
    Query(int variant, DumpText* dump)
        : Query([&](auto& i, auto& s) {
              return tcpEpsonRCInquiry(kAddress, kPort, variant, s, i, dump);
          }) {}

    std::vector<int> levels() const {
        std::vector<int> all;
        for (std::size_t i = 0; i < ink.usableCount(); ++i) all.push_back(ink.entries.at(i).level);
        return all;
    }
};

TEST(EpsonExchange, EveryVariantAsksWaitsAndLeavesRemoteMode) {
    const struct {
        int variant;
        EpsonReply form;
        const char* commands;
        milliseconds pause;
    } cases[] = {
        {0, EpsonReply::Text, "IQ ", 2000ms},
        {1, EpsonReply::Laser, "SM ST SM ", 2000ms},
        {2, EpsonReply::Binary, "SM ST ST SM ", 1000ms},
    };
    for (const auto& c : cases) {
        Printer printer(onlyVariant(static_cast<std::size_t>(c.variant), c.form));
        DumpText dump;
        const Query query(c.variant, &dump);
        EXPECT_EQ(query.result, 4) << c.variant;
        EXPECT_EQ(query.levels(), (std::vector{60, 42, 31, 80})) << c.variant;
        EXPECT_EQ(query.status.view(), "Idle");
        EXPECT_EQ(query.paused, c.pause);
        EXPECT_TRUE(dump.view().starts_with("0000  40 ")) << dump.c_str();
        ASSERT_TRUE(printer.peer.waitForClients(1));
        EXPECT_EQ(printer.epson.commands(), c.commands);
        EXPECT_TRUE(printer.epson.heard().ends_with(std::string_view("\x1B\0\0\0\x1B@", 6)));
    }
}

TEST(EpsonExchange, WaitsForAReplyInPieces) {
    const Printer printer({}, {.pieceSize = 10, .pieceGap = 60ms});
    StatusText status;
    InkQuantities ink;
    EXPECT_EQ(tcpEpsonRCInquiry(kAddress, kPort, 2, status, ink, nullptr), 4);  // real pauses
}

TEST(EpsonExchange, SilenceEndsWithTheExitCommand) {
    Printer printer({}, {.silent = true});
    const Query query(2, nullptr);
    EXPECT_EQ(query.result, 0);
    EXPECT_GE(query.took, 680ms);
    EXPECT_TRUE(query.status.empty());
    EXPECT_TRUE(printer.peer.waitForClients(1));
    EXPECT_EQ(printer.epson.commands(), "SM ST ST SM ");
}

TEST(RawPort, ChainFindsTheVariantAndRemembersIt) {
    Printer printer(onlyVariant(1, EpsonReply::Text));
    PrinterRecord record = recordOf("EPSON");
    record.set(keys::usbCmd, "ESCPL2,BDC,D4");
    EXPECT_EQ(Query(record).result, 4);
    EXPECT_EQ(record.text(keys::commandType), "RC1");
    EXPECT_EQ(Query(record).result, 4);
    ASSERT_TRUE(printer.peer.waitForClients(4));  // D4, RC, RC1; RC1
    EXPECT_EQ(printer.epson.commands(), "SM ST ST SM SM ST SM SM ST SM ");

    printer.epson.change(onlyVariant(2, EpsonReply::Binary));
    const Query failed(record);
    EXPECT_EQ(failed.result, 0);
    EXPECT_LT(failed.took, 4000ms);  // two variants, 200 ms + 1600 ms each
    EXPECT_FALSE(record.contains(keys::commandType));
}

TEST(RawPort, OnlyVariantZeroWithoutD4ButRemoteModeForAnLpdQueue) {
    Printer printer(onlyVariant(2, EpsonReply::Binary));
    PrinterRecord record = recordOf("EPSON");
    EXPECT_EQ(Query(record).result, 0);
    ASSERT_TRUE(printer.peer.waitForClients(1));
    EXPECT_EQ(printer.epson.commands(), "IQ ");
    record.set(keys::commandType, "BDC");
    EXPECT_EQ(Query(record).result, 0);
    EXPECT_EQ(record.text(keys::commandType), "BDC");
    EXPECT_EQ(printer.epson.commands(), "IQ ");

    PrinterRecord queue = recordOf("EPSON");
    queue.set(keys::port, 515);  // asked on the usual port all the same
    const Query query(
        [&](auto& i, auto& s) { return port9100GetEpsonRemoteInkStatus(queue, i, s); });
    EXPECT_EQ(query.result, 4);
    EXPECT_EQ(queue.text(keys::commandType), "RC");
}

TEST(EpsonExchange, AFailedSendIsReported) {
    const test::TcpPeer goneAtOnce(kAddress, kPort, {.received = {}, .greeting = {'x'}},
                                   {.resets = true});
    testing::internal::CaptureStderr();
    const Query query(2, nullptr);
    EXPECT_EQ(query.result, -1);
    EXPECT_EQ(query.status.view(), "before");
    EXPECT_TRUE(testing::internal::GetCapturedStderr().starts_with("tcpSendAndReceive: send : "));
}

TEST(RawPort, NeverContacted) {
    Printer printer;
    PrinterRecord record = recordOf("EPSON");
    record.set(keys::active, kNo);
    EXPECT_EQ(Query(record).result, 0);
    port9100NozzleOptions(record, kOptionCleaning);
    record.set(keys::active, kYes);
    for (const std::int64_t port : {0L, -1L, 9100L + 65536L}) {
        record.set(keys::port, port);
        EXPECT_EQ(Query(record).result, -1) << port;
        port9100NozzleOptions(record, kOptionCleaning);
    }
    PrinterRecord nowhere = recordOf("EPSON", "");
    EXPECT_EQ(Query(nowhere).result, -1);
    EXPECT_FALSE(printer.peer.waitForClients(1, 100ms));
}

TEST(RawPort, MaintenanceJobs) {
    Printer printer;
    PrinterRecord record = recordOf("EPSON");
    port9100NozzleOptions(record, kOptionCleaning);
    port9100NozzleOptions(record, kOptionNozzleCheck);
    port9100NozzleOptions(record, kOptionCleaningAndTestPrint);  // no such job
    ASSERT_TRUE(printer.peer.waitForClients(2));
    EXPECT_EQ(printer.epson.jobs(), (std::vector<std::string>{"cleaning", "nozzle check 10"}));
    port9100NozzleOptions(recordOf("Canon"), kOptionCleaning);
    ASSERT_TRUE(printer.peer.waitForClients(3));
    EXPECT_EQ(printer.epson.heard().size(), 68U + 120 + 40);
}

TEST(RawPort, OtherMakersAreAskedOverThePrinterMib) {
    if (!test::hasSnmpAgent()) GTEST_SKIP() << "no snmpd on this machine";
    test::SnmpPrinter printer;
    printer.supplies = {{"Black", 100, 50}, {"Cyan\x1B[31mink", 100, 50}};
    test::SnmpAgent agent("10.77.0.12", printer);
    PrinterRecord record = recordOf("Brother", "10.77.0.12");
    const Query query(record);
    EXPECT_EQ(query.result, 2);
    EXPECT_EQ(query.levels(), (std::vector{50, 50}));
    EXPECT_EQ(query.status.view(), "Idle");
    // The last name only, as meant, and nothing in it that could steer a terminal.
    EXPECT_EQ(record.texts(keys::colors), std::vector<std::string>{"Cyan[31mink"});
    record.set(keys::colors, std::vector<std::string>{"Own"});
    EXPECT_EQ(Query(record).result, 2);
    EXPECT_EQ(record.texts(keys::colors), std::vector<std::string>{"Own"});
    record.set(keys::port, 0);  // which SNMP does not use
    EXPECT_EQ(Query(record).result, 2);

    printer.supplies.back().description.clear();
    agent.change(printer);
    PrinterRecord nameless = recordOf("Brother", "10.77.0.12");
    EXPECT_EQ(Query(nameless).result, 2);
    EXPECT_FALSE(nameless.contains(keys::colors));
}

TEST(RawPort, D4FirstWhereTheCommandSetNamesIt) {
    test::VirtualD4Epson epson;
    test::TcpPeer peer(kAddress, kPort, {.received = [&](Bytes b) { return epson.onReceive(b); }});
    PrinterRecord record = recordOf("EPSON");
    record.set(keys::usbCmd, "ESCPL2,BDC,D4");
    const Query query(record);
    EXPECT_EQ(query.result, 4);
    EXPECT_EQ(query.levels(), (std::vector{60, 42, 31, 80}));
    EXPECT_EQ(query.status.view(), "Idle");
    EXPECT_EQ(record.text(keys::commandType), "D4");
    port9100NozzleOptions(record, kOptionCleaning);  // in remote mode all the same
    ASSERT_TRUE(peer.waitForClients(2));
    EXPECT_EQ(epson.jobs(), std::vector<std::string>{"cleaning"});
    EXPECT_EQ(Query(record).levels(), (std::vector{58, 40, 29, 78}));
}

TEST(RawPort, CanonIsAskedInItsLanguage) {
    const struct {
        const char* commandSet;
        std::vector<std::string> requests;
    } cases[] = {
        {"",
         {"SSR=DJS,DBS,DWS,DOC,DSC,BST,PID,CHD,LVR,HCU,CIR,CTK,AOF,PFS,FSI,PRF,HRI;", "SSR=DF;"}},
        {"BJL,BJRaster3,BSCCe,IVEC,IVECPLI", {"IVEC"}},
    };
    for (const auto& c : cases) {
        PrinterRecord record = recordOf("Canon");
        record.set(keys::modelName, "iP4300");
        record.set(keys::usbCmd, c.commandSet);
        test::VirtualCanon canon({.ivec = record.text(keys::usbCmd).ends_with("IVECPLI"),
                                  .status = "04",
                                  .cleaningUsesInk = true});
        test::TcpPeer peer(
            kAddress, kPort,
            {[&] { canon.connected(); }, [&](Bytes b) { return canon.onReceive(b); }});
        port9100NozzleOptions(record, kOptionCleaning);
        port9100NozzleOptions(record, kOptionNozzleCheck);
        const Query query(record);
        EXPECT_EQ(query.result, 5);
        EXPECT_EQ(query.levels(), (std::vector{73, 38, 60, 0, 16}));
        EXPECT_EQ(query.status.view(), "Ink low");
        ASSERT_TRUE(peer.waitForClients(3));
        EXPECT_EQ(canon.jobs(), (std::vector<std::string>{"cleaning", "nozzle check"}));
        EXPECT_EQ(canon.requests(), c.requests);
    }
}

}  // namespace
}  // namespace tintoral
