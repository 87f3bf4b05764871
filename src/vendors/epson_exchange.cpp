#include "vendors/epson_exchange.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <optional>

#include "support/clock.h"
#include "support/hex_dump.h"
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

void drain(int socket) {
    Reply stale;
    SelectRecv(socket, stale, kDrainTimeout);
}

void leaveRemoteMode(int socket, int variant) {
    Command command{};
    waitSend(socket, Bytes(command).first(mkEpsonExitCmd(command, variant)));
}

// One inquiry on an open connection. Result: what was received (a part of `reply`), or nothing when
// the inquiry could not be sent.
std::optional<Bytes> exchange(int socket, Bytes inquiry, int variant, Reply& reply) {
    const Patience patience = patienceFor(variant);
    drain(socket);
    if (waitSend(socket, inquiry) < 1) {
        std::perror("tcpSendAndReceive: send ");
        return std::nullopt;
    }
    pauseFor(patience.pause);
    const int received = SelectRecv(socket, reply, patience.receive);
    leaveRemoteMode(socket, variant);
    return Bytes(reply).first(received > 0 ? static_cast<std::size_t>(received) : 0);
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
    const auto reply = exchange(socket.get(), inquiry, variant, storage);
    socket.reset();
    if (!reply) return -1;
    if (dump != nullptr) sDumpPacket(*dump, *reply);
    status.clear();
    return reply->empty() ? 0 : parseEpsonReply(*reply, status, record, 0);
}

}  // namespace tintoral
