// Sending to and receiving from a printer, whatever it is connected by.
//
//   selector  transport                 receive                       packet
//   0         TCP socket                waitRecv                      header, then the rest
//   1         USB printer               reads until the time is up    one read, one for the rest
//   2         the filter's output       nothing, at once              nothing, at once
//   3         USB at a base station     one read                      as USB
//
// The selector is the index of the handle's alternative. Nothing here owns a connection: whoever
// opened it keeps it open for as long as the handle is used.
#pragma once

#include <chrono>
#include <functional>
#include <type_traits>
#include <variant>

#include "support/byte_reader.h"

namespace tintoral {

// What a transport offers that moves bytes in transfers rather than on a socket. Each wait is
// finite.
class ByteStream {
  public:
    virtual ~ByteStream() = default;

    // One transfer to the printer. A failure shows in the receive that follows.
    virtual void send(Bytes bytes) = 0;

    // One transfer from the printer. Result: bytes received, at most the buffer's size; 0 when none
    // came within the time-out; -1 on failure.
    virtual int receive(MutableBytes buffer, std::chrono::milliseconds timeout) = 0;

    // Transfers until the buffer is full or the time is up. Result: as receive(), -1 only when
    // nothing came before the failure.
    virtual int waitReceive(MutableBytes buffer, std::chrono::milliseconds timeout) {
        return receive(buffer, timeout);
    }
};

struct TcpSocket {
    int descriptor = -1;
};
struct UsbPrinter {
    std::reference_wrapper<ByteStream> stream;
};
struct StandardOutput {};
struct BaseStation {
    std::reference_wrapper<ByteStream> stream;
};

using IoHandle = std::variant<TcpSocket, UsbPrinter, StandardOutput, BaseStation>;
static_assert(std::is_same_v<std::variant_alternative_t<0, IoHandle>, TcpSocket>);
static_assert(std::is_same_v<std::variant_alternative_t<1, IoHandle>, UsbPrinter>);
static_assert(std::is_same_v<std::variant_alternative_t<2, IoHandle>, StandardOutput>);
static_assert(std::is_same_v<std::variant_alternative_t<3, IoHandle>, BaseStation>);

// Sends the bytes once; to standard output with a flush. Result: 0, also when the transport fails.
int ioSend(const IoHandle& handle, Bytes bytes);

// Result: bytes received; 0 when none came in time, and at once for standard output; -1 when the
// peer closed or the transport failed before anything came.
int ioWaitRecv(const IoHandle& handle, MutableBytes buffer, std::chrono::milliseconds timeout);

// One packet whose bytes 2 and 3 hold its total length, high byte first. Of a packet longer than
// `buffer` the part that fits is kept and the rest read and dropped, so that the next packet starts
// at its own header.
//
// On a socket the header's four bytes and each wait for more have `timeout`; a wait that yields
// nothing drops the packet. A stream is read once, and once more when the packet has not come
// whole; a packet longer than the buffer takes up to eight reads. A packet that has not come whole
// in eight times `timeout`, and the one wait that is then under way, is dropped as well. Result:
// bytes in `buffer`, which a stream may leave short of the packet's length or fill past it; 0 when
// there is no packet.
int ioPacketRecv(const IoHandle& handle, MutableBytes buffer, std::chrono::milliseconds timeout);

}  // namespace tintoral
