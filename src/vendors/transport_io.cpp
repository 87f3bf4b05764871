#include "vendors/transport_io.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "transport/net/sockets.h"

namespace tintoral {
namespace {

using std::chrono::milliseconds;
using Steady = std::chrono::steady_clock;

constexpr std::size_t kLengthPrefix = 4;
constexpr std::size_t kLongestPacket = 0xFFFF;
constexpr int kWaitsOfPacket = 8;

template <class... Cases>
struct Overloaded : Cases... {
    using Cases::operator()...;
};
template <class... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

std::size_t packetLength(Bytes prefix) {
    ByteReader reader(prefix);
    reader.skip(2);
    return reader.be16();
}

// Puts the part of `piece` that fits at offset `at` of the caller's buffer.
void keep(MutableBytes buffer, std::size_t at, Bytes piece) {
    if (at >= buffer.size()) return;
    const Bytes fitting = piece.first(std::min(piece.size(), buffer.size() - at));
    std::ranges::copy(fitting, buffer.subspan(at).begin());
}

int keptBytes(std::size_t received, MutableBytes buffer) {
    return static_cast<int>(std::min(received, buffer.size()));
}

int tcpPacketRecv(int socket, MutableBytes buffer, milliseconds timeout) {
    std::array<std::uint8_t, 512> piece;
    const MutableBytes prefix = MutableBytes(piece).first(kLengthPrefix);
    std::size_t received = kLengthPrefix;
    if (waitRecv(socket, prefix, timeout) < static_cast<int>(kLengthPrefix)) return 0;
    keep(buffer, 0, prefix);
    const std::size_t total = packetLength(prefix);
    const auto end = Steady::now() + kWaitsOfPacket * timeout;
    while (received < total) {
        if (Steady::now() > end) return 0;
        const std::size_t wanted = std::min(piece.size(), total - received);
        const int count = waitRecv(socket, MutableBytes(piece).first(wanted), timeout);
        if (count < 1) return 0;
        const Bytes more = Bytes(piece).first(static_cast<std::size_t>(count));
        keep(buffer, received, more);
        received += more.size();
    }
    return keptBytes(received, buffer);
}

int streamPacketRecv(ByteStream& stream, MutableBytes buffer, milliseconds timeout) {
    const int first = stream.receive(buffer, timeout);
    if (first < static_cast<int>(kLengthPrefix)) return std::max(first, 0);
    auto received = static_cast<std::size_t>(first);
    const std::size_t total = packetLength(buffer);
    std::array<std::uint8_t, kLongestPacket> rest;
    const auto end = Steady::now() + kWaitsOfPacket * timeout;
    for (int reads = total > buffer.size() ? kWaitsOfPacket : 1;
         received < total && reads > 0 && Steady::now() < end; --reads) {
        const int count = stream.receive(MutableBytes(rest).first(total - received), timeout);
        if (count < 1) return 0;
        const Bytes more = Bytes(rest).first(static_cast<std::size_t>(count));
        keep(buffer, received, more);
        received += more.size();
    }
    return keptBytes(received, buffer);
}

void writeToOutput(Bytes bytes) {
    std::fwrite(bytes.data(), 1, bytes.size(), stdout);
    std::fflush(stdout);
}

}  // namespace

int ioSend(const IoHandle& handle, Bytes bytes) {
    std::visit(Overloaded{
                   [&](TcpSocket tcp) { sendOnce(tcp.descriptor, bytes); },
                   [&](UsbPrinter usb) { usb.stream.get().send(bytes); },
                   [&](StandardOutput) { writeToOutput(bytes); },
                   [&](BaseStation station) { station.stream.get().send(bytes); },
               },
               handle);
    return 0;
}

int ioWaitRecv(const IoHandle& handle, MutableBytes buffer, milliseconds timeout) {
    return std::visit(
        Overloaded{
            [&](TcpSocket tcp) { return waitRecv(tcp.descriptor, buffer, timeout); },
            [&](UsbPrinter usb) { return usb.stream.get().waitReceive(buffer, timeout); },
            [](StandardOutput) { return 0; },
            [&](BaseStation station) { return station.stream.get().receive(buffer, timeout); },
        },
        handle);
}

int ioPacketRecv(const IoHandle& handle, MutableBytes buffer, milliseconds timeout) {
    return std::visit(
        Overloaded{
            [&](TcpSocket tcp) { return tcpPacketRecv(tcp.descriptor, buffer, timeout); },
            [&](UsbPrinter usb) { return streamPacketRecv(usb.stream, buffer, timeout); },
            [](StandardOutput) { return 0; },
            [&](BaseStation station) { return streamPacketRecv(station.stream, buffer, timeout); },
        },
        handle);
}

}  // namespace tintoral
