#include "vendors/brother_exchange.h"

#include <array>
#include <chrono>

#include "support/hex_dump.h"
#include "transport/net/sockets.h"

namespace tintoral {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kTimeout{1000};
constexpr milliseconds kTimeoutOverTcp{2000};
using Heard = std::array<std::uint8_t, 2048>;

Bytes listen(const IoHandle& handle, Heard& storage, milliseconds timeout) {
    const int count = ioWaitRecv(handle, storage, timeout);
    return Bytes(storage).first(count > 0 ? static_cast<std::size_t>(count) : 0);
}

}  // namespace

int brotherDiagnose0(const IoHandle& handle, int /*ignored*/, BoundedText& report) {
    Heard storage{};
    const Bytes heard = listen(handle, storage, kTimeout);
    const int count = static_cast<int>(heard.size());
    report.appendFormat("Brother status = %03d\n", count);
    sDumpPacket(report, heard);
    return count;
}

int tcpBrotherDiagnose(const std::string& host, std::uint16_t port, BoundedText* dump) {
    const UniqueFd socket = TcpOpenConnection(host, port);
    if (!socket.valid()) return 0;
    Heard storage{};
    const Bytes heard = listen(TcpSocket{socket.get()}, storage, kTimeoutOverTcp);
    if (dump != nullptr) sDumpPacket(*dump, heard);
    return 0;
}

}  // namespace tintoral
