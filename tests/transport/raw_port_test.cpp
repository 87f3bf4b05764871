#include "transport/net/raw_port.h"

#include <gtest/gtest.h>

#include <numeric>
#include <optional>

#include "netproto/snmp.h"
#include "support/tcp_peer.h"
#include "support/test_clock.h"
#include "support/udp_peer.h"
#include "support/virtual_canon.h"
#include "support/virtual_d4_epson.h"
#include "support/virtual_epson.h"
#include "vendors/epson.h"
#include "vendors/epson_exchange.h"

namespace tintoral {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;
using test::EpsonHonesty;
using test::EpsonReply;

constexpr const char* kAddress = "10.77.0.11";
constexpr std::uint16_t kPort = 9100;

// A virtual printer on the raw port.
struct Printer {
    explicit Printer(const test::EpsonSetup& setup = {}, test::TcpManners manners = {})
        : epson(setup),
          peer(kAddress, kPort,
               {[this] { epson.connected(); }, [this](Bytes b) { return epson.onReceive(b); }},
               manners) {}

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

    explicit Query(PrinterRecord& record) {
        run([&] { return port9100GetInkStatus(record, ink, status); });
    }
    Query(int variant, DumpText* dump) {
        run([&] { return tcpEpsonRCInquiry(kAddress, kPort, variant, status, ink, dump); });
    }

    std::vector<int> levels() const {
        std::vector<int> all;
        for (std::size_t i = 0; i < ink.usableCount(); ++i) all.push_back(ink.entries.at(i).level);
        return all;
    }

  private:
    template <typename Call>
    void run(Call call) {
        test::TestClock clock;
        const ScopedClock scope(clock);
        const auto start = std::chrono::steady_clock::now();
        result = call();
        took = std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start);
        paused = std::accumulate(clock.pauses().begin(), clock.pauses().end(), 0us);
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

TEST(EpsonExchange, ExitIsSentToASilentPrinterToo) {
    Printer printer({}, {.silent = true});
    DumpText dump;
    const Query query(2, &dump);
    EXPECT_EQ(query.result, 0);
    EXPECT_TRUE(query.status.empty());
    EXPECT_TRUE(dump.empty());
    EXPECT_GE(query.took, 680ms);
    EXPECT_LT(query.took, 1500ms);
    ASSERT_TRUE(printer.peer.waitForClients(1));
    EXPECT_EQ(printer.epson.commands(), "SM ST ST SM ");
}

TEST(EpsonExchange, NoConnectionOrABrokenOne) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(Query(2, nullptr).result, -1);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("TcpOpen:connect"), std::string::npos);
    const Printer printer({}, {.resets = true});
    const Query query(2, nullptr);
    EXPECT_EQ(query.result, 0);
    EXPECT_LT(query.took, 1000ms);
}

TEST(EpsonExchange, WaitsForAReplyInPieces) {
    const Printer printer({}, {.pieceSize = 10, .pieceGap = 60ms});
    StatusText status;
    InkQuantities ink;
    EXPECT_EQ(tcpEpsonRCInquiry(kAddress, kPort, 2, status, ink, nullptr), 4);  // real pauses
}

TEST(EpsonExchange, BadMannersEndInTime) {
    const struct {
        const char* name;
        EpsonHonesty honesty;
        test::TcpManners manners;
    } cases[] = {
        {"cut off", EpsonHonesty::Honest, {.atMost = 15}},
        {"too late", EpsonHonesty::Honest, {.delay = 600ms}},
        {"dribbles", EpsonHonesty::Honest, {.pieceSize = 1, .pieceGap = 30ms}},
        {"lies", EpsonHonesty::LyingLengths, {}},
    };
    for (const auto& c : cases) {
        test::EpsonSetup setup;
        setup.honesty = c.honesty;
        const Printer printer(setup, c.manners);
        const Query query(2, nullptr);
        EXPECT_EQ(query.result, 0) << c.name;
        EXPECT_LT(query.took, 1000ms) << c.name;
    }
}

TEST(EpsonExchange, HostileRepliesStayInBounds) {
    for (const EpsonReply form : {EpsonReply::Binary, EpsonReply::Text, EpsonReply::Laser}) {
        for (const EpsonHonesty honesty : {EpsonHonesty::LyingLengths, EpsonHonesty::Garbage}) {
            test::EpsonSetup setup = onlyVariant(2, form);
            setup.honesty = honesty;
            const Printer printer(setup);
            const Query query(2, nullptr);
            EXPECT_LE(query.result, 20);
            EXPECT_LE(query.result, query.ink.count);
        }
    }
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

TEST(RawPort, OnlyVariantZeroWithoutD4) {
    Printer printer(onlyVariant(2, EpsonReply::Binary));
    PrinterRecord record = recordOf("EPSON");
    EXPECT_EQ(Query(record).result, 0);
    ASSERT_TRUE(printer.peer.waitForClients(1));
    EXPECT_EQ(printer.epson.commands(), "IQ ");
    record.set(keys::commandType, "BDC");
    EXPECT_EQ(Query(record).result, 0);
    EXPECT_EQ(record.text(keys::commandType), "BDC");
    EXPECT_EQ(printer.epson.commands(), "IQ ");
}

TEST(RawPort, LpdQueueOfABaseStationStartsAtRemoteModeOnTheUsualPort) {
    const Printer printer(onlyVariant(2, EpsonReply::Binary));
    PrinterRecord record = recordOf("EPSON");
    record.set(keys::port, 515);
    StatusText status;
    InkQuantities ink;
    test::TestClock clock;
    const ScopedClock scope(clock);
    EXPECT_EQ(port9100GetEpsonRemoteInkStatus(record, ink, status), 4);
    EXPECT_EQ(record.text(keys::commandType), "RC");
}

TEST(RawPort, NeverContacted) {
    Printer printer;
    PrinterRecord record = recordOf("EPSON");
    record.set(keys::active, kNo);
    EXPECT_EQ(Query(record).result, 0);
    port9100NozzleOptions(record, kOptionCleaning);
    record.set(keys::active, kYes);
    for (const std::int64_t port : {0L, -1L, 65536L, 9100L + 65536L}) {
        record.set(keys::port, port);
        EXPECT_EQ(Query(record).result, -1) << port;
        port9100NozzleOptions(record, kOptionCleaning);
    }
    PrinterRecord nowhere = recordOf("EPSON", "");
    EXPECT_EQ(Query(nowhere).result, -1);
    EXPECT_FALSE(printer.peer.waitForClients(1, 100ms));
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

TEST(RawPort, UnreachableHosts) {
    testing::internal::CaptureStderr();
    PrinterRecord refusing = recordOf("EPSON");
    refusing.set(keys::commandType, "RC");
    const Query refused(refusing);
    EXPECT_EQ(refused.result, -1);
    EXPECT_LT(refused.took, 500ms);
    EXPECT_FALSE(refusing.contains(keys::commandType));

    PrinterRecord absent = recordOf("EPSON", "10.77.0.99");
    const Query lost(absent);
    EXPECT_EQ(lost.result, -1);
    EXPECT_GE(lost.took, 1900ms);
    EXPECT_LT(lost.took, 3000ms);
    testing::internal::GetCapturedStderr();
}

TEST(RawPort, MaintenanceJobs) {
    test::EpsonSetup setup;
    setup.cleaningUsesInk = true;
    Printer printer(setup);
    PrinterRecord record = recordOf("EPSON");
    port9100NozzleOptions(record, kOptionCleaning);
    port9100NozzleOptions(record, kOptionNozzleCheck);
    port9100NozzleOptions(record, kOptionCleaningAndTestPrint);  // no such job
    port9100NozzleOptions(recordOf("Brother"), kOptionCleaning);
    ASSERT_TRUE(printer.peer.waitForClients(2));
    EXPECT_EQ(printer.epson.jobs(), (std::vector<std::string>{"cleaning", "nozzle check 10"}));
    EXPECT_EQ(printer.epson.commands(), "CH JS NC JE ");
    EXPECT_EQ(printer.epson.inks().front().level, 58);
}

// Answers the status request with "idle" and the supplies table with a row for each description,
// half full; the row is the number after the column in the OIDs asked for.
class SnmpPrinter {
  public:
    explicit SnmpPrinter(std::vector<std::string> supplies)
        : supplies_(std::move(supplies)),
          peer_("10.77.0.12", 161, [this](Bytes request) { return answer(request); }) {}

  private:
    std::optional<test::Datagram> answer(Bytes request) {
        SnmpMessage message;
        const int bindings = parseSnmpPacket(request, message);
        message.pduType = snmp_pdus::getResponse;
        if (bindings == 8) {
            nextRow(message);
        } else {
            set(message.varBinds.at(0), "1.3.6.1.2.1.25.3.5.1.1.1", 3);
            set(message.varBinds.at(1), "1.3.6.1.2.1.25.3.5.1.2.1", 0);
        }
        test::Datagram reply(1024);
        reply.resize(mkSNMPSrcPacket(reply, message));
        return reply;
    }

    void nextRow(SnmpMessage& message) {
        const bool first = message.varBinds.at(0).oid.view() == "1.3.6.1.2.1.43.11.1.1.2";
        row_ = first ? 0 : row_ + 1;
        const bool past = row_ >= supplies_.size();
        for (std::size_t i = 0; i < 8; ++i) {
            const std::string column = std::to_string(i + (past ? 3 : 2));
            const std::string cell = column + ".1." + std::to_string(row_ + 1);
            set(message.varBinds.at(i), "1.3.6.1.2.1.43.11.1.1." + cell, i == 7 ? 50 : 100);
        }
        if (past) return;
        message.varBinds.at(4).valueType = ber_tags::octetString;
        message.varBinds.at(4).value.text.assign(supplies_[row_]);
    }

    static void set(SnmpVarBind& binding, const std::string& oid, int number) {
        binding.oid.assign(oid);
        binding.valueType = ber_tags::integer;
        binding.valueLength = 4;
        binding.value.number = number;
    }

    std::vector<std::string> supplies_;
    std::size_t row_ = 0;
    test::UdpPeer peer_;
};

TEST(RawPort, OtherMakersAreAskedOverThePrinterMib) {
    const SnmpPrinter printer({"Black", "Cyan\x1B[31m\nink"});
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
}

TEST(RawPort, NamelessSuppliesLeaveNoColors) {
    const SnmpPrinter printer({"Black", ""});
    PrinterRecord record = recordOf("Brother", "10.77.0.12");
    EXPECT_EQ(Query(record).result, 2);
    EXPECT_FALSE(record.contains(keys::colors));
}

}  // namespace
}  // namespace tintoral
