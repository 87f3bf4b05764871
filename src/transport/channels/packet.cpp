#include "transport/channels/packet.h"

#include <algorithm>
#include <limits>

namespace tintoral {
namespace {

using std::chrono::milliseconds;

bool isOver(const PacketChannel& channel) {
    return std::chrono::steady_clock::now() >= channel.end;
}

// A packet as the channel receives them: nothing any more when the session is over.
std::size_t receivePacket(const PacketChannel& channel, MutableBytes buffer, milliseconds timeout) {
    if (isOver(channel)) return 0;
    const int count = ioPacketRecv(channel.handle, buffer, withinSession(timeout, channel.end));
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

void writeHeader(ByteWriter& writer, const PacketHeader& header) {
    writer.u8(header.psid).u8(header.ssid).be16(header.length).u8(header.credit).u8(header.control);
}

// A transaction: a packet on socket 0.
std::size_t writeTransaction(MutableBytes buffer, std::uint8_t credit, Bytes payload) {
    ByteWriter writer(buffer);
    const auto length = static_cast<std::uint16_t>(kPacketHeaderSize + payload.size());
    writeHeader(writer, {.length = length, .credit = credit});
    writer.bytes(payload);
    return writer.finish();
}

}  // namespace

SessionEnd sessionEndIn(milliseconds time) {
    return std::chrono::steady_clock::now() + time;
}

milliseconds withinSession(milliseconds timeout, SessionEnd end) {
    const auto now = std::chrono::steady_clock::now();
    if (now >= end) return milliseconds(0);
    return std::min(timeout, std::chrono::ceil<milliseconds>(end - now));
}

std::optional<Packet> parsePacket(Bytes received) {
    ByteReader reader(received);
    Packet packet;
    packet.header.psid = reader.u8();
    packet.header.ssid = reader.u8();
    packet.header.length = reader.be16();
    packet.header.credit = reader.u8();
    packet.header.control = reader.u8();
    if (reader.failed() || packet.header.length < kPacketHeaderSize) return std::nullopt;
    packet.payload =
        reader.take(std::min(packet.header.length - kPacketHeaderSize, reader.remaining()));
    return packet;
}

std::optional<Transaction> parseTransaction(Bytes received) {
    const auto packet = parsePacket(received);
    if (!packet || !packet->onSocket(0) || packet->payload.empty()) return std::nullopt;
    ByteReader reader(packet->payload);
    Transaction transaction{.payload = packet->payload};
    transaction.command = reader.u8();
    transaction.succeeded = reader.u8() == 0 && !reader.failed();
    return transaction;
}

std::uint8_t byteAt(Bytes packet, std::size_t offset) {
    ByteReader reader(packet);
    reader.skip(offset);
    return reader.u8();
}

std::uint16_t be16At(Bytes packet, std::size_t offset) {
    ByteReader reader(packet);
    reader.skip(offset);
    return reader.be16();
}

void allowClosing(PacketChannel& channel) {
    constexpr milliseconds kClosing{2000};
    channel.end = std::max(channel.end, sessionEndIn(kClosing));
}

void setCommand(PacketChannel& channel, std::uint8_t credit, Bytes payload) {
    channel.commandLength = writeTransaction(channel.command, credit, payload);
    channel.expectedReply = byteAt(payload, 0) | packet_command::kReplyBit;
}

void setCommand(PacketChannel& channel, std::uint8_t credit,
                std::initializer_list<std::uint8_t> payload) {
    setCommand(channel, credit, Bytes(payload.begin(), payload.size()));
}

int sendCommand(const PacketChannel& channel) {
    if (channel.commandLength == 0 || isOver(channel)) return -1;
    return ioSend(channel.handle, Bytes(channel.command).first(channel.commandLength));
}

std::size_t receiveReply(PacketChannel& channel, std::size_t maximum, milliseconds timeout) {
    const MutableBytes room =
        MutableBytes(channel.reply).first(std::min(maximum, channel.reply.size()));
    const std::size_t received = receivePacket(channel, room, timeout);
    const auto packet = parsePacket(Bytes(room).first(received));
    channel.replyLength = packet ? kPacketHeaderSize + packet->payload.size() : received;
    return received;
}

void dropReply(PacketChannel& channel) {
    channel.replyLength = 0;
}

void addCredit(PacketChannel& channel, std::uint16_t credit) {
    constexpr unsigned kMost = std::numeric_limits<std::uint16_t>::max();
    const unsigned sum = unsigned{channel.sendCredit} + credit;
    channel.sendCredit = static_cast<std::uint16_t>(std::min(sum, kMost));
}

void answer(const PacketChannel& channel, std::uint8_t credit,
            std::initializer_list<std::uint8_t> payload) {
    std::array<std::uint8_t, 16> packet;
    const std::size_t length =
        writeTransaction(packet, credit, Bytes(payload.begin(), payload.size()));
    if (length > 0) ioSend(channel.handle, Bytes(packet).first(length));
}

void refuse(const PacketChannel& channel, PacketHeader header, std::uint8_t command,
            MutableBytes buffer) {
    header.length = 8;
    ByteWriter writer(buffer);
    writeHeader(writer, header);
    writer.u8(command | packet_command::kReplyBit).u8(1);
    if (!writer.failed()) ioSend(channel.handle, writer.written());
}

int requestCreditUpTo(const PacketChannel& channel, int most, const std::function<int()>& request) {
    for (int requests = 0; channel.sendCredit == 0 && requests < most; ++requests) {
        if (const int error = request(); error != 0) return error;
    }
    return 0;
}

void receiveReverseCommand(const PacketChannel& channel, milliseconds timeout,
                           const ReverseCommand& execute) {
    std::array<std::uint8_t, 16> packet;
    const std::size_t received = receivePacket(channel, packet, timeout);
    if (received > 0) execute(packet, received);
}

std::optional<Packet> awaitData(const PacketChannel& channel, MutableBytes storage,
                                const ReadLimits& limits, const ReverseCommand& execute) {
    using Steady = std::chrono::steady_clock;
    const auto deadline = Steady::now() + limits.whole;
    for (int packets = 0; packets < limits.packets && Steady::now() < deadline; ++packets) {
        const std::size_t received = receivePacket(channel, storage, limits.timeout);
        if (received == 0) return std::nullopt;
        const auto packet = parsePacket(Bytes(storage).first(received));
        if (!packet) continue;
        if (packet->onSocket(0)) {
            execute(storage, received);
        } else if (packet->onSocket(channel.socketId)) {
            return packet;
        }
    }
    return std::nullopt;
}

ByteWriter& writeDataHeader(ByteWriter& writer, const PacketChannel& channel,
                            std::size_t dataLength) {
    const auto length = static_cast<std::uint16_t>(kPacketHeaderSize + dataLength);
    writeHeader(writer, {.psid = channel.socketId, .ssid = channel.socketId, .length = length});
    return writer;
}

std::size_t takeData(PacketChannel& channel, const Packet& packet, MutableBytes buffer) {
    const Bytes data = packet.payload.first(std::min(packet.payload.size(), buffer.size()));
    std::ranges::copy(data, buffer.begin());
    if (channel.readCredit > 0) --channel.readCredit;
    return data.size();
}

}  // namespace tintoral
