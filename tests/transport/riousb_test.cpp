#include "transport/net/riousb.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "support/byte_streams.h"
#include "support/tcp_peer.h"
#include "support/test_clock.h"
#include "support/virtual_base_station.h"
#include "support/virtual_canon.h"
#include "support/virtual_d4_epson.h"
#include "support/virtual_epson.h"
#include "transport/net/riousb_ink_status.h"
#include "vendors/epson.h"

namespace tintoral {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;
using test::BaseStationSetup;
using test::hexOf;

constexpr const char* kAddress = "::1";
constexpr std::uint16_t kPort = 10000;

struct Station {
    explicit Station(const BaseStationSetup& setup, test::TcpManners manners = {})
        : station(setup),
          peer(kAddress, kPort,
               {[this] { station.connected(); }, [this](Bytes b) { return station.onReceive(b); }},
               manners) {}

    test::VirtualBaseStation station;
    test::TcpPeer peer;
};

// A printer that answers each write with the same transfers.
BaseStationSetup saying(std::vector<std::string> transfers) {
    BaseStationSetup setup;
    setup.printer = [transfers](Bytes) {
        test::Transfers said;
        for (const std::string& text : transfers) said.emplace_back(text.begin(), text.end());
        return said;
    };
    return setup;
}

milliseconds timed(const std::function<void()>& call) {
    const auto start = std::chrono::steady_clock::now();
    call();
    return std::chrono::floor<milliseconds>(std::chrono::steady_clock::now() - start);
}

// One connection; the pauses before each look for a reply are counted, not waited.
struct Opened {
    Opened() : scope(clock), connection(riousbOpen(kAddress, kPort, "usb1")) {}
    ~Opened() { riousbClose(std::move(connection)); }

    int write(std::string_view text) { return riousbWrite(*connection, asBytes(text)); }
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
    Station station(saying({"said"}));
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
    std::vector<std::string> heard;
    for (const std::string& request : station.station.requests())
        heard.push_back(hexOf(asBytes(request)));
    const std::vector<std::string> expected{
        "000000010000000100000001000000040000000000000000"
        "75736231",
        "0000000100000004000000020000000200000000"
        "1234ABCD"
        "1B40",
        "0000000100000003000000030000000400000000"
        "1234ABCD"
        "00000400",
        "0000000100000005000000040000000800000000"
        "1234ABCD"
        "0000000100002000",
        "0000000100000002000000050000000000000000"
        "1234ABCD",
    };
    EXPECT_EQ(heard, expected);
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

TEST(Riousb, DataBeforeAnAcknowledgementIsReadWithoutARequest) {
    BaseStationSetup setup = saying({"one", "two"});
    setup.dataBeforeAcknowledgement = true;
    Station station(setup);
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
        const char* name;
        BaseStationSetup setup;
        int result;
        milliseconds atLeast, atMost;
    } cases[] = {
        {"refused", {.refuses = {4}}, -1, 0ms, 200ms},
        {"silence", {.ignores = {4}}, 0, 500ms, 700ms},
        {"empty", {.emptyAcknowledgements = true}, 0, 500ms, 700ms},
        {"unknown messages first", {.chatterType = 77}, 4, 0ms, 200ms},
    };
    for (const auto& c : cases) {
        Station station(c.setup);
        Opened opened;
        const auto took = timed([&] { EXPECT_EQ(opened.write("x"), c.result) << c.name; });
        EXPECT_GE(took, c.atLeast) << c.name;
        EXPECT_LT(took, c.atMost) << c.name;
    }
}

TEST(Riousb, UnendingChatterIsLeftAfterFiveSeconds) {
    test::VirtualBaseStation station({.ignores = {4}});
    const std::string empty = std::string("\0\0\0\1\0\0\0\3", 8) + std::string(16, '\0');
    test::TcpPeer peer(kAddress, kPort,
                       {.received =
                            [&](Bytes bytes) {
                                std::vector<std::uint8_t> answer = station.onReceive(bytes);
                                if (bytes.size() == 25)
                                    for (int i = 0; i < 30; ++i)
                                        answer.insert(answer.end(), empty.begin(), empty.end());
                                return answer;
                            }},
                       {.pieceSize = 24, .pieceGap = 300ms});
    Opened opened;
    ASSERT_NE(opened.connection, nullptr);
    const auto took = timed([&] { EXPECT_EQ(opened.write("x"), 0); });
    EXPECT_GE(took, 5000ms);
    EXPECT_LT(took, 5700ms);
}

TEST(Riousb, ReadsTakeNoMoreThanTheyCanAndLoseNothing) {
    BaseStationSetup setup = saying({std::string(3000, 'a') + "b", "c"});
    setup.deviceID = std::string(600, 'd');
    setup.deviceIDBeforeData = true;
    setup.ignoresBytesWanted = true;
    Station station(setup);
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
        BaseStationSetup setup = saying({"status", "more"});
        setup.addedLength = added;
        Station station(setup);
        Opened opened;
        opened.write("ask");
        const auto took = timed([&] { EXPECT_EQ(opened.read(), "status"); });
        EXPECT_LT(took, 500ms);
        EXPECT_EQ(opened.read(), "");
        EXPECT_EQ(opened.result, -1);
        EXPECT_EQ(opened.write("ask"), -1);
    }
    BaseStationSetup refusing = saying({"status"});
    refusing.refuses = {3};
    Station station(refusing);
    Opened opened;
    opened.read();
    EXPECT_EQ(opened.result, -1);
}

PrinterRecord recordOf(std::string_view maker, const char* commandSet = "") {
    return {{std::string(keys::serverType), server_types::airPort},
            {std::string(keys::makerName), maker},
            {std::string(keys::modelName), "iP4300"},
            {std::string(keys::hostName), kAddress},
            {std::string(keys::port), kPort},
            {std::string(keys::usbPrinterName), "usb1"},
            {std::string(keys::usbCmd), commandSet}};
}

struct Query {
    explicit Query(PrinterRecord printer) : scope(clock) {
        took = timed([&] { result = riousbGetInkStatus(printer, ink, status); });
        for (std::size_t i = 0; i < ink.usableCount(); ++i)
            levels.push_back(ink.entries.at(i).level);
    }

    test::TestClock clock;
    ScopedClock scope;
    int result = -99;
    InkQuantities ink;
    StatusText status;
    std::vector<int> levels;
    milliseconds took{};
};

TEST(RiousbInkStatus, EachMakerIsAskedInItsLanguage) {
    test::VirtualEpson epson;
    test::VirtualD4Epson d4;
    test::VirtualCanon canon({.warnings = "1541"});
    test::VirtualCanon ivec({.ivec = true, .status = "04"});
    const auto inPieces = [&](Bytes bytes) {
        test::Transfers pieces;
        const auto reply = ivec.onReceive(bytes);
        for (ByteReader rest(reply); !rest.atEnd();) {
            const Bytes piece = rest.take(std::min<std::size_t>(100, rest.remaining()));
            pieces.emplace_back(piece.begin(), piece.end());
        }
        return pieces;
    };
    const struct {
        const char* maker;
        const char* commandSet;
        test::SharedPrinter printer;
        std::vector<int> levels;
        const char* status;
    } cases[] = {
        {"EPSON", "ESCPL2,BDC", test::inOneTransfer(epson), {60, 42, 31, 80}, "Idle"},
        {"EPSON",
         "ESCPL2,BDC,D4",
         [&](Bytes b) { return d4.transfersFor(b); },
         {60, 42, 31, 80},
         "Idle"},
        {"Canon", "BJL", test::inOneTransfer(canon), {75, 40, 62, 0, 18}, "Idle"},
        {"Canon", "BJL,IVEC", inPieces, {75, 40, 62, 0, 18}, "Ink low"},
        {"HP", "MLC,PCL,PML", BaseStationSetup().printer, {75, 60}, "Idle"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.commandSet);
        Station station(
            {.printer = c.printer,
             .deviceID = "MFG:HP;VSTATUS:$HB0$NC0,ff,DN,IDLE,CUT,K0,C0,DP,NR,KP075,CP060;"});
        const Query query(recordOf(c.maker, c.commandSet));
        EXPECT_EQ(query.result, static_cast<int>(c.levels.size()));
        EXPECT_EQ(query.levels, c.levels);
        EXPECT_EQ(query.status.view(), c.status);
        ASSERT_TRUE(station.peer.waitForClients(1));
        EXPECT_EQ(station.station.requests().back().size(), 24U) << "a close";
    }
    EXPECT_FALSE(d4.inPacketMode());
    EXPECT_EQ(canon.requests().size(), 2U) << "the inquiry and its end";
    EXPECT_EQ(ivec.requests(), std::vector<std::string>{"IVEC"});
}

TEST(RiousbInkStatus, TheCommandTypeNamesTheVariant) {
    for (const auto& [commandType, commands] :
         {std::pair("RC0", "IQ "), std::pair("RC1", "SM ST "), std::pair("D4", "SM ST ")}) {
        test::VirtualEpson epson;
        Station station({.printer = test::inOneTransfer(epson)});
        PrinterRecord record = recordOf("EPSON");
        record.set(keys::commandType, commandType);
        EXPECT_EQ(Query(record).result, commandType == std::string("D4") ? 4 : 0);
        EXPECT_EQ(epson.commands(), commands) << commandType;
    }
}

TEST(RiousbInkStatus, IsNothingWithoutAPrinterThatAnswers) {
    test::VirtualCanon canon({.status = "04", .honesty = test::CanonHonesty::LengthLong});
    Station station({.printer = test::inOneTransfer(canon)});
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
    EXPECT_EQ(Query(recordOf("Canon")).result, 5) << "a length that lies";

    const struct {
        const char* maker;
        const char* commandSet;
        milliseconds waits;
    } silent[] = {{"EPSON", "", 800ms},

                  {"Canon", "", 600ms},
                  {"Canon", "IVEC", 600ms},
                  {"HP", "", 1000ms}};
    for (const auto& c : silent) {
        station.station.change({.ignores = {3, 5}});
        const Query query(recordOf(c.maker, c.commandSet));
        EXPECT_EQ(query.result, 0) << c.maker << c.commandSet;
        EXPECT_EQ(query.ink.count, 0);
        EXPECT_GE(query.took, c.waits);
        EXPECT_LT(query.took, c.waits + 300ms);
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
