#include "transport/channels/mlc.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <array>

#include "simulators/virtual_mlc_hp.h"
#include "support/byte_streams.h"
#include "support/unique_fd.h"
#include "transport/channels/pml_exchange.h"

namespace tintoral {
namespace {

using namespace test;
using namespace std::chrono_literals;

class Mlc : public testing::Test {
  protected:
    static MLCChannel openedOn(QueuedStream& stream) {
        MLCChannel channel(UsbPrinter{stream});
        channel.maxHostBound = 200;
        return channel;
    }

    TestClock clock;
    ScopedClock scope{clock};
};

TEST_F(Mlc, ASessionByteForByte) {
    VirtualMlcHp printer;
    PrinterStream stream(clock, printer);
    auto channel = MLCopen(UsbPrinter{stream});
    ASSERT_NE(channel, nullptr);
    PMLResponse response;
    DumpText dump;
    EXPECT_EQ(getPMLvalue(*channel, "1.1.3.2", response, &dump), 0);
    EXPECT_EQ(response.value.text.view(), "DeskJet 900C");
    EXPECT_TRUE(dump.view().starts_with("0000  80 00 00 04")) << dump.view();
    EXPECT_EQ(MLCclose(channel), 0);
    EXPECT_EQ(channel, nullptr);
    EXPECT_EQ(stream.transcript(),
              "> 0000000800000003\n"
              "< 000000090000800003\n"
              "> 0000000D0000070100C800C800\n"
              "< 0000000C0000870000C800C8\n"
              "> 0000000B00000101010000\n"
              "< 0000000A000081000000\n"
              "> 0000000B00000401010001\n"
              "< 0000000A000084000001\n"
              "> 0101000D0000\n"
              "> 00000401010302\n"
              "> 0000000B00000301010001\n"
              "< 0000000800008300\n"
              "< 0101001C000080000004010103"
              "02100C4465736B4A65742039303043\n"
              "> 000000090000020101\n"
              "< 0000000800008200\n"
              "> 00000007000008\n"
              "< 0000000800008800\n");
    EXPECT_EQ(clock.pauses(), std::vector<std::chrono::microseconds>{800ms});
}

TEST_F(Mlc, BadHabitsEndInAResultInTime) {
    constexpr std::uint8_t kGrant = 3, kRequest = 4;
    const struct {
        const char* what;
        PacketHabits habits;
        bool opens;
        int result;
        std::chrono::milliseconds longest;
    } rows[] = {
        {"credit with the channel",
         {.creditOnOpen = 0xFFFF, .dataCreditField = 0x0102},
         true,
         0,
         1s},
        {"credit by a transaction of its own",
         {.credit = CreditHabit::ByReverseCredit},
         true,
         0,
         3s},
        {"no credit ever", {.credit = CreditHabit::Never}, true, -1, 3s},
        {"an Error packet for Init", {.errorTo = 0}, false, 0, 2s},
        {"a wrong reply to Init", {.wrongTo = 0}, false, 0, 2s},
        {"a refused CreditRequest counts as silence", {.refuses = kRequest}, true, -1, 60s},
        {"an Error packet for CreditRequest", {.errorTo = kRequest}, true, -1, 2s},
        {"an Error packet for Credit, but data", {.errorTo = kGrant}, true, 0, 4s},
        {"silence at once", {.packetsUntilSilent = 0}, false, 0, 2s},
        {"silence half-way", {.packetsUntilSilent = 3}, true, -1, 60s},
    };
    for (const auto& row : rows) {
        VirtualMlcHp printer(row.habits);
        PrinterStream stream(clock, printer);
        const auto before = clock.now();
        auto channel = MLCopen(UsbPrinter{stream});
        ASSERT_EQ(channel != nullptr, row.opens) << row.what;
        PMLResponse response;
        if (channel) {
            EXPECT_EQ(getPMLvalue(*channel, "1.1.3.2", response, nullptr), row.result) << row.what;
        }
        EXPECT_LE(clock.now() - before, row.longest) << row.what;
        EXPECT_LT(stream.receives(), 500) << row.what;
    }
}

TEST_F(Mlc, TheTenthReceiveComesTooLate) {
    const struct {
        const char* last;
        int inTime;
        int onTheTenth;
    } rows[] = {
        {"0000000A000084000001", 0, -1},
        {"0000000A00007F000080", 1, -1},
        {"0000000A000084010001", 0, 0},  // a refusal is no end
    };
    for (const auto& row : rows) {
        for (const auto& [before, result] :
             {std::pair(8, row.inTime), std::pair(9, row.onTheTenth)}) {
            std::vector<std::string> packets(static_cast<std::size_t>(before), "0000000800008300");
            packets.emplace_back(row.last);
            ScriptedStream stream(clock, packets);
            MLCChannel channel = openedOn(stream);
            setCommand(channel, 0, {0x04, 1, 1, 0, 1});
            EXPECT_EQ(mlcSendAndReceiveWithReverseCmd(channel), result)
                << row.last << " after " << before;
        }
    }
}

TEST_F(Mlc, WithoutCreditItAsksFourTimes) {
    VirtualMlcHp printer({.credit = CreditHabit::Never});
    PrinterStream stream(clock, printer);
    const auto channel = MLCopen(UsbPrinter{stream});
    ASSERT_NE(channel, nullptr);
    const int sends = stream.sends();
    EXPECT_EQ(MLCwrite(*channel, asBytes("x")), -1);
    EXPECT_EQ(stream.sends() - sends, 4);
    EXPECT_EQ(clock.pauses(), std::vector<std::chrono::microseconds>(4, 500us));

    ScriptedStream silent(clock, {});
    const auto before = clock.now();
    EXPECT_EQ(MLCopen(UsbPrinter{silent}), nullptr);
    EXPECT_EQ(clock.now() - before, 1200ms);
}

TEST_F(Mlc, AnExchangeKeepsSixteenBytesAndNoReplyButItsOwn) {
    ScriptedStream stream(clock, {"00000014000084000001" + std::string(20, '0')});
    MLCChannel channel = openedOn(stream);
    setCommand(channel, 0, {0x04, 1, 1, 0, 1});
    EXPECT_EQ(mlcSendAndReceiveWithReverseCmd(channel), 0);
    EXPECT_EQ(channel.lastReply().size(), 16U);
    ScriptedStream others(clock, {"0000000A000083000001"}, true);
    channel.handle = UsbPrinter{others};
    EXPECT_EQ(mlcSendAndReceiveWithReverseCmd(channel), 0);
    EXPECT_TRUE(channel.lastReply().empty());
}

TEST_F(Mlc, TransactionsOfThePrinterAreAnswered) {
    const struct {
        const char* packet;
        const char* answer;
        int credit;
    } rows[] = {
        {"000000090000040101", "> 0000000A000084000000\n", 7},
        {"0000000B000003010100 10", "> 0000000800008300\n", 23},
        {"0000000B0000030101FFFF", "> 0000000800008300\n", 0xFFFF},
        {"00000007050008", "> 0000000805008801\n", 7},
        {"0000000A00007F000080", "", 7},
        {"01010009000004", "", 7},
    };
    for (const auto& row : rows) {
        ScriptedStream stream(clock, {});
        MLCChannel channel = openedOn(stream);
        channel.sendCredit = 7;
        ByteVector packet = bytesOfHex(row.packet);
        const std::size_t received = packet.size();
        packet.resize(16);
        EXPECT_EQ(MLCexecReverseCmd(channel, packet, received), 0);
        EXPECT_EQ(stream.transcript(), row.answer) << row.packet;
        EXPECT_EQ(channel.sendCredit, row.credit) << row.packet;
    }
}

TEST_F(Mlc, AReadLooksAtTenPacketsAndOnlyWithANewCredit) {
    const std::string kReply = "0000000800008300";
    const std::string kData = "01010008010241 42";
    for (const auto& [others, result] : {std::pair(9, 0), std::pair(10, -1)}) {
        std::vector<std::string> packets(static_cast<std::size_t>(others) + 1,
                                         "020200070000"
                                         "43");
        packets.front() = kReply;
        packets.push_back(kData);
        ScriptedStream stream(clock, packets);
        MLCChannel channel = openedOn(stream);
        std::array<std::uint8_t, kMLCPayloadRoom> buffer{};
        std::size_t length = 0;
        EXPECT_EQ(MLCread(channel, buffer, length), result);
        EXPECT_EQ(channel.sendCredit,
                  result == 0 ? 0x0102 : 0);  // credit and control as one number
        EXPECT_EQ(channel.readCredit, result == 0 ? 0 : 1);
        if (result == 0) continue;
        const int receives = stream.receives();
        EXPECT_EQ(MLCread(channel, buffer, length), -1);
        EXPECT_EQ(stream.receives(), receives);
    }
}

TEST_F(Mlc, ASetRequestIsSentAsAGet) {
    VirtualMlcHp printer;
    PrinterStream stream(clock, printer);
    auto channel = MLCopen(UsbPrinter{stream});
    ASSERT_NE(channel, nullptr);
    PMLResponse response;
    EXPECT_EQ(setPMLvalue(*channel, "1.4.1.5", 4, 100, response, nullptr), -1);
    EXPECT_EQ(response.status, -127);
    EXPECT_EQ(getPMLvalue(*channel, "1.4.1.5", response, nullptr), -1);
    ASSERT_EQ(printer.requests().size(), 2U);
    EXPECT_EQ(printer.requests()[0], printer.requests()[1]);
}

TEST_F(Mlc, StartResetsAPrinterOnASocket) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
    const UniqueFd program(ends[0]);
    const UniqueFd printer(ends[1]);
    ASSERT_EQ(::shutdown(printer.get(), SHUT_WR), 0);
    EXPECT_EQ(MLCstart(TcpSocket{program.get()}), 0);
    std::array<std::uint8_t, 8> heard{};
    ASSERT_EQ(::recv(printer.get(), heard.data(), heard.size(), 0), 2);
    EXPECT_EQ(hexOf(Bytes(heard).first(2)), "1B45");
}

}  // namespace
}  // namespace tintoral
