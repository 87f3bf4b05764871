#include "transport/net/riousb.h"

#include <algorithm>
#include <array>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "support/byte_writer.h"
#include "support/clock.h"
#include "transport/net/sockets.h"

namespace tintoral {
namespace {

using std::chrono::milliseconds;
using Steady = std::chrono::steady_clock;

constexpr std::uint32_t kVersion = 1;
constexpr std::uint32_t kOpen = 1;
constexpr std::uint32_t kClose = 2;
constexpr std::uint32_t kRead = 3;
constexpr std::uint32_t kWrite = 4;
constexpr std::uint32_t kDeviceID = 5;

constexpr std::size_t kHeaderSize = 24;
constexpr std::size_t kLongestPayload = RiousbReadCache::kRoom;
constexpr std::uint32_t kBytesWanted = 1024;
constexpr std::uint32_t kDeviceIDFlags = 1;
constexpr std::uint32_t kDeviceIDBytesWanted = 8192;

constexpr milliseconds kOpenTimeout{200};
constexpr milliseconds kCloseTimeout{200};
constexpr milliseconds kWriteTimeout{500};
constexpr milliseconds kLongestWrite{5000};
constexpr milliseconds kRequestPause{100};

struct Message {
    std::uint32_t type = 0;
    std::uint32_t sequence = 0;
    std::uint32_t length = 0;  // as the header has it
    std::uint32_t status = 0;
    std::uint32_t handle = 0;
    std::vector<std::uint8_t> payload;

    bool brings(std::uint32_t wantedType) const { return type == wantedType && !payload.empty(); }
};

Message decodeHeader(Bytes header) {
    ByteReader reader(header);
    reader.be32();  // version
    Message message;
    message.type = reader.be32();
    message.sequence = reader.be32();
    message.length = reader.be32();
    message.status = reader.be32();
    message.handle = reader.be32();
    return message;
}

milliseconds elapsedSince(Steady::time_point start) {
    return std::chrono::ceil<milliseconds>(Steady::now() - start);
}

// Sends one request. Result: that of the send.
int sendRequest(RiousbConnection& connection, std::uint32_t type, Bytes payload) {
    std::vector<std::uint8_t> message(kHeaderSize + payload.size());
    ByteWriter writer(message);
    writer.be32(kVersion).be32(type).be32(connection.nextSequence++);
    writer.be32(static_cast<std::uint32_t>(payload.size())).be32(0).be32(connection.handle);
    writer.bytes(payload);
    return waitSend(connection.socket.get(), writer.written());
}

// Reads the payload to its end. False when it does not come whole in time.
bool receivePayload(int socket, Message& message, milliseconds timeout) {
    std::array<std::uint8_t, 4096> piece;
    const auto start = Steady::now();
    std::size_t left = message.length;
    while (left > 0 && elapsedSince(start) <= timeout) {
        const MutableBytes room = MutableBytes(piece).first(std::min(left, piece.size()));
        const int count = receiveAll(socket, room, timeout - elapsedSince(start));
        if (count < 1) return false;
        const Bytes came = room.first(static_cast<std::size_t>(count));
        const Bytes kept =
            came.first(std::min(came.size(), kLongestPayload - message.payload.size()));
        message.payload.insert(message.payload.end(), kept.begin(), kept.end());
        left -= came.size();
    }
    return left == 0;
}

struct MessageTimeouts {
    milliseconds header;
    milliseconds payload;
};

// The next message. Result: 1; 0 when none came in time; -1 when the connection is lost or the
// message's status is not 0.
int receiveMessage(RiousbConnection& connection, MessageTimeouts timeouts, Message& message) {
    std::array<std::uint8_t, kHeaderSize> header;
    const int count = receiveAll(connection.socket.get(), header, timeouts.header);
    if (count < 1) return count;
    const bool whole = static_cast<std::size_t>(count) == header.size();
    if (whole) message = decodeHeader(header);
    const bool complete =
        whole && receivePayload(connection.socket.get(), message, timeouts.payload);
    if (!whole || (!complete && !message.payload.empty())) connection.socket.reset();
    return whole && message.status == 0 ? 1 : -1;
}

// Printer data and a device ID that nobody waits for yet.
void keepForLater(RiousbConnection& connection, const Message& message) {
    if (message.brings(kRead)) connection.cache.addReadCache(message.sequence, message.payload);
    if (message.brings(kDeviceID)) connection.deviceID.assign(asText(message.payload));
}

// Sends the request again and again until `take` finds its result in a message or the time is up.
using Take = std::function<std::optional<int>(const Message&)>;
int askRepeatedly(RiousbConnection& connection, std::uint32_t type, Bytes request,
                  milliseconds timeout, const Take& take) {
    for (milliseconds left = timeout; left > milliseconds(0);) {
        const auto start = Steady::now();
        if (sendRequest(connection, type, request) < 1) return -1;
        pauseFor(kRequestPause);
        Message message;
        const int came = receiveMessage(connection, {left, left}, message);
        if (came < 0) return -1;
        if (came > 0) {
            if (const auto result = take(message)) return *result;
        }
        left -= std::max(elapsedSince(start), kRequestPause);
    }
    return 0;
}

}  // namespace

std::unique_ptr<RiousbConnection> riousbOpen(const std::string& host, std::uint16_t port,
                                             std::string_view printerName) {
    UniqueFd socket = openTCP6(host, port);
    return socket.valid() ? riousbOpenOn(std::move(socket), printerName) : nullptr;
}

std::unique_ptr<RiousbConnection> riousbOpenOn(UniqueFd socket, std::string_view printerName) {
    auto connection = std::make_unique<RiousbConnection>();
    connection->socket = std::move(socket);
    if (sendRequest(*connection, kOpen, asBytes(printerName)) < 1) return nullptr;
    Message reply;
    if (receiveMessage(*connection, {kOpenTimeout, kOpenTimeout}, reply) < 1) return nullptr;
    connection->handle = reply.handle;
    return connection;
}

void riousbClose(std::unique_ptr<RiousbConnection> connection) {
    if (!connection || sendRequest(*connection, kClose, {}) < 1) return;
    Message reply;
    receiveMessage(*connection, {kCloseTimeout, kCloseTimeout}, reply);
}

int riousbWrite(RiousbConnection& connection, Bytes bytes) {
    const auto start = Steady::now();
    const int sent = sendRequest(connection, kWrite, bytes);
    if (sent < 1) return sent;
    while (elapsedSince(start) < kLongestWrite) {
        Message message;
        const int came = receiveMessage(connection, {kWriteTimeout, kWriteTimeout}, message);
        if (came < 1) return came;
        if (message.brings(kWrite)) return static_cast<int>(message.payload.size());
        keepForLater(connection, message);
    }
    return 0;
}

int riousbRead(RiousbConnection& connection, MutableBytes buffer, milliseconds timeout) {
    if (!connection.cache.empty()) return static_cast<int>(connection.cache.topReadCache(buffer));
    std::array<std::uint8_t, 4> request;
    ByteWriter(request).be32(kBytesWanted);
    return askRepeatedly(connection, kRead, request, timeout,
                         [&](const Message& message) -> std::optional<int> {
                             keepForLater(connection, message);
                             if (!message.brings(kRead)) return std::nullopt;
                             return static_cast<int>(connection.cache.topReadCache(buffer));
                         });
}

int riousbGetDeviceID(RiousbConnection& connection, BoundedText& deviceID, milliseconds timeout) {
    if (!connection.deviceID.empty()) {
        deviceID.assign(connection.deviceID.view());
        connection.deviceID.clear();
        return static_cast<int>(deviceID.size());
    }
    std::array<std::uint8_t, 8> request;
    ByteWriter(request).be32(kDeviceIDFlags).be32(kDeviceIDBytesWanted);
    return askRepeatedly(connection, kDeviceID, request, timeout,
                         [&](const Message& message) -> std::optional<int> {
                             if (!message.brings(kDeviceID)) {
                                 keepForLater(connection, message);
                                 return std::nullopt;
                             }
                             deviceID.assign(asText(message.payload));
                             return static_cast<int>(deviceID.size());
                         });
}

}  // namespace tintoral
