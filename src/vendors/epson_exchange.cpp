#include "vendors/epson_exchange.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <optional>

#include "support/clock.h"
#include "support/hex_dump.h"
#include "transport/channels/d4_epson.h"
#include "transport/net/sockets.h"
#include "vendors/epson.h"

namespace tintoral {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kDrainTimeout{200};
constexpr std::size_t kReplyCapacity = 2048;
using Reply = std::array<std::uint8_t, kReplyCapacity>;
using Command = std::array<std::uint8_t, 128>;

// What a printer takes to make up its reply: `pause` before anyone looks, then `receive` at most.
struct Patience {
    milliseconds pause;
    milliseconds receive;
};

Patience patienceFor(int variant) {
    if (variant == 2) return {milliseconds(1000), milliseconds(500)};
    return {milliseconds(2000), milliseconds(1600)};
}

// The two ways to reach a printer in remote mode. On a socket of this module's own a failed send is
// noticed and a reply taken as soon as it comes; a handle offers neither.
struct OwnSocket {
    int socket;

    bool send(Bytes bytes) const { return waitSend(socket, bytes) > 0; }
    int receive(MutableBytes buffer, milliseconds timeout) const {
        return SelectRecv(socket, buffer, timeout);
    }
};
struct OpenHandle {
    const IoHandle& handle;

    bool send(Bytes bytes) const { return ioSend(handle, bytes) == 0; }
    int receive(MutableBytes buffer, milliseconds timeout) const {
        return ioWaitRecv(handle, buffer, timeout);
    }
};

template <typename Link>
void drain(const Link& link) {
    Reply stale;
    link.receive(stale, kDrainTimeout);
}

template <typename Link>
void leaveRemoteMode(const Link& link, int variant) {
    Command command{};
    link.send(Bytes(command).first(mkEpsonExitCmd(command, variant)));
}

Bytes firstOf(const Reply& reply, int count) {
    return Bytes(reply).first(
        std::min(count > 0 ? static_cast<std::size_t>(count) : 0, reply.size()));
}

// One inquiry on an open connection. Result: what was received (a part of `reply`), or nothing when
// the inquiry could not be sent.
template <typename Link>
std::optional<Bytes> exchange(const Link& link, Bytes inquiry, int variant, Reply& reply) {
    const Patience patience = patienceFor(variant);
    drain(link);
    if (!link.send(inquiry)) {
        std::perror("tcpSendAndReceive: send ");
        return std::nullopt;
    }
    pauseFor(patience.pause);
    const int received = link.receive(reply, patience.receive);
    leaveRemoteMode(link, variant);
    return firstOf(reply, received);
}

Bytes inquireInRemoteMode(const IoHandle& handle, std::string_view commandType, Reply& reply) {
    const int variant = epsonVariant(commandType);
    Command command{};
    const Bytes inquiry = Bytes(command).first(mkEpsonStatusInquire(command, variant));
    return exchange(OpenHandle{handle}, inquiry, variant, reply).value_or(Bytes());
}

// The reply on the D4 control channel; none when there is no such channel.
Bytes inquireOverD4(const IoHandle& handle, Reply& reply, BoundedText* dump) {
    const int length = d4GetEpsonInkStatus(handle, reply, dump);
    return firstOf(reply, length == kNoD4Channel ? 0 : length);
}

}  // namespace

int tcpEpsonRCInquiry(const std::string& host, std::uint16_t port, int variant, BoundedText& status,
                      InkQuantities& record, BoundedText* dump) {
    Command command{};
    const Bytes inquiry = Bytes(command).first(mkEpsonStatusInquire(command, variant));
    if (inquiry.empty()) return 0;
    UniqueFd socket = TcpOpenConnection(host, port);
    if (!socket.valid()) return -1;
    Reply storage{};
    const auto reply = exchange(OwnSocket{socket.get()}, inquiry, variant, storage);
    socket.reset();
    if (!reply) return -1;
    if (dump != nullptr) sDumpPacket(*dump, *reply);
    status.clear();
    return reply->empty() ? 0 : parseEpsonReply(*reply, status, record, 0);
}

int tcpEpsonD4Inquiry(const std::string& host, std::uint16_t port, BoundedText& status,
                      InkQuantities& record, BoundedText* dump) {
    const UniqueFd socket = TcpOpenConnection(host, port);
    if (!socket.valid()) return -1;
    drain(OwnSocket{socket.get()});
    Reply storage{};
    const Bytes reply = inquireOverD4(TcpSocket{socket.get()}, storage, dump);
    if (reply.empty()) return -1;
    status.clear();
    return parseEpsonReply(reply, status, record, -1);
}

int tcpEpsonD4NozzleOption(const std::string& host, std::uint16_t port, int option) {
    const UniqueFd socket = TcpOpenConnection(host, port);
    return socket.valid() ? d4EpsonNozzleOption(TcpSocket{socket.get()}, option) : -1;
}

int epsonDiagnose0(const IoHandle& handle, std::string_view commandType, BoundedText& report) {
    Reply storage{};
    const Bytes reply = commandType == epson_commands::d4
                            ? inquireOverD4(handle, storage, nullptr)
                            : inquireInRemoteMode(handle, commandType, storage);
    const int received = static_cast<int>(reply.size());
    report.appendFormat("Epson %.*s response = %03d\n", static_cast<int>(commandType.size()),
                        commandType.data(), received);
    if (reply.empty()) return 0;
    sDumpPacket(report, reply);
    StatusText status;
    InkQuantities record;
    const int inks = parseEpsonReply(reply, status, record, 0);
    report.appendFormat("Status = %s\n", status.c_str());
    sdumpInkQuantities(report, inks, record);
    return received;
}

}  // namespace tintoral
