#include "transport/net/riousb.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "simulators/tcp_peer.h"
#include "simulators/virtual_base_station.h"
#include "simulators/virtual_canon.h"
#include "simulators/virtual_d4_epson.h"
#include "simulators/virtual_epson.h"
#include "support/byte_streams.h"
#include "support/measure.h"
#include "support/test_clock.h"
#include "transport/net/riousb_ink_status.h"
#include "vendors/epson.h"

namespace tintoral {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;
using test::BaseStationSetup;
using test::hexOf;
using test::saying;
using test::timed;

constexpr const char* kAddress = "::1";
constexpr std::uint16_t kPort = 10000;

struct Station {
    explicit Station(const BaseStationSetup& setup, test::TcpManners manners = {})
        : station(setup),
          peer(kAddress, kPort,
               {[this] { station.connected(); }, [this](Bytes b) { return station.onReceive(b); }},
               std::move(manners)) {}

    test::VirtualBaseStation station;
    test::TcpPeer peer;
};

// One connection; the pauses before each look for a reply are counted, not waited.
struct Opened {
    Opened() : scope(clock), connection(riousbOpen(kAddress, kPort, "usb1")) {}
    ~Opened() { riousbClose(std::move(connection)); }

    int write(std::string_view text) const { return riousbWrite(*connection, asBytes(text)); }
    std::string read(std::size_t size = 1024, milliseconds timeout = 300ms) {
        std::vector<std::uint8_t> buffer(size);
        result = riousbRead(*connection, buffer, timeout);
        return std::string(asText(buffer).substr(0, static_cast<std::size_t>(std::max(result, 0))));
    }

    test::TestClock clock;
    ScopedClock scope;
    std::unique_ptr<RiousbConnection> connection;
    int result = 0;
};

std::string contentOf(RiousbReadCache cache) {
    std::string all;
    std::array<std::uint8_t, 100> buffer;
    while (const std::size_t count = cache.topReadCache(buffer))
        all += asText(Bytes(buffer).first(count));
    return all;
}

TEST(RiousbReadCache, OrdersByItsOwnRule) {
    const struct {
        std::vector<std::uint32_t> sequences;  // of "a", "b", "c", ...
        const char* content;
    } cases[] = {
        {{4, 3}, "ba"},
        {{4, 4}, "ba"},
        {{2, 3}, "ab"},
        // From the third one on others are lost, as meant.
        {{2, 3, 4}, "ac"},
        {{2, 5, 3}, "ac"},
        {{1, 9, 0}, "cab"},
        {{5, 8, 4, 3, 4}, "deab"},
    };
    for (const auto& c : cases) {
        RiousbReadCache cache;
        char name = 'a';
        for (const std::uint32_t sequence : c.sequences)
            cache.addReadCache(sequence, asBytes(std::string(1, name++)));
        EXPECT_EQ(contentOf(cache), c.content) << testing::PrintToString(c.sequences);
    }
}

TEST(RiousbReadCache, GivesPiecesAndHoldsNoMoreThanItsRoom) {
    RiousbReadCache cache;
    cache.addReadCache(1, asBytes("first"));
    cache.addReadCache(2, asBytes("second"));
    std::array<std::uint8_t, 3> three;
    EXPECT_EQ(cache.topReadCache(three), 3U);
    EXPECT_EQ(contentOf(cache), "stsecond");
    EXPECT_EQ(cache.delReadCache(7), 0U);
    EXPECT_EQ(cache.delReadCache(1), 2U);
    EXPECT_EQ(contentOf(cache), "second");
    cache.addReadCache(1, std::vector<std::uint8_t>(RiousbReadCache::kRoom, 'x'));
    EXPECT_EQ(contentOf(cache).size(), RiousbReadCache::kRoom);
    cache.delAllReadCache();
    EXPECT_TRUE(cache.empty());
}

TEST(Riousb, RequestsByteForByte) {
    Station station({.printer = saying({"said"})});
    {
        Opened opened;
        ASSERT_NE(opened.connection, nullptr);
        EXPECT_EQ(opened.write("\x1B@"), 4);
        EXPECT_EQ(opened.read(), "said");
        FixedText<20> deviceID;
        EXPECT_EQ(riousbGetDeviceID(*opened.connection, deviceID, 50ms), 0);
        EXPECT_EQ(opened.clock.pauses(), std::vector<std::chrono::microseconds>(2, 100ms));
    }
    ASSERT_TRUE(station.peer.waitForClients(1));
    std::string heard;
    for (const std::string& request : station.station.requests())
        heard += hexOf(asBytes(request)) + "\n";
    EXPECT_EQ(heard,
              "00000001000000010000000100000004000000000000000075736231\n"
              "00000001000000040000000200000002000000001234ABCD1B40\n"
              "00000001000000030000000300000004000000001234ABCD00000400\n"
              "00000001000000050000000400000008000000001234ABCD0000000100002000\n"
              "00000001000000020000000500000000000000001234ABCD\n");
}

TEST(Riousb, OpensNothingThatRefuses) {
    Station station({});
    EXPECT_EQ(riousbOpen(kAddress, kPort, "usb2"), nullptr);
    EXPECT_EQ(riousbOpen(kAddress, kPort + 1, "usb1"), nullptr);
    EXPECT_EQ(riousbOpen("10.77.0.11", kPort, "usb1"), nullptr);
    for (const std::size_t atMost : {0U, 23U}) {
        station.peer.setManners({.atMost = atMost});
        const auto took = timed([] { EXPECT_EQ(riousbOpen(kAddress, kPort, "usb1"), nullptr); });
        EXPECT_GE(took, 200ms);
        EXPECT_LT(took, 400ms);
    }
    station.peer.setManners({.pieceSize = 5, .pieceGap = 1ms});
    EXPECT_NE(Opened().connection, nullptr) << "a reply in pieces is one";
}

TEST(Riousb, ALengthThatNothingFollowsIsNoPayload) {
    Station station({.printer = saying({"said"}), .openLength = 28});
    Opened opened;
    ASSERT_NE(opened.connection, nullptr);
    opened.write("ask");
    EXPECT_EQ(opened.read(), "said");
}

TEST(Riousb, DataBeforeAnAcknowledgementIsReadWithoutARequest) {
    Station station({.printer = saying({"one", "two"}), .dataBeforeAcknowledgement = true});
    Opened opened;
    EXPECT_EQ(opened.write("ask"), 4);
    EXPECT_EQ(opened.read(2), "tw");  // of the same sequence number: the later one first
    EXPECT_EQ(opened.read(), "o");
    EXPECT_EQ(opened.read(), "one");
    EXPECT_EQ(station.station.requests().size(), 2U);
    EXPECT_EQ(opened.read(1024, 50ms), "");
    EXPECT_EQ(opened.result, 0);
}

TEST(Riousb, WritesEndWhateverComes) {
    const struct {
        BaseStationSetup setup;
        int result;
        milliseconds took;
    } cases[] = {
        {{.refuses = {4}}, -1, 0ms},
        {{.ignores = {4}}, 0, 500ms},
        {{.emptyAcknowledgements = true}, 0, 500ms},
        {{.chatterType = 77}, 4, 0ms},
    };
    for (const auto& c : cases) {
        Station station(c.setup);
        Opened opened;
        const auto took = timed([&] { EXPECT_EQ(opened.write("x"), c.result); });
        EXPECT_GE(took, c.took);
        EXPECT_LT(took, c.took + 300ms);
    }
}

TEST(Riousb, ReadsTakeNoMoreThanTheyCanAndLoseNothing) {
    Station station({.printer = saying({std::string(3000, 'a') + "b", "c"}),
                     .deviceID = std::string(600, 'd'),
                     .deviceIDBeforeData = true,
                     .ignoresBytesWanted = true});
    Opened opened;
    opened.write("ask");
    EXPECT_EQ(opened.read(1000), std::string(1000, 'a'));
    EXPECT_EQ(opened.read(2000), std::string(2000, 'a'));
    EXPECT_EQ(opened.read(), "b");
    EXPECT_EQ(opened.read(), "c");
    const std::size_t requests = station.station.requests().size();
    FixedText<1025> deviceID;
    EXPECT_EQ(riousbGetDeviceID(*opened.connection, deviceID, 100ms), 512);
    EXPECT_EQ(station.station.requests().size(), requests) << "it came unasked";
    EXPECT_EQ(riousbGetDeviceID(*opened.connection, deviceID, 300ms), 600);
}

TEST(Riousb, ALengthThatLiesEndsTheConnection) {
    for (const std::uint32_t added : {1U, 0xFFFF0000U}) {
        Station station({.printer = saying({"status", "more"}), .addedLength = added});
        Opened opened;
        opened.write("ask");
        const auto took = timed([&] { EXPECT_EQ(opened.read(), "status"); });
        EXPECT_LT(took, 500ms);
        EXPECT_EQ(opened.read(), "");
        EXPECT_EQ(opened.result, -1);
        EXPECT_EQ(opened.write("ask"), -1);
    }
    Station station({.refuses = {3}});
    Opened opened;
    opened.read();
    EXPECT_EQ(opened.result, -1);
}

PrinterRecord recordOf(std::string_view maker, const char* commandSet = "",
                       const char* commandType = "D4") {
    return {{std::string(keys::serverType), server_types::airPort},
            {std::string(keys::makerName), maker},
            {std::string(keys::modelName), "iP4300"},
            {std::string(keys::hostName), kAddress},
            {std::string(keys::port), kPort},
            {std::string(keys::usbPrinterName), "usb1"},
            {std::string(keys::usbCmd), commandSet},
            {std::string(keys::commandType), commandType}};
}

struct Query {
    explicit Query(PrinterRecord printer) : scope(clock) {
        took = timed([&] { result = riousbGetInkStatus(printer, ink, status); });
    }

    test::TestClock clock;
    ScopedClock scope;
    int result = 0;
    InkQuantities ink;
    StatusText status;
    milliseconds took{};
};

TEST(RiousbInkStatus, EachMakerIsAskedInItsLanguage) {
    using enum test::EpsonReply;
    test::VirtualEpson epson;
    test::VirtualEpson epson1({.replies = {None, Text, None}});
    test::VirtualD4Epson d4;
    test::VirtualCanon canon({.warnings = "1541"});
    test::VirtualCanon ivec({.ivec = true, .status = "04"});
    const auto d4Transfers = [&](Bytes bytes) { return d4.transfersFor(bytes); };
    const std::vector four{60, 42, 31, 80}, five{75, 40, 62, 0, 18};
    const struct {
        PrinterRecord record;
        test::SharedPrinter printer;
        std::vector<int> levels;
        const char* status;
    } cases[] = {
        {recordOf("EPSON", "BDC"), test::inOneTransfer(epson), four, "Idle"},
        {recordOf("EPSON", "BDC", "RC1"), test::inOneTransfer(epson1), four, "Idle"},
        {recordOf("EPSON", "BDC,D4", "RC1"), d4Transfers, four, "Idle"},
        {recordOf("Canon", "BJL"), test::inOneTransfer(canon), five, "Idle"},
        {recordOf("Canon", "BJL,IVEC"), test::inTransfersOf(100, ivec), five, "Ink low"},
        {recordOf("HP", "MLC,PCL,PML"), saying({}), {75, 60}, "Idle"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.record.text(keys::usbCmd));
        Station station(
            {.printer = c.printer,
             .deviceID = "MFG:HP;VSTATUS:$HB0$NC0,ff,DN,IDLE,CUT,K0,C0,DP,NR,KP075,CP060;"});
        const Query query(c.record);
        EXPECT_EQ(query.result, static_cast<int>(c.levels.size()));
        EXPECT_EQ(test::levelsOf(query.ink), c.levels);
        EXPECT_EQ(query.status.view(), c.status);
        ASSERT_TRUE(station.peer.waitForClients(1));
        EXPECT_EQ(station.station.requests().back().size(), 24U) << "a close";
    }
    EXPECT_FALSE(d4.inPacketMode());
    EXPECT_EQ(canon.requests().size(), 2U) << "the inquiry and its end";
    EXPECT_EQ(ivec.requests(), std::vector<std::string>{"IVEC"});
}

TEST(RiousbInkStatus, IsNothingWithoutAPrinterThatAnswers) {
    Station station({});
    const auto changed = [](std::string_view key, Value value) {
        PrinterRecord record = recordOf("Canon");
        record.set(key, std::move(value));
        return record;
    };
    for (const PrinterRecord& record :
         {changed(keys::active, kNo), changed(keys::serverType, server_types::network),
          changed(keys::port, 0), changed(keys::port, kPort + 65536), changed(keys::hostName, ""),
          recordOf("Brother")}) {
        EXPECT_EQ(Query(record).result, 0);
        riousbNozzleOptions(record, kOptionCleaning);
    }
    EXPECT_FALSE(station.peer.waitForClients(1, 50ms));
    EXPECT_EQ(Query(changed(keys::usbPrinterName, "other")).result, 0);

    station.station.change({.ignores = {3, 5}});
    for (const auto& [record, waits] :
         {std::pair(recordOf("EPSON"), 800ms), std::pair(recordOf("Canon"), 600ms),
          std::pair(recordOf("Canon", "IVEC"), 600ms), std::pair(recordOf("HP"), 1000ms)}) {
        const Query query(record);
        EXPECT_EQ(query.result, 0);
        EXPECT_EQ(query.ink.count, 0);
        EXPECT_GE(query.took, waits);
        EXPECT_LT(query.took, waits + 300ms);
    }
}

TEST(RiousbInkStatus, MaintenanceJobs) {
    test::VirtualEpson epson;
    test::VirtualCanon canon;
    for (const char* maker : {"EPSON", "Canon", "HP"}) {
        Station station(
            {.printer = maker[0] == 'E' ? test::inOneTransfer(epson) : test::inOneTransfer(canon)});
        riousbNozzleOptions(recordOf(maker), kOptionCleaning);
        riousbNozzleOptions(recordOf(maker), kOptionCleaningAndTestPrint);  // no such job
        EXPECT_EQ(station.peer.waitForClients(1, 100ms), maker[0] != 'H');
    }
    EXPECT_EQ(epson.jobs(), std::vector<std::string>{"cleaning"});
    EXPECT_EQ(canon.jobs(), std::vector<std::string>{"cleaning"});
}

}  // namespace
}  // namespace tintoral
