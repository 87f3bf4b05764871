#include "netproto/bjnp.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "netproto/record_bjnp.h"
#include "simulators/virtual_bjnp_printer.h"
#include "support/byte_streams.h"
#include "support/measure.h"

namespace tintoral {
namespace {

using namespace std::chrono_literals;
using test::BjnpSetup;
using test::Datagram;
using test::hexOf;
using test::levelsOf;
using test::timed;
using test::VirtualBjnpPrinter;

constexpr const char* kFirst = "10.77.0.11";
constexpr const char* kSecond = "10.77.0.12";
constexpr const char* kNobody = "10.77.0.99";
constexpr const char* kEveryone = "10.77.0.255";

struct Query {
    explicit Query(const char* address) {
        PrinterRecord printer{{std::string(keys::ipAdrs), address}};
        result = inkStatusOfRecordByBjnp(printer, ink, status);
    }

    InkQuantities ink;
    StatusText status{"before"};
    int result = 0;
};

unsigned sequenceOf(const Datagram& packet) {
    ByteReader reader(packet);
    reader.skip(8);
    return reader.be16();
}

TEST(Bjnp, DiscoveryListsEachPrinterOnceAndNamesIt) {
    const VirtualBjnpPrinter chatty(
        kFirst, {.deviceID = "MDL:" + std::string(70, 'm') + ";CMD:BJL\x1B,IVEC"}, kEveryone);
    const VirtualBjnpPrinter once(
        kSecond,
        {.deviceID = "CMD:" + std::string(63, 'c') + "\xE9;MDL:MP640;", .everyRound = false},
        kEveryone);
    const VirtualBjnpPrinter tooShort(
        "10.77.0.1", {.spoil = [](Datagram& answer) { answer.resize(31); }}, kEveryone);
    std::vector<BjnpPrinter> printers(3);
    const auto took = timed([&] { EXPECT_EQ(bjnpDiscovery(printers), 2); });
    EXPECT_GE(took, 1200ms);
    EXPECT_LT(took, 1900ms);
    ASSERT_EQ(printers.size(), 2U);
    std::ranges::sort(printers, {}, &BjnpPrinter::address);
    EXPECT_EQ(printers[0].address, (Ipv4Address{10, 77, 0, 11}));
    EXPECT_EQ(printers[0].mac, BjnpSetup().mac);
    EXPECT_EQ(printers[0].model.view(), std::string(64, 'm'));
    EXPECT_EQ(printers[0].commandSet.view(), "") << "no semicolon";
    EXPECT_EQ(printers[1].model.view(), "MP640");
    EXPECT_EQ(printers[1].commandSet.view(), std::string(63, 'c')) << "no half character";

    const auto heard = chatty.requests();
    ASSERT_EQ(heard.size(), 4U);
    for (std::size_t round = 0; round < 3; ++round)
        EXPECT_EQ(hexOf(heard[round]), "424A4E50010100000000000000000000");
    EXPECT_EQ(hexOf(heard[3]), "424A4E5001300000000000000000000400000000");
}

TEST(Bjnp, APrinterIsKnownByItsAddressAndFourBytesOfItsMac) {
    const std::vector<BjnpPrinter> known{{{1, 2, 3, 4, 5, 6}, {10, 0, 0, 1}, {}, {}}};
    EXPECT_EQ(isBJNPPrinter(known, {10, 0, 0, 1}, {1, 2, 3, 4, 9, 9}), 0);
    EXPECT_EQ(isBJNPPrinter(known, {10, 0, 0, 1}, {1, 2, 3, 9, 5, 6}), 1);
    EXPECT_EQ(isBJNPPrinter(known, {10, 0, 0, 2}, {1, 2, 3, 4, 5, 6}), 1);
}

TEST(Bjnp, StatusIsAskedInASessionByteForByte) {
    const VirtualBjnpPrinter first(kFirst, {.firstSession = 0xFFFE});
    const VirtualBjnpPrinter second(kSecond, {.status = "BST:04;DWS:1541,1511;"});
    const Query levels(kFirst);
    EXPECT_EQ(levels.result, 5);
    EXPECT_EQ(levelsOf(levels.ink), (std::vector{75, 40, 62, 0, 18}));
    EXPECT_EQ(levels.status.view(), "Idle");
    const Query warnings(kSecond);
    EXPECT_EQ(warnings.result, 2);
    EXPECT_EQ(levelsOf(warnings.ink), (std::vector{20, 20}));
    EXPECT_EQ(warnings.status.view(), "Ink low");
    EXPECT_TRUE(first.openSessions().empty() && second.openSessions().empty());

    const auto heard = first.requests();
    ASSERT_EQ(heard.size(), 3U);
    const unsigned start = sequenceOf(heard[0]);
    for (unsigned i = 0; i < 3; ++i) {
        EXPECT_EQ(sequenceOf(heard[i]), start + i);
        EXPECT_EQ(sequenceOf(second.requests()[i]), start + 3 + i) << "one counter for all";
    }
    const auto hexWithoutSequence = [](Datagram packet) {
        packet[8] = packet[9] = 0;
        return hexOf(packet);
    };
    const std::string host = "00310030002E00370037002E0030002E00310031";  // 10.77.0.11
    const std::string user = "00540069006E0074006F00720061006C";          // Tintoral
    EXPECT_EQ(hexWithoutSequence(heard[0]), "424A4E50011000000000000000000198" +
                                                std::string(16, '0') + host +
                                                std::string(128 - host.size(), '0') + user +
                                                std::string(128 - user.size() + 512, '0'));
    EXPECT_EQ(hexWithoutSequence(heard[1]), "424A4E50012000000000FFFE00000000");
    EXPECT_EQ(hexWithoutSequence(heard[2]), "424A4E50011100000000FFFE00000000");
}

TEST(Bjnp, AddressTextRunsIntoTheUserNameWhichGoesOverIt) {
    std::array<std::uint8_t, kBjnpRequestRoom> packet;
    ASSERT_EQ(mkBjnpJobInfo(packet, 1, std::string(50, 'x')), packet.size());
    const std::string names = hexOf(Bytes(packet).subspan(24, 128));
    EXPECT_EQ(names.substr(120),
              "00780078"
              "00540069006E0074006F00720061006C" +
                  std::string(96, '0'));

    std::array<std::uint8_t, 8> output;
    output.fill(0xEE);
    EXPECT_EQ(charTo2byte(output, "ab", 3), 2U);
    EXPECT_EQ(hexOf(output), "006100620000EEEE");
    EXPECT_EQ(charTo2byte(output, "abcde", 64), 4U);
}

TEST(Bjnp, SilenceIsOverAfterTwoAttempts) {
    const VirtualBjnpPrinter mute(kFirst, {.ignores = {0x20}});
    const Query query(kFirst);
    EXPECT_EQ(query.result, -1);
    EXPECT_EQ(query.status.view(), "Can't communicate to the printer.");
    EXPECT_EQ(mute.requests().size(), 3U) << "one for the job, two for the status, no close";
    EXPECT_EQ(mute.openSessions().size(), 1U);

    std::uint16_t session = 5;
    const auto took = timed([&] { EXPECT_EQ(bjnpSetJobInfo(kNobody, session, "", ""), 0); });
    EXPECT_GE(took, 1000ms);
    EXPECT_LT(took, 1300ms);
    EXPECT_EQ(session, 5U);
    const unsigned before = sequenceOf(mute.requests().back());
    for (const char* name : {"localhost", "", "10.77.0", "0x0a.77.0.11", "10.77.0.11 "}) {
        BjnpText status;
        EXPECT_EQ(bjnpSetJobInfo(name, session, "", "") + bjnpGetStatus(name, 1, status) +
                      bjnpUdpClose(name, 1),
                  0);
    }
    bjnpUdpClose(kFirst, 1);
    EXPECT_EQ(sequenceOf(mute.requests().back()), before + 2) << "nothing but the silent one";
}

TEST(Bjnp, WhatIsNoAnswerLeavesTheOutputAlone) {
    constexpr int kSize = 16 + 2 + 32;
    const struct {
        const char* name;
        std::function<void(Datagram&)> spoil;
        int result;
        const char* text;
    } cases[] = {
        {"none", [](Datagram&) {}, kSize - 16, nullptr},
        {"no session named", [](Datagram& d) { d[10] = d[11] = 0; }, kSize - 16, nullptr},
        {"length that lies", [](Datagram& d) { d[12] = 0xFF; }, kSize - 16, nullptr},
        {"magic", [](Datagram& d) { d[3] = 'Q'; }, kSize, "before"},
        {"type", [](Datagram& d) { d[4] = 1; }, kSize, "before"},
        {"command", [](Datagram& d) { d[5] = 0x21; }, kSize, "before"},
        {"another session", [](Datagram& d) { d[11] ^= 1; }, kSize - 16, nullptr},
        {"one byte", [](Datagram& d) { d.resize(1); }, 1, "before"},
        {"half a header", [](Datagram& d) { d.resize(15); }, 15, "before"},
        {"header alone", [](Datagram& d) { d.resize(16); }, 0, ""},
    };
    const std::string status(32, 's');
    for (const auto& c : cases) {
        const auto spoilStatus = [&](Datagram& d) {
            if (d[5] == 0x20) c.spoil(d);
        };
        const VirtualBjnpPrinter printer(kFirst, {.status = status, .spoil = spoilStatus});
        std::uint16_t session = 0;
        EXPECT_EQ(bjnpSetJobInfo(kFirst, session, "", ""), 16);
        BjnpText text;
        text.assign("before");
        EXPECT_EQ(bjnpGetStatus(kFirst, session, text), c.result) << c.name;
        const std::string whole = std::string("\0\x22", 2) + status;
        EXPECT_EQ(text.view(), c.text == nullptr ? whole : c.text) << c.name;
    }
    const VirtualBjnpPrinter elsewhere(kSecond, {}, kFirst);  // hears for .11, answers from .12
    std::uint16_t session = 5;
    EXPECT_EQ(bjnpSetJobInfo(kFirst, session, "", ""), 0);
    EXPECT_EQ(session, 5U);
    EXPECT_EQ(elsewhere.requests().size(), 2U);
}

}  // namespace
}  // namespace tintoral
