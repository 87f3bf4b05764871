#include "vendors/canon_exchange.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>

#include "support/clock.h"
#include "support/hex_dump.h"
#include "transport/net/sockets.h"
#include "vendors/canon.h"
#include "vendors/hp.h"

namespace tintoral {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kReplyPause{500};
constexpr milliseconds kReceiveTimeout{500};
constexpr int kFurtherReceives = 8;
constexpr std::string_view kXmlStart = "<?xml";
constexpr std::size_t kLengthPrefix = 2;
constexpr std::size_t kFirstIvecReceive = 512;

using Reply = std::array<std::uint8_t, 2048>;
using Command = std::array<std::uint8_t, 512>;

// What has come of a reply so far.
class Collector {
  public:
    Collector(const IoHandle& handle, MutableBytes buffer) : handle_(handle), buffer_(buffer) {}

    Bytes bytes() const { return buffer_.first(size_); }
    std::size_t size() const { return size_; }
    bool contains(std::string_view mark) const {
        return asText(bytes()).find(mark) != std::string_view::npos;
    }

    // One wait for more, until `total` bytes are there; false when it yields nothing.
    bool receiveUpTo(std::size_t total) {
        const MutableBytes room = buffer_.first(std::min(total, buffer_.size())).subspan(size_);
        if (room.empty()) return false;
        const int count = ioWaitRecv(handle_, room, kReceiveTimeout);
        if (count > 0) size_ += static_cast<std::size_t>(count);
        return count > 0;
    }

  private:
    const IoHandle& handle_;
    MutableBytes buffer_;
    std::size_t size_ = 0;
};

Bytes receivePlainReply(const IoHandle& handle, Reply& storage) {
    Collector reply(handle, storage);
    reply.receiveUpTo(kLengthPrefix);
    if (reply.size() < kLengthPrefix) return reply.bytes();
    const std::size_t total = ByteReader(reply.bytes()).be16();
    for (int left = kFurtherReceives; left > 0 && reply.size() < total; --left) {
        if (!reply.receiveUpTo(total)) break;
    }
    return reply.bytes();
}

Bytes receiveIvecReply(const IoHandle& handle, Reply& storage) {
    Collector reply(handle, storage);
    reply.receiveUpTo(kFirstIvecReceive);
    if (!reply.contains(kXmlStart)) return reply.bytes();
    for (int left = kFurtherReceives; left > 0 && !reply.contains("</cmd>"); --left) {
        if (!reply.receiveUpTo(storage.size())) break;
    }
    return reply.bytes();
}

// What the printer says to a request that was sent. Result: a part of `storage`.
Bytes receiveReply(const IoHandle& handle, std::string_view commandSet, Reply& storage) {
    pauseFor(kReplyPause);
    if (canonSpeaksIvec(commandSet)) return receiveIvecReply(handle, storage);
    const Bytes reply = receivePlainReply(handle, storage);
    Command command{};
    ioSend(handle, Bytes(command).first(mkCanonExitCmd(command)));
    return reply;
}

// Where an XML document is expected anything else counts as no reply.
bool isReply(Bytes received, std::string_view commandSet) {
    return canonSpeaksIvec(commandSet) ? asText(received).find(kXmlStart) != std::string_view::npos
                                       : !received.empty();
}

int parseReply(Bytes reply, BoundedText& status, InkQuantities& record) {
    const int inks = parseCIR(reply, status, record);
    if (inks > 0) return inks;
    const Bytes fields = reply.subspan(std::min(kLengthPrefix, reply.size()));
    return parseDWS(textBeforeNul(fields), record);
}

}  // namespace

int tcpCanonInquiry(const std::string& host, std::uint16_t port, std::string_view model,
                    std::string_view commandSet, BoundedText& status, InkQuantities& record,
                    BoundedText* dump) {
    Command command{};
    const std::size_t length = mkCanonStatusInquire(model, command, commandSet);
    if (length == 0) return 0;
    const UniqueFd socket = TcpOpenConnection(host, port);
    if (!socket.valid()) return -1;
    if (waitSend(socket.get(), Bytes(command).first(length)) < 1) {
        std::perror("tcpCanonInquiry: send ");
        return -1;
    }
    Reply storage{};
    const Bytes reply = receiveReply(TcpSocket{socket.get()}, commandSet, storage);
    if (!isReply(reply, commandSet)) return 0;
    if (dump != nullptr) sDumpPacket(*dump, reply);
    return parseReply(reply, status, record);
}

int canonDiagnose0(const IoHandle& handle, std::string_view model, std::string_view commandSet,
                   BoundedText& report) {
    Command command{};
    ioSend(handle, Bytes(command).first(mkCanonStatusInquire(model, command, commandSet)));
    Reply storage{};
    const Bytes reply = receiveReply(handle, commandSet, storage);
    const int received = static_cast<int>(reply.size());
    report.appendFormat("Canon response = %03d\n", received);
    if (!isReply(reply, commandSet)) return received;
    StatusText status;
    InkQuantities record;
    sdumpInkQuantities(report, parseReply(reply, status, record), record);
    return received;
}

}  // namespace tintoral
