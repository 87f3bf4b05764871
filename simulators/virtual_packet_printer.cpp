#include "simulators/virtual_packet_printer.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "transport/channels/packet.h"

namespace tintoral::test {
namespace {

using namespace packet_command;

ByteVector packetOn(std::uint8_t socket, std::uint16_t creditAndControl,
                    const ByteVector& payload) {
    const std::size_t length = 6 + payload.size();
    ByteVector packet{socket,
                      socket,
                      static_cast<std::uint8_t>(length >> 8),
                      static_cast<std::uint8_t>(length),
                      static_cast<std::uint8_t>(creditAndControl >> 8),
                      static_cast<std::uint8_t>(creditAndControl)};
    std::ranges::copy(payload, std::back_inserter(packet));
    return packet;
}

}  // namespace

std::vector<ByteVector> VirtualPacketPrinter::transfersFor(Bytes heard) {
    heard_ += asText(heard);
    while (takeText(heard_) && takePacket()) {
    }
    return std::exchange(answer_, {});
}

ByteVector VirtualPacketPrinter::onReceive(Bytes heard) {
    ByteVector all;
    for (const ByteVector& packet : transfersFor(heard))
        all.insert(all.end(), packet.begin(), packet.end());
    return all;
}

bool VirtualPacketPrinter::takePacket() {
    const Bytes heard = asBytes(heard_);
    const std::size_t length = be16At(heard, 2);
    if (heard.size() < 6 || heard.size() < length) return false;
    const std::string packet = heard_.substr(0, length);
    heard_.erase(0, packet.size());
    if (packet.size() >= 6) onPacket(asBytes(packet));
    return packet.size() >= 6;
}

void VirtualPacketPrinter::onPacket(Bytes packet) {
    if (late_) say(*std::exchange(late_, std::nullopt));
    const Bytes payload = packet.subspan(6);
    if (packet[0] != 0) {
        onData(packet[0], payload);
    } else if (!payload.empty() && (payload[0] & kReplyBit) == 0) {
        onTransaction(payload[0], payload.subspan(1));
    }
    sendData();
}

void VirtualPacketPrinter::say(ByteVector packet) {
    if (habits_.packetsUntilSilent-- > 0) answer_.push_back(std::move(packet));
}

void VirtualPacketPrinter::transaction(std::uint8_t headerCredit, const ByteVector& payload) {
    say(packetOn(0, static_cast<std::uint16_t>(headerCredit << 8), payload));
}

void VirtualPacketPrinter::reply(std::uint8_t headerCredit, std::uint8_t command,
                                 const ByteVector& fields) {
    if (habits_.errorTo == command) return error();
    const auto code =
        static_cast<std::uint8_t>(command ^ (habits_.wrongTo == command ? 0xC0 : kReplyBit));
    ByteVector payload{code, static_cast<std::uint8_t>(habits_.refuses == command ? 1 : 0)};
    std::ranges::copy(fields, std::back_inserter(payload));
    if (habits_.lateTo == command) {
        late_ = packetOn(0, static_cast<std::uint16_t>(headerCredit << 8), payload);
    } else {
        transaction(headerCredit, payload);
    }
}

void VirtualPacketPrinter::error() {
    say(packetOn(0, 0, {kError, 0, 0, 0x80}));
}

void VirtualPacketPrinter::queueData(std::uint8_t socket, const ByteVector& payload) {
    data_.push_back(packetOn(socket, habits_.dataCreditField, payload));
}

void VirtualPacketPrinter::addReadCredit(std::uint16_t credit) {
    readCredit_ += credit;
}

void VirtualPacketPrinter::sendData() {
    for (; readCredit_ > 0 && !data_.empty(); --readCredit_) {
        say(data_.front());
        data_.pop_front();
    }
}

}  // namespace tintoral::test
