#include "simulators/virtual_bjnp_printer.h"

#include <array>
#include <utility>

#include "support/byte_writer.h"

namespace tintoral::test {
namespace {

constexpr std::uint16_t kPort = 8611;
constexpr std::uint8_t kDiscover = 0x01;
constexpr std::uint8_t kSetJobInfo = 0x10;
constexpr std::uint8_t kClose = 0x11;
constexpr std::uint8_t kGetStatus = 0x20;
constexpr std::uint8_t kGetDeviceID = 0x30;
constexpr std::size_t kHeaderSize = 16;

Datagram withLength(const std::string& text) {
    Datagram bytes(text.size() + 2);
    ByteWriter(bytes).be16(static_cast<std::uint16_t>(bytes.size())).text(text);
    return bytes;
}

Datagram packet(std::uint8_t command, std::uint16_t sequence, std::uint16_t session,
                const Datagram& payload) {
    Datagram whole(kHeaderSize + payload.size());
    ByteWriter writer(whole);
    writer.text("BJNP").u8(0x81).u8(command).be16(0).be16(sequence).be16(session);
    writer.be32(static_cast<std::uint32_t>(payload.size())).bytes(payload);
    return whole;
}

}  // namespace

VirtualBjnpPrinter::VirtualBjnpPrinter(const std::string& address, BjnpSetup setup,
                                       const std::string& broadcastAddress)
    : address_(ipv4FromDotted(address).value_or(Ipv4Address{})),
      setup_(std::move(setup)),
      nextSession_(setup_.firstSession),
      peer_(
          address, kPort, [this](Bytes request) { return answer(request); }, broadcastAddress,
          setup_.answers) {}

std::set<std::uint16_t> VirtualBjnpPrinter::openSessions() const {
    const std::lock_guard lock(mutex_);
    return sessions_;
}

std::optional<Datagram> VirtualBjnpPrinter::answer(Bytes request) {
    const std::lock_guard lock(mutex_);
    ByteReader reader(request);
    const bool isRequest = asText(reader.take(4)) == "BJNP" && reader.u8() == 0x01;
    const std::uint8_t command = reader.u8();
    reader.skip(2);
    const std::uint16_t sequence = reader.be16();
    std::uint16_t session = reader.be16();
    if (!isRequest || reader.failed() || setup_.ignores.contains(command)) return std::nullopt;
    if (command == kDiscover && discoveries_++ > 0 && !setup_.everyRound) return std::nullopt;
    const Datagram payload = payloadFor(command, session);
    keepSessions(command, session);
    Datagram reply = packet(command, sequence, session, payload);
    if (setup_.spoil) setup_.spoil(reply);
    return reply;
}

Datagram VirtualBjnpPrinter::payloadFor(std::uint8_t command, std::uint16_t session) const {
    if (command == kGetDeviceID) return withLength(setup_.deviceID);
    if (command == kGetStatus && sessions_.contains(session)) return withLength(setup_.status);
    if (command != kDiscover) return {};
    constexpr std::array<std::uint8_t, 6> kVersionsAndAddressLengths{0, 1, 8, 0, 6, 4};
    Datagram payload(16);
    ByteWriter(payload).bytes(kVersionsAndAddressLengths).bytes(setup_.mac).bytes(address_);
    return payload;
}

void VirtualBjnpPrinter::keepSessions(std::uint8_t command, std::uint16_t& session) {
    if (command == kClose) sessions_.erase(session);
    if (command != kSetJobInfo) return;
    session = nextSession_++;
    sessions_.insert(session);
}

}  // namespace tintoral::test
