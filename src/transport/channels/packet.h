// What IEEE 1284.4 (D4) and the older MLC have in common: the packet, the transaction and the state
// of one channel.
//
//   offset  size  packet (numbers high byte first)
//   0       1     primary socket (PSID)
//   1       1     secondary socket (SSID)
//   2       2     length of the whole packet
//   4       1     credit granted to the other side
//   5       1     control
//   6       ...   payload
//
// Packets on socket 0 (both IDs 0) carry transactions: payload byte 0 is the command, with bit 7
// set in a reply, whose byte 1 is the result (0: success). All other packets carry a channel's
// data.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>

#include "support/byte_reader.h"
#include "support/byte_writer.h"
#include "vendors/transport_io.h"

namespace tintoral {

inline constexpr std::size_t kPacketHeaderSize = 6;

namespace packet_command {
inline constexpr std::uint8_t kInit = 0x00;
inline constexpr std::uint8_t kOpenChannel = 0x01;
inline constexpr std::uint8_t kCloseChannel = 0x02;
inline constexpr std::uint8_t kCredit = 0x03;
inline constexpr std::uint8_t kCreditRequest = 0x04;
inline constexpr std::uint8_t kExit = 0x08;
inline constexpr std::uint8_t kError = 0x7F;  // carries no reply bit in either direction
inline constexpr std::uint8_t kReplyBit = 0x80;
}  // namespace packet_command

struct PacketHeader {
    std::uint8_t psid = 0;
    std::uint8_t ssid = 0;
    std::uint16_t length = 0;
    std::uint8_t credit = 0;
    std::uint8_t control = 0;
};

struct Packet {
    PacketHeader header;
    Bytes
        payload;  // what the header announces, as far as it arrived; shares the owner of the bytes

    bool onSocket(std::uint8_t id) const { return header.psid == id && header.ssid == id; }
};

struct Transaction {
    std::uint8_t command = 0;
    bool succeeded = false;  // the result byte is there and 0
    Bytes payload;           // from the command on; shares the owner of the bytes

    bool isReply() const { return (command & packet_command::kReplyBit) != 0; }
};

// Nothing for fewer than 6 bytes and for a length field below 6.
std::optional<Packet> parsePacket(Bytes received);

// Nothing for what is no packet, for a packet of another socket and for one without a command.
std::optional<Transaction> parseTransaction(Bytes received);

// The number at `offset` of a packet, high byte first; 0 when the packet ends before it.
std::uint8_t byteAt(Bytes packet, std::size_t offset);
std::uint16_t be16At(Bytes packet, std::size_t offset);

// When a session has to be over: from then on no transaction of ours is sent and nothing received,
// whatever the printer still has to say. Each of its waits is short, but a printer that always says
// something, or drips its packets, makes the most of every one of them.
using SessionEnd = std::chrono::steady_clock::time_point;
SessionEnd sessionEndIn(std::chrono::milliseconds time);

// `timeout`, or what is left of the session if that is less; never less than 0.
std::chrono::milliseconds withinSession(std::chrono::milliseconds timeout, SessionEnd end);

// One channel. The caller owns it; the handle's connection stays with whoever opened it.
struct PacketChannel {
    explicit PacketChannel(const IoHandle& connection, SessionEnd sessionEnd = SessionEnd::max())
        : handle(connection), end(sessionEnd) {}

    IoHandle handle;
    SessionEnd end;
    bool open = false;
    std::uint8_t socketId = 1;
    std::uint16_t sendCredit = 0;  // packets that may still be sent
    std::uint16_t readCredit = 0;  // packets that the printer may still send
    std::uint16_t maxPrinterBound = 0;
    std::uint16_t maxHostBound = 0;

    std::array<std::uint8_t, 128> command{};  // the transaction being built, header at its start
    std::size_t commandLength = 0;
    std::uint8_t expectedReply = 0;
    std::array<std::uint8_t, 256> reply{};
    std::size_t replyLength = 0;

    // What receiveReply() left; empty when that was nothing.
    Bytes lastReply() const { return Bytes(reply).first(replyLength); }
};

// Time for closing: a printer that has used up the session is told to leave packet mode all the
// same, or the next job would go astray.
void allowClosing(PacketChannel& channel);

// Builds the transaction `payload` (command first, at most 122 bytes) in channel.command, with
// `credit` in the header, and notes the reply to expect. A longer payload leaves no command:
// nothing is sent then.
void setCommand(PacketChannel& channel, std::uint8_t credit, Bytes payload);
void setCommand(PacketChannel& channel, std::uint8_t credit,
                std::initializer_list<std::uint8_t> payload);

// Sends channel.command. Result: that of ioSend(); -1 without a command or after the session's end.
int sendCommand(const PacketChannel& channel);

// Receives one packet of at most `maximum` bytes (256 are kept) into channel.reply. Result: bytes
// received; of them lastReply() holds the first packet alone, all of them when they are no packet.
std::size_t receiveReply(PacketChannel& channel, std::size_t maximum,
                         std::chrono::milliseconds timeout);

// Forgets the last reply, which belongs to no exchange.
void dropReply(PacketChannel& channel);

// Adds to the credit that the channel holds now; it stays at 65535 rather than start again at 0.
void addCredit(PacketChannel& channel, std::uint16_t credit);

// Answers a transaction that the printer started. `payload` has at most 10 bytes.
void answer(const PacketChannel& channel, std::uint8_t credit,
            std::initializer_list<std::uint8_t> payload);

// Turns the transaction in `buffer` into its own refusal (result 1) and sends that: 8 bytes,
// `header` with socket and control as they were received. `buffer` holds at least 8 bytes, or
// nothing is sent.
void refuse(const PacketChannel& channel, PacketHeader header, std::uint8_t command,
            MutableBytes buffer);

// What a channel does with a packet that may be a transaction of the printer's own: `received`
// bytes at the start of `buffer`.
using ReverseCommand = std::function<void(MutableBytes buffer, std::size_t received)>;

// Runs `request` until the channel holds credit, at most `most` times. Result: 0, or the first
// result of `request` that is not 0; the channel may still be without credit after a 0.
int requestCreditUpTo(const PacketChannel& channel, int most, const std::function<int()>& request);

// Gives one packet of at most 16 bytes to `execute`, if one comes in time.
void receiveReverseCommand(const PacketChannel& channel, std::chrono::milliseconds timeout,
                           const ReverseCommand& execute);

// How long a read waits for its data: each packet within `timeout`, no more than `packets` of them
// and no longer than `whole`, however much the printer talks.
struct ReadLimits {
    int packets;
    std::chrono::milliseconds timeout;
    std::chrono::milliseconds whole;
};

// The next data packet of the channel's socket. Transactions that come before it go to `execute`,
// packets of other sockets and what is no packet are dropped. The packet shares `storage`, which
// the caller keeps. Nothing when the limits are reached or no packet comes in time.
std::optional<Packet> awaitData(const PacketChannel& channel, MutableBytes storage,
                                const ReadLimits& limits, const ReverseCommand& execute);

// Writes the header of a data packet of the channel that carries `dataLength` bytes (at most 65529)
// and no credit.
ByteWriter& writeDataHeader(ByteWriter& writer, const PacketChannel& channel,
                            std::size_t dataLength);

// Copies a data packet's payload to `buffer`, as far as it fits, and uses up a read credit. Result:
// bytes copied.
std::size_t takeData(PacketChannel& channel, const Packet& packet, MutableBytes buffer);

}  // namespace tintoral
