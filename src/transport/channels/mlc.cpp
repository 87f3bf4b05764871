#include "transport/channels/mlc.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <limits>
#include <optional>

#include "support/byte_writer.h"
#include "support/clock.h"

namespace tintoral {
namespace {

using namespace packet_command;
using std::chrono::microseconds;
using std::chrono::milliseconds;

constexpr std::uint8_t kConfigureSocket = 0x07;
constexpr std::uint8_t kRevision = 3;
constexpr std::uint8_t kSocket = 1;
constexpr std::uint8_t kCommandCredit = 0;

constexpr milliseconds kReceiveTimeout{1200};
constexpr std::chrono::seconds kSessionTime{60};
constexpr int kExchangeReceives = 10;
constexpr std::size_t kReplyRoom = 256;
constexpr std::size_t kShortReplyRoom = 16;
constexpr int kCreditRequests = 4;
constexpr microseconds kCreditPause{500};
constexpr ReadLimits kReadLimits{
    .packets = 10, .timeout = kReceiveTimeout, .whole = 10 * kReceiveTimeout};
constexpr std::size_t kMostData = std::numeric_limits<std::uint16_t>::max() - kPacketHeaderSize;

std::optional<int> receiveInExchange(MLCChannel& channel) {
    receiveReply(channel, kShortReplyRoom, kReceiveTimeout);
    const auto transaction = parseTransaction(channel.lastReply());
    if (!transaction) return std::nullopt;
    if (transaction->command == kError) return 1;
    if (transaction->command == channel.expectedReply && transaction->succeeded) return 0;
    if (!transaction->isReply()) MLCexecReverseCmd(channel, channel.reply, channel.replyLength);
    return std::nullopt;
}

int init(MLCChannel& channel) {
    setCommand(channel, kCommandCredit, {kInit, kRevision});
    return mlcSendAndReceive(channel);
}

int configureSocket(MLCChannel& channel) {
    setCommand(channel, kCommandCredit, {kConfigureSocket, kSocket, 0, 200, 0, 200, 0});
    const int result = mlcSendAndReceive(channel);
    channel.maxPrinterBound = be16At(channel.lastReply(), 8);
    channel.maxHostBound = be16At(channel.lastReply(), 10);
    return result;
}

int openSocket(MLCChannel& channel) {
    setCommand(channel, kCommandCredit, {kOpenChannel, kSocket, kSocket, 0, 0});
    const int result = mlcSendAndReceive(channel);
    addCredit(channel, be16At(channel.lastReply(), 8));
    return result;
}

int requestCredit(MLCChannel& channel) {
    setCommand(channel, kCommandCredit, {kCreditRequest, kSocket, kSocket, 0, 1});
    const int error = mlcSendAndReceiveWithReverseCmd(channel);
    if (error != 0) return error;
    addCredit(channel, be16At(channel.lastReply(), 8));
    if (channel.sendCredit == 0) pauseFor(kCreditPause);
    return 0;
}

ReverseCommand reverseCommandOf(MLCChannel& channel) {
    return [&channel](MutableBytes buffer, std::size_t received) {
        MLCexecReverseCmd(channel, buffer, received);
    };
}

int obtainCredit(MLCChannel& channel) {
    const bool hadNone = channel.sendCredit == 0;
    const int error =
        requestCreditUpTo(channel, kCreditRequests, [&] { return requestCredit(channel); });
    if (error != 0) return error;
    if (hadNone) receiveReverseCommand(channel, kReceiveTimeout, reverseCommandOf(channel));
    return 0;
}

// A refused credit does not end the read: a printer may send all the same.
void grantReadCredit(MLCChannel& channel) {
    setCommand(channel, kCommandCredit, {kCredit, kSocket, kSocket, 0, 1});
    const int error = mlcSendAndReceiveWithReverseCmd(channel);
    if (error == 0 && !channel.lastReply().empty()) channel.readCredit = 1;
}

}  // namespace

int MLCstart(TcpSocket connection) {
    constexpr std::array<std::uint8_t, 2> kPrinterReset{0x1B, 'E'};
    std::array<std::uint8_t, kReplyRoom> ignored;
    ioSend(connection, kPrinterReset);
    ioWaitRecv(connection, ignored, kReceiveTimeout);
    return 0;
}

std::unique_ptr<MLCChannel> MLCopen(const IoHandle& handle) {
    auto channel = std::make_unique<MLCChannel>(handle, sessionEndIn(kSessionTime));
    const bool opened =
        init(*channel) == 0 && configureSocket(*channel) == 0 && openSocket(*channel) == 0;
    if (!opened) return nullptr;
    channel->open = true;
    return channel;
}

int MLCwrite(MLCChannel& channel, Bytes data) {
    if (data.size() > kMostData) return -1;
    if (const int error = obtainCredit(channel); error != 0) return error;
    if (channel.sendCredit == 0) return -1;
    std::array<std::uint8_t, kPacketHeaderSize> header;
    ByteWriter writer(header);
    ioSend(channel.handle, writeDataHeader(writer, channel, data.size()).written());
    ioSend(channel.handle, data);
    --channel.sendCredit;
    return 0;
}

int MLCread(MLCChannel& channel, MutableBytes buffer, std::size_t& length) {
    length = 0;
    if (channel.maxHostBound == 0 || channel.readCredit != 0) return -1;
    grantReadCredit(channel);
    std::array<std::uint8_t, kPacketHeaderSize + kMLCPayloadRoom> storage;
    const auto packet = awaitData(channel, storage, kReadLimits, reverseCommandOf(channel));
    if (!packet) return -1;
    addCredit(channel, be16At(storage, 4));  // credit and control as one number, as meant
    length = takeData(channel, *packet, buffer);
    return 0;
}

int MLCclose(std::unique_ptr<MLCChannel>& channel) {
    allowClosing(*channel);
    setCommand(*channel, kCommandCredit, {kCloseChannel, kSocket, kSocket});
    if (const int error = mlcSendAndReceive(*channel); error != 0) return error;
    setCommand(*channel, kCommandCredit, {kExit});
    if (const int error = mlcSendAndReceive(*channel); error != 0) return error;
    channel.reset();
    return 0;
}

int mlcSendAndReceive(MLCChannel& channel) {
    sendCommand(channel);
    receiveReply(channel, kReplyRoom, kReceiveTimeout);
    const auto reply = parseTransaction(channel.lastReply());
    return reply && reply->command == channel.expectedReply && reply->succeeded ? 0 : -1;
}

int mlcSendAndReceiveWithReverseCmd(MLCChannel& channel) {
    if (const int error = sendCommand(channel); error != 0) return error;
    for (int receive = 1; receive <= kExchangeReceives; ++receive) {
        const auto result = receiveInExchange(channel);
        if (result) return receive == kExchangeReceives ? -1 : *result;
    }
    dropReply(channel);
    return 0;
}

int MLCexecReverseCmd(MLCChannel& channel, MutableBytes buffer, std::size_t received) {
    const Bytes packet = Bytes(buffer).first(std::min(received, buffer.size()));
    const auto transaction = parseTransaction(packet);
    if (!transaction || transaction->command == kError) return 0;
    switch (transaction->command) {
        case kCreditRequest:
            answer(channel, kCommandCredit, {kCreditRequest | kReplyBit, 0, 0, 0});
            break;
        case kCredit:
            addCredit(channel, be16At(transaction->payload, 3));
            answer(channel, kCommandCredit, {kCredit | kReplyBit, 0});
            break;
        default:
            // The credit byte goes back as it came.
            refuse(channel, {.credit = byteAt(packet, 4), .control = byteAt(packet, 5)},
                   transaction->command, buffer);
    }
    return 0;
}

}  // namespace tintoral
