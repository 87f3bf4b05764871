// The channels on real TCP connections to virtual printers.
#include <gtest/gtest.h>

#include <array>

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

}  // namespace
}  // namespace tintoral
