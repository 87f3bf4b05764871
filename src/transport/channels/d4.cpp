#include "transport/channels/d4.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <optional>

#include "support/byte_writer.h"
#include "support/clock.h"

namespace tintoral {

int d4Revision = 16;

namespace {

using namespace packet_command;
using std::chrono::milliseconds;

constexpr std::uint8_t kGetSocketID = 0x09;
constexpr std::uint8_t kCommandCredit = 1;
constexpr int kRevision16 = 16;
constexpr int kRevision32 = 32;

constexpr int kStartAttempts = 5;
constexpr milliseconds kStartTimeout{1000};
constexpr std::size_t kStartAnswerRoom = 256;
constexpr std::uint8_t kStaleSocket = 2;

constexpr int kExchangeReceives = 5;
constexpr milliseconds kExchangePause{100};
constexpr milliseconds kReceiveTimeout{800};
constexpr std::size_t kReplyRoom = 256;

constexpr int kCreditRequests = 3;
constexpr milliseconds kCreditPause{1};

// A printer that talks without end may hold up a read no longer than this.
constexpr ReadLimits kReadLimits{
    .packets = 64, .timeout = kReceiveTimeout, .whole = milliseconds{4000}};
constexpr std::size_t kDataPacketRoom = kPacketHeaderSize + kD4PayloadRoom;

constexpr std::string_view kEnterPacketMode("\0\0\0\x1B\x01@EJL 1284.4\n@EJL\n@EJL\n", 27);
constexpr std::string_view kPacketModeOn("\0\0\0\x08\x01\0\xC5\0", 8);
constexpr std::string_view kStillInPacketMode("\0\0\0\x0A\0\0\x7F\0\0\x80", 10);

// A reply, if it is one, or an Error packet: the exchange's result. Nothing for a transaction of
// the printer's own.
std::optional<int> exchangeResult(const Transaction& transaction, std::uint8_t expectedReply) {
    if (transaction.command == kError) return 1;
    if (!transaction.isReply()) return std::nullopt;
    return transaction.command == expectedReply && transaction.succeeded ? 0 : -1;
}

std::optional<int> receiveInExchange(D4Channel& channel) {
    pauseFor(kExchangePause);
    receiveReply(channel, kReplyRoom, kReceiveTimeout);
    const auto transaction = parseTransaction(channel.lastReply());
    if (!transaction) return std::nullopt;
    const auto result = exchangeResult(*transaction, channel.expectedReply);
    if (!result) d4execReverseCmd(channel, channel.reply, channel.replyLength);
    return result;
}

void closeStaleChannel(const IoHandle& handle, SessionEnd end) {
    auto stale = std::make_unique<D4Channel>(handle, end);
    stale->socketId = kStaleSocket;
    D4close(stale);
}

int init(D4Channel& channel) {
    const std::uint8_t revision = d4Revision == kRevision32 ? 0x20 : 0x10;
    setCommand(channel, kCommandCredit, {kInit, revision});
    return d4SendAndReceive2(channel);
}

int findSocket(D4Channel& channel, std::string_view service) {
    std::array<std::uint8_t, sizeof channel.command - kPacketHeaderSize> payload;
    ByteWriter writer(payload);
    writer.u8(kGetSocketID).text(service);
    if (writer.failed()) return 1;
    setCommand(channel, kCommandCredit, writer.written());
    const int result = d4SendAndReceive2(channel);
    channel.socketId = byteAt(channel.lastReply(), 8);
    return result;
}

int openSocket(D4Channel& channel) {
    const bool revision16 = d4Revision == kRevision16;
    const std::uint8_t id = channel.socketId;
    if (revision16) {
        setCommand(channel, kCommandCredit, {kOpenChannel, id, id, 0, 200, 0, 200, 0, 0, 0, 0});
    } else {
        setCommand(channel, kCommandCredit, {kOpenChannel, id, id, 0, 200, 0, 200, 0xFF, 0xFF});
    }
    const int result = d4SendAndReceiveWithReverseCmd(channel);
    const Bytes reply = channel.lastReply();
    channel.maxPrinterBound = be16At(reply, 10);
    channel.maxHostBound = be16At(reply, 12);
    channel.sendCredit = be16At(reply, revision16 ? 14 : 16);
    return result;
}

int requestCredit(D4Channel& channel) {
    const std::uint8_t id = channel.socketId;
    if (d4Revision == kRevision16) {
        setCommand(channel, kCommandCredit, {kCreditRequest, id, id, 0x00, 0x80, 0xFF, 0xFF});
    } else {
        setCommand(channel, kCommandCredit, {kCreditRequest, id, id, 0xFF, 0xFF});
    }
    const int error = d4SendAndReceiveWithReverseCmd(channel);
    if (error != 0) return error;
    addCredit(channel, be16At(channel.lastReply(), 10));
    if (channel.sendCredit == 0) pauseFor(kCreditPause);
    return 0;
}

ReverseCommand reverseCommandOf(D4Channel& channel) {
    return [&channel](MutableBytes buffer, std::size_t received) {
        d4execReverseCmd(channel, buffer, received);
    };
}

// Revision 32 lets a printer grant credit by a transaction of its own after the request.
int obtainCredit(D4Channel& channel) {
    const bool hadNone = channel.sendCredit == 0;
    const int error =
        requestCreditUpTo(channel, kCreditRequests, [&] { return requestCredit(channel); });
    if (error != 0) return error;
    if (hadNone && d4Revision == kRevision32)
        receiveReverseCommand(channel, kReceiveTimeout, reverseCommandOf(channel));
    return 0;
}

// Result: that of the read this credit is for.
int grantReadCredit(D4Channel& channel) {
    if (channel.readCredit != 0) return -1;
    const std::uint8_t id = channel.socketId;
    setCommand(channel, kCommandCredit, {kCredit, id, id, 0x00, 0x01});
    if (d4SendAndReceiveWithReverseCmd(channel) != 0) return -1;
    channel.readCredit = 1;
    return 0;
}

}  // namespace

int D4start(const IoHandle& handle, std::string_view, SessionEnd end) {
    std::array<std::uint8_t, kStartAnswerRoom> buffer{};
    std::size_t wanted = buffer.size();
    for (int attempt = 0; attempt < kStartAttempts; ++attempt) {
        const milliseconds wait = withinSession(kStartTimeout, end);
        if (wait == milliseconds(0)) return -1;
        ioSend(handle, asBytes(kEnterPacketMode));
        const int count = ioWaitRecv(handle, MutableBytes(buffer).first(wanted), wait);
        if (count < 1) continue;  // no answer, and so none to take the size from
        wanted = static_cast<std::size_t>(count);
        const std::string_view answer = asText(Bytes(buffer).first(wanted));
        if (answer.starts_with(kPacketModeOn)) return 0;
        if (answer.starts_with(kStillInPacketMode)) closeStaleChannel(handle, end);
    }
    return -1;
}

std::unique_ptr<D4Channel> D4open(const IoHandle& handle, std::string_view service, int revision,
                                  SessionEnd end) {
    d4Revision = revision;
    auto channel = std::make_unique<D4Channel>(handle, end);
    const bool opened =
        init(*channel) == 0 && findSocket(*channel, service) == 0 && openSocket(*channel) == 0;
    if (!opened) return nullptr;
    channel->open = true;
    return channel;
}

int D4write(D4Channel& channel, Bytes data) {
    if (data.size() > kD4PayloadRoom) return -1;
    if (const int error = obtainCredit(channel); error != 0) return error;
    if (channel.sendCredit == 0) return -1;
    std::array<std::uint8_t, kDataPacketRoom> packet;
    ByteWriter writer(packet);
    writeDataHeader(writer, channel, data.size()).bytes(data);
    ioSend(channel.handle, writer.written());
    --channel.sendCredit;
    return 0;
}

int D4read(D4Channel& channel, MutableBytes buffer, std::size_t& length) {
    length = 0;
    if (channel.maxHostBound == 0) return -1;
    const int result = grantReadCredit(channel);
    std::array<std::uint8_t, kDataPacketRoom> storage;
    const auto packet = awaitData(channel, storage, kReadLimits, reverseCommandOf(channel));
    if (!packet) return -1;
    addCredit(channel, packet->header.credit);
    length = takeData(channel, *packet, buffer);
    return result;
}

int D4close(std::unique_ptr<D4Channel>& channel) {
    allowClosing(*channel);
    const std::uint8_t id = channel->socketId;
    setCommand(*channel, kCommandCredit, {kCloseChannel, id, id});
    if (const int error = d4SendAndReceiveWithReverseCmd(*channel); error != 0) return error;
    channel->open = false;
    setCommand(*channel, kCommandCredit, {kExit});
    if (const int error = d4SendAndReceiveWithReverseCmd(*channel); error != 0) return error;
    channel.reset();
    return 0;
}

int d4SendAndReceive2(D4Channel& channel) {
    sendCommand(channel);
    pauseFor(kExchangePause);
    if (receiveReply(channel, kReplyRoom, kReceiveTimeout) == 0) return 0;
    const auto reply = parseTransaction(channel.lastReply());
    return reply && reply->command == channel.expectedReply && reply->succeeded ? 0 : 1;
}

int d4SendAndReceiveWithReverseCmd(D4Channel& channel) {
    if (const int error = sendCommand(channel); error != 0) return error;
    for (int receive = 0; receive < kExchangeReceives; ++receive) {
        if (const auto result = receiveInExchange(channel)) return *result;
    }
    dropReply(channel);
    return 0;
}

int d4execReverseCmd(D4Channel& channel, MutableBytes buffer, std::size_t received) {
    const Bytes packet = Bytes(buffer).first(std::min(received, buffer.size()));
    const auto transaction = parseTransaction(packet);
    if (!transaction || transaction->command == kError) return 0;
    const std::uint8_t id = channel.socketId;
    switch (transaction->command) {
        case kCreditRequest:
            answer(channel, kCommandCredit, {kCreditRequest | kReplyBit, 0, id, id, 0, 0});
            break;
        case kCredit:
            addCredit(channel, be16At(transaction->payload, 3));
            answer(channel, kCommandCredit, {kCredit | kReplyBit, 0, id, id});
            break;
        default:
            refuse(channel, {.credit = kCommandCredit, .control = byteAt(packet, 5)},
                   transaction->command, buffer);
    }
    return 0;
}

}  // namespace tintoral
