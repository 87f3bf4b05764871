// The channels on real TCP connections to virtual printers.
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <array>
#include <thread>

#include "simulators/tcp_peer.h"
#include "simulators/virtual_d4_epson.h"
#include "simulators/virtual_mlc_hp.h"
#include "support/byte_streams.h"
#include "transport/channels/d4.h"
#include "transport/channels/d4_epson.h"
#include "transport/channels/pml_exchange.h"
#include "transport/net/sockets.h"

namespace tintoral {
namespace {

using namespace test;
using namespace std::chrono_literals;
using Steady = std::chrono::steady_clock;

constexpr const char* kAddress = "10.77.0.11";
constexpr std::uint16_t kPort = 9100;

TcpScript scriptFor(VirtualPacketPrinter& printer) {
    return {.received = [&](Bytes bytes) { return printer.onReceive(bytes); }};
}

TEST(ChannelsOnTcp, AnEpsonLeftInPacketModeAnswers) {
    VirtualD4Epson printer(
        {.habits = {.credit = CreditHabit::ByReverseCredit}, .leftInPacketMode = true});
    TcpPeer peer(kAddress, kPort, scriptFor(printer));
    const UniqueFd socket = TcpOpenConnection(kAddress, kPort);
    ASSERT_TRUE(socket.valid());
    std::array<std::uint8_t, kD4PayloadRoom> reply{};
    const auto start = Steady::now();
    EXPECT_EQ(d4GetEpsonInkStatus(TcpSocket{socket.get()}, reply, nullptr), 30);
    // Two starts that wait their second out, nine exchanges and two pauses.
    EXPECT_GT(Steady::now() - start, 3s);
    EXPECT_LT(Steady::now() - start, 6s);
}

TEST(ChannelsOnTcp, AnHpAnswersWithinItsChannel) {
    VirtualMlcHp printer({.creditOnOpen = 3});
    TcpPeer peer(kAddress, kPort, scriptFor(printer));
    const UniqueFd socket = TcpOpenConnection(kAddress, kPort);
    ASSERT_TRUE(socket.valid());
    auto channel = MLCopen(TcpSocket{socket.get()});
    ASSERT_NE(channel, nullptr);
    PMLResponse response;
    EXPECT_EQ(getPMLvalue(*channel, "2.11.1.1.6.1.1", response, nullptr), 0);
    EXPECT_EQ(response.value.text.view(), "black (45)");
    EXPECT_EQ(channel->sendCredit, 2);
    EXPECT_EQ(MLCclose(channel), 0);
}

TEST(ChannelsOnTcp, APrinterThatTalksWithoutEndIsLeft) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
    const UniqueFd program(ends[0]);
    const UniqueFd printer(ends[1]);
    std::jthread talk([&](const std::stop_token& stop) {
        const ByteVector other = bytesOfHex("0505000700 0041");
        while (!stop.stop_requested()) {
            ::send(printer.get(), other.data(), other.size(), MSG_NOSIGNAL);
            std::this_thread::sleep_for(100ms);
        }
    });
    D4Channel channel(TcpSocket{program.get()});
    channel.maxHostBound = 200;
    std::array<std::uint8_t, kD4PayloadRoom> buffer{};
    std::size_t length = 0;
    const auto start = Steady::now();
    EXPECT_EQ(D4read(channel, buffer, length), -1);
    EXPECT_LT(Steady::now() - start, 6s);
}

}  // namespace
}  // namespace tintoral
