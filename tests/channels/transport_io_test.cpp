#include "vendors/transport_io.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <array>
#include <thread>

#include "support/byte_streams.h"
#include "support/unique_fd.h"

namespace tintoral {
namespace {

using namespace test;
using std::chrono::milliseconds;
using Steady = std::chrono::steady_clock;

constexpr milliseconds kTimeout{30};

struct SocketPair {
    SocketPair() {
        std::array<int, 2> ends{};
        if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) != 0) ADD_FAILURE() << "no sockets";
        program.reset(ends[0]);
        printer.reset(ends[1]);
    }
    void say(std::string_view hex) const {
        const ByteVector bytes = bytesOfHex(hex);
        ASSERT_EQ(::send(printer.get(), bytes.data(), bytes.size(), 0),
                  static_cast<ssize_t>(bytes.size()));
    }
    IoHandle handle() const { return TcpSocket{program.get()}; }

    UniqueFd program;
    UniqueFd printer;
};

// A packet as ioPacketRecv() gives it, in hex.
std::string packetFrom(const IoHandle& handle, std::size_t maximum) {
    std::array<std::uint8_t, 512> buffer{};
    const int count = ioPacketRecv(handle, MutableBytes(buffer).first(maximum), kTimeout);
    if (count < 0 || static_cast<std::size_t>(count) > maximum) return "outside the buffer";
    return hexOf(Bytes(buffer).first(static_cast<std::size_t>(count)));
}

const std::string kNextPacket = "0000000701000A";

TEST(SocketPackets, ArriveWholeOrNotAtAll) {
    const struct {
        const char* what;
        std::string sent;
        std::string received;
    } rows[] = {
        {"a packet", "00000009010080000A", "00000009010080000A"},
        {"longer than the buffer", "00000014" + std::string(32, 'A'), "00000014AAAAAAAAAAAAAAAA"},
        {"far longer than the buffer", "00000800" + std::string(4088, 'A'),
         "00000800AAAAAAAAAAAAAAAA"},
        {"a length inside the prefix", "00000002", "00000002"},
    };
    for (const auto& row : rows) {
        const SocketPair pair;
        pair.say(row.sent + kNextPacket);
        EXPECT_EQ(packetFrom(pair.handle(), 12), row.received) << row.what;
        EXPECT_EQ(packetFrom(pair.handle(), 12), kNextPacket) << row.what;
        EXPECT_EQ(packetFrom(pair.handle(), 12), "") << row.what;
    }
    for (const auto* cut : {"000000", "00000009010080"}) {
        const SocketPair pair;
        pair.say(cut);
        EXPECT_EQ(packetFrom(pair.handle(), 12), "") << cut;
    }
}

TEST(StreamPackets, AreReadOnceAndOnceMore) {
    const struct {
        const char* what;
        std::vector<std::string> transfers;
        std::string received;
    } rows[] = {
        {"one transfer", {"00000008010080000000"}, "00000008010080000000"},
        {"two transfers", {"0000000901", "0080000A"}, "00000009010080000A"},
        {"three transfers: one more is read", {"00000009", "0100", "80000A"}, "000000090100"},
        {"nothing after the first", {"0000000901"}, ""},
        {"too short to have a length", {"000000"}, "000000"},
        {"longer than the buffer",
         {"00000014" + std::string(24, 'A'), "BBBBBB", "CC"},
         "00000014AAAAAAAAAAAAAAAA"},
    };
    for (const auto& row : rows) {
        TestClock clock;
        ScriptedStream usb(clock, row.transfers);
        ScriptedStream station(clock, row.transfers);
        EXPECT_EQ(packetFrom(UsbPrinter{usb}, 12), row.received) << row.what;
        EXPECT_EQ(packetFrom(BaseStation{station}, 12), row.received) << row.what;
        if (row.received.size() != 24) continue;
        usb.push(bytesOfHex(kNextPacket));
        EXPECT_EQ(packetFrom(UsbPrinter{usb}, 12), kNextPacket) << row.what;
    }
}

TEST(TransportIo, StandardOutputIsWrittenAndNeverRead) {
    const IoHandle output = StandardOutput{};
    std::array<std::uint8_t, 8> buffer{};
    testing::internal::CaptureStdout();
    EXPECT_EQ(ioSend(output, asBytes("to the printer")), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "to the printer");
    const auto start = Steady::now();
    EXPECT_EQ(ioWaitRecv(output, buffer, milliseconds(1000)), 0);
    EXPECT_EQ(ioPacketRecv(output, buffer, milliseconds(1000)), 0);
    EXPECT_LT(Steady::now() - start, milliseconds(500));
}

TEST(TransportIo, AClosedSocketFailsNoSend) {
    SocketPair pair;
    pair.printer.reset();
    std::array<std::uint8_t, 8> buffer{};
    EXPECT_EQ(ioSend(pair.handle(), asBytes("x")), 0);
    EXPECT_EQ(ioWaitRecv(pair.handle(), buffer, kTimeout), -1);
    EXPECT_EQ(ioPacketRecv(pair.handle(), buffer, kTimeout), 0);
}

}  // namespace
}  // namespace tintoral
