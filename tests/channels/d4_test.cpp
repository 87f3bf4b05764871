#include "transport/channels/d4.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "ink/ink_quantities.h"
#include "simulators/virtual_d4_epson.h"
#include "support/byte_streams.h"
#include "transport/channels/d4_epson.h"
#include "vendors/epson.h"

namespace tintoral {
namespace {

using namespace test;
using namespace std::chrono_literals;

constexpr std::uint16_t kMaxCredit = std::numeric_limits<std::uint16_t>::max();

class D4 : public testing::Test {
  protected:
    std::chrono::milliseconds elapsed() { return clock.now() - start; }

    // A channel as it is after D4open, on socket 2.
    static D4Channel openedOn(QueuedStream& stream) {
        D4Channel channel(UsbPrinter{stream});
        channel.socketId = 2;
        channel.maxHostBound = 200;
        d4Revision = 16;
        return channel;
    }

    TestClock clock;
    ScopedClock scope{clock};
    const std::chrono::sys_time<std::chrono::milliseconds> start = clock.now();
};

const std::string kWholeSession =
    "> 0000001B0140454A4C20313238342E340A40454A4C0A40454A4C0A\n"
    "< 000000080100C500\n"
    "> 0000000801000010\n"
    "< 000000090100800010\n"
    "> 000000110100094550534F4E2D4354524C\n"
    "< 0000001301008900024550534F4E2D4354524C\n"
    "> 00000011010001020200C800C800000000\n"
    "< 0000001001008100020200C800C80000\n"
    "> 0000000D01000402020080FFFF\n"
    "< 0000000C0100840002020001\n"
    "> 0202000B00007374010001\n"
    "> 0000000B01000302020001\n"
    "< 0000000A010083000202\n"
    "< 02020024000040424443205354320D0A12000101040F0D0301003C01012A01021F010350\n";
const std::string kCloseSession =
    "> 000000090100020202\n"
    "< 0000000A010082000202\n"
    "> 00000007010008\n"
    "< 0000000801008800\n";

TEST_F(D4, AStatusInquiryByteForByte) {
    VirtualD4Epson printer;
    PrinterStream stream(clock, printer);
    ByteVector reply(kD4PayloadRoom, 0xEE);
    DumpText dump;
    const int length = d4GetEpsonInkStatus(UsbPrinter{stream}, reply, &dump);
    EXPECT_EQ(stream.transcript(), kWholeSession + kCloseSession);
    EXPECT_FALSE(printer.inPacketMode());
    ASSERT_EQ(length, 30);
    EXPECT_EQ(reply[30], 0);
    EXPECT_TRUE(dump.view().starts_with("Epson D4 =  30\n0000  40 42 44 43")) << dump.view();
    EXPECT_EQ(elapsed(), 9 * 100ms);  // seven exchanges and two pauses; no wait ran out

    StatusText status;
    InkQuantities record;
    EXPECT_EQ(parseEpsonReply(Bytes(reply).first(30), status, record, -1), 4);
    EXPECT_EQ(status.view(), "Idle");
    EXPECT_EQ(record.entries[3].level, 80);
}

TEST_F(D4, APrinterLeftInPacketModeIsRecovered) {
    VirtualD4Epson printer({.leftInPacketMode = true});
    PrinterStream stream(clock, printer);
    ByteVector reply(kD4PayloadRoom);
    EXPECT_EQ(d4GetEpsonInkStatus(UsbPrinter{stream}, reply, nullptr), 30);
    const std::string recovery =
        "> 0000001B0140454A4C20313238342E340A40454A4C0A40454A4C0A\n"
        "< 0000000A00007F000080\n";
    EXPECT_EQ(stream.transcript(), recovery + kCloseSession + kWholeSession + kCloseSession);
}

TEST_F(D4, StartAsksForAsMuchAsTheLastAnswerHad) {
    const struct {
        const char* what;
        std::vector<std::string> answers;
        int result;
        int attempts;
    } rows[] = {
        {"silence", {}, -1, 5},
        {"a longer answer after a wrong one", {"0000000801", "000000080100C500"}, -1, 5},
        {"the answer and more", {"000000080100C500FFFF"}, 0, 1},
        {"at the fifth attempt",
         {"0000000801000001", "0000000801000001", "0000000801000001", "0000000801000001",
          "000000080100C500"},
         0,
         5},
    };
    for (const auto& row : rows) {
        ScriptedStream stream(clock, row.answers);
        EXPECT_EQ(D4start(UsbPrinter{stream}, ""), row.result) << row.what;
        EXPECT_EQ(stream.sends(), row.attempts) << row.what;
    }
}

struct HabitRow {
    const char* what;
    PacketHabits habits;
    int result;
    std::chrono::milliseconds longest;  // of all pauses and waits
};

TEST_F(D4, BadHabitsEndInAResultInTime) {
    constexpr std::uint8_t kOpen = 1, kClose = 2, kGrant = 3, kRequest = 4, kExit = 8,
                           kGetSocket = 9;
    const HabitRow rows[] = {
        {"credit by a transaction of its own", {.credit = CreditHabit::ByReverseCredit}, 30, 1s},
        {"credit with the channel",
         {.creditOnOpen = kMaxCredit, .dataCreditField = 0xFFFF},
         30,
         1s},
        {"no credit ever", {.credit = CreditHabit::Never}, 0, 6s},
        {"an Error packet for Init", {.errorTo = 0}, kNoD4Channel, 2s},
        {"GetSocketID refused", {.refuses = kGetSocket}, kNoD4Channel, 2s},
        {"a wrong reply to OpenChannel", {.wrongTo = kOpen}, kNoD4Channel, 2s},
        {"an Error packet for Credit", {.errorTo = kGrant}, 0, 2s},
        {"CreditRequest refused", {.refuses = kRequest}, 0, 2s},
        {"a late reply to Credit", {.lateTo = kGrant}, 0, 6s},
        {"no end of the session", {.errorTo = kClose}, 30, 1s},
        {"no way out of packet mode", {.refuses = kExit}, 30, 1s},
        {"silence at once", {.packetsUntilSilent = 0}, kNoD4Channel, 5s},
        {"silence before Init", {.packetsUntilSilent = 1}, 0, 36s},
        {"silence before the data", {.packetsUntilSilent = 6}, 0, 11s},
    };
    for (const HabitRow& row : rows) {
        const auto before = clock.now();
        VirtualD4Epson printer({.habits = row.habits});
        PrinterStream stream(clock, printer);
        ByteVector reply(kD4PayloadRoom);
        EXPECT_EQ(d4GetEpsonInkStatus(UsbPrinter{stream}, reply, nullptr), row.result) << row.what;
        EXPECT_LE(clock.now() - before, row.longest) << row.what;
        EXPECT_LT(stream.receives(), 300) << row.what;
    }
}

TEST_F(D4, PausesAreThoseOfTheProtocol) {
    const auto pausesOf = [&](const PacketHabits& habits, std::chrono::microseconds length) {
        VirtualD4Epson printer({.habits = habits});
        PrinterStream stream(clock, printer);
        ByteVector reply(kD4PayloadRoom);
        const auto before = std::ranges::count(clock.pauses(), length);
        d4GetEpsonInkStatus(UsbPrinter{stream}, reply, nullptr);
        return std::ranges::count(clock.pauses(), length) - before;
    };
    EXPECT_EQ(pausesOf({.credit = CreditHabit::Never}, 1ms), 3);
    EXPECT_EQ(pausesOf({.errorTo = 0}, 500ms), 1);  // before the second D4open
    EXPECT_EQ(pausesOf({.errorTo = 0}, 100ms), 2);
}

TEST_F(D4, Revision32HasFieldsOfItsOwn) {
    VirtualD4Epson printer(
        {.habits = {.credit = CreditHabit::ByReverseCredit}, .leftInPacketMode = true});
    PrinterStream stream(clock, printer);
    auto channel = D4open(UsbPrinter{stream}, "EPSON-CTRL", 32);
    ASSERT_NE(channel, nullptr);
    EXPECT_EQ(channel->maxHostBound, 200);
    stream.push(bytesOfHex("0000000B010003020200 05"));
    EXPECT_EQ(D4write(*channel, asBytes("ei")), 0);
    const std::string expected =
        "> 0000000801000020\n"
        "< 000000090100800020\n"
        "> 000000110100094550534F4E2D4354524C\n"
        "< 0000001301008900024550534F4E2D4354524C\n"
        "> 0000000F010001020200C800C8FFFF\n"
        "< 0000001201008100020200C800C8FFFF0000\n"
        "> 0000000B0100040202FFFF\n"
        "< 0000000B01000302020005\n"
        "> 0000000A010083000202\n"
        "< 0000000B01000302020001\n"
        "> 0000000A010083000202\n"
        "< 0000000C0100840002020000\n"
        "> 020200080000"
        "6569\n";
    EXPECT_EQ(stream.transcript(), expected);
    EXPECT_EQ(channel->sendCredit, 5);
    const int receives = stream.receives();
    EXPECT_EQ(D4write(*channel, asBytes("ei")), 0);
    EXPECT_EQ(stream.receives(), receives);
}

TEST_F(D4, ASilentPrinterOpensWithSocketZero) {
    ScriptedStream stream(clock, {"00000009010080000A"});  // answers Init alone
    const auto channel = D4open(UsbPrinter{stream}, "EPSON-CTRL", 16);
    ASSERT_NE(channel, nullptr);
    EXPECT_EQ(channel->socketId, 0);
    EXPECT_EQ(channel->sendCredit, 0);
    EXPECT_EQ(D4open(UsbPrinter{stream}, std::string(122, 'x'), 16), nullptr);
}

TEST_F(D4, TransactionsOfThePrinterAreAnswered) {
    const struct {
        const char* packet;
        const char* answer;
        int credit;
    } rows[] = {
        {"000000090100040202", "> 0000000C0100840002020000\n", 7},
        {"0000000B010003020200 10", "> 0000000A010083000202\n", 23},
        {"0000000B0100030202FFFF", "> 0000000A010083000202\n", kMaxCredit},
        {"00000009010003020200FF", "> 0000000A010083000202\n",
         7},  // the credit is not in the packet
        {"00000007000208", "> 0000000801028801\n", 7},
        {"000000080000C500", "> 000000080100C501\n", 7},  // a reply that nobody waits for, as meant
        {"0000000A00007F000080", "", 7},
        {"02020009010004", "", 7},
        {"0000000501", "", 7},
        {"000000060100", "", 7},
    };
    for (const auto& row : rows) {
        ScriptedStream stream(clock, {});
        D4Channel channel = openedOn(stream);
        channel.sendCredit = 7;
        ByteVector packet = bytesOfHex(row.packet);
        const std::size_t received = packet.size();
        packet.resize(16);
        EXPECT_EQ(d4execReverseCmd(channel, packet, received), 0);
        EXPECT_EQ(stream.transcript(), row.answer) << row.packet;
        EXPECT_EQ(channel.sendCredit, row.credit) << row.packet;
    }
}

TEST_F(D4, TheTwoExchangesJudgeDifferently) {
    const std::string kTransaction = "000000090100040202";
    const struct {
        const char* what;
        std::vector<std::string> packets;
        int once;
        int withReverse;
    } rows[] = {
        {"the reply", {"0000000801008800"}, 0, 0},
        {"nothing", {}, 0, 0},
        {"a refusal", {"0000000801008801"}, 1, -1},
        {"another reply", {"0000000801008200"}, 1, -1},
        {"an Error packet", {"0000000A00007F000080"}, 1, 1},
        {"a reply without a result", {"00000007010088"}, 1, -1},
        {"data in between",
         {"020200080000"
          "8800",
          "0000000801008801"},
         1,
         -1},
        {"four transactions first",
         {kTransaction, kTransaction, kTransaction, kTransaction, "0000000801008801"},
         1,
         -1},
        {"five transactions first",
         {kTransaction, kTransaction, kTransaction, kTransaction, kTransaction, "0000000801008801"},
         1,
         0},
    };
    for (const auto& row : rows) {
        ScriptedStream first(clock, row.packets);
        D4Channel channel = openedOn(first);
        setCommand(channel, 1, {0x08});
        EXPECT_EQ(d4SendAndReceive2(channel), row.once) << row.what;
        ScriptedStream second(clock, row.packets);
        channel.handle = UsbPrinter{second};
        EXPECT_EQ(d4SendAndReceiveWithReverseCmd(channel), row.withReverse) << row.what;
    }
}

TEST_F(D4, ASecondReadOfOneCreditDeliversAndFails) {
    ScriptedStream stream(clock, {"0000000A010083000202"});
    D4Channel channel = openedOn(stream);
    ByteVector buffer(3);
    std::size_t length = 9;
    EXPECT_EQ(D4read(channel, buffer, length), -1);  // nothing came, the credit is still open
    EXPECT_EQ(length, 0U);
    stream.push(bytesOfHex("0205000700 0041"));  // not of this channel
    stream.push(bytesOfHex("0202000A03 0041424344"));
    EXPECT_EQ(D4read(channel, buffer, length), -1);
    EXPECT_EQ(asText(buffer), "ABC");
    EXPECT_EQ(length, 3U);
    EXPECT_EQ(channel.sendCredit, 3);
    EXPECT_EQ(channel.readCredit, 0);
    channel.maxHostBound = 0;
    EXPECT_EQ(D4read(channel, buffer, length), -1);
}

TEST_F(D4, NozzleOptionsRunAJobAndItsEnd) {
    VirtualD4Epson printer;
    PrinterStream stream(clock, printer);
    testing::internal::CaptureStdout();
    EXPECT_EQ(d4EpsonNozzleOption(UsbPrinter{stream}, 1), 7);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "aaaaaaaa cmdlen = 5\n");
    EXPECT_EQ(printer.commands(), (std::vector<std::string>{"ch", "ei"}));
    EXPECT_FALSE(printer.inPacketMode());

    VirtualD4Epson miser({.habits = {.credit = CreditHabit::Never}});
    PrinterStream another(clock, miser);
    testing::internal::CaptureStdout();
    EXPECT_EQ(d4EpsonNozzleOption(UsbPrinter{another}, 2), kNoD4Channel);
    testing::internal::GetCapturedStdout();
    EXPECT_FALSE(miser.inPacketMode());
}

}  // namespace
}  // namespace tintoral
