#include "netproto/bjnp_packets.h"

#include <algorithm>
#include <array>

#include "support/byte_writer.h"
#include "support/text.h"

namespace tintoral {
namespace {

constexpr std::string_view kMagic = "BJNP";
constexpr std::uint8_t kRequest = 0x01;
constexpr std::uint8_t kAnswer = 0x81;

constexpr std::size_t kHeaderSize = 16;
constexpr std::size_t kJobInfoSize = 392;
static_assert(kHeaderSize + kJobInfoSize == kBjnpRequestRoom);
constexpr std::size_t kHostNameOffset = 8;
constexpr std::size_t kHostNameCharacters = 64;  // two fields' worth; the user name goes over it
constexpr std::size_t kUserNameOffset = 72;
constexpr std::size_t kUserNameCharacters = 32;
constexpr std::string_view kUserName = "Tintoral";

constexpr std::size_t kMacOffset = 22;
constexpr std::size_t kLengthPrefix = 2;

struct Header {
    std::uint8_t command = 0;
    std::uint16_t sequence = 0;
    std::uint16_t session = 0;
    std::uint32_t payloadLength = 0;
};

void writeHeader(ByteWriter& packet, const Header& header) {
    packet.text(kMagic).u8(kRequest).u8(header.command).be16(0);
    packet.be16(header.sequence).be16(header.session).be32(header.payloadLength);
}

void readInto(MutableBytes target, ByteReader& reader) {
    for (std::uint8_t& byte : target) byte = reader.u8();
}

// Cleaning may lengthen a text, and cutting may end it inside a character.
void keepClean(BoundedText& field, std::string_view value) {
    field.assign(cleanText(value));
    field.assign(cleanText(field.view()));
}

}  // namespace

std::size_t mkBjnpRequest(MutableBytes buffer, std::uint8_t command, std::uint16_t sequence,
                          std::uint16_t session) {
    ByteWriter packet(buffer);
    writeHeader(packet, {.command = command, .sequence = sequence, .session = session});
    return packet.finish();
}

std::size_t mkBjnpDeviceIDRequest(MutableBytes buffer) {
    constexpr std::uint32_t kPayload = 0;
    ByteWriter packet(buffer);
    writeHeader(packet, {.command = bjnp_commands::getDeviceID, .payloadLength = sizeof kPayload});
    return packet.be32(kPayload).finish();
}

std::size_t mkBjnpJobInfo(MutableBytes buffer, std::uint16_t sequence, std::string_view address) {
    std::array<std::uint8_t, kJobInfoSize> payload{};
    const auto field = [&](std::size_t offset) { return MutableBytes(payload).subspan(offset); };
    charTo2byte(field(kHostNameOffset), address, kHostNameCharacters);
    charTo2byte(field(kUserNameOffset), kUserName, kUserNameCharacters);
    ByteWriter packet(buffer);
    writeHeader(packet, {.command = bjnp_commands::setJobInfo,
                         .sequence = sequence,
                         .payloadLength = kHeaderSize + kJobInfoSize});
    return packet.bytes(payload).finish();
}

std::size_t charTo2byte(MutableBytes output, std::string_view text, std::size_t count) {
    const std::string_view written = text.substr(0, std::min(count, output.size() / 2));
    ByteWriter writer(output);
    for (const char c : written) writer.be16(static_cast<std::uint8_t>(c));
    for (std::size_t i = written.size(); i < count; ++i) writer.be16(0);
    return written.size();
}

std::optional<BjnpAnswer> bjnpAnswerTo(std::uint8_t command, Bytes packet) {
    ByteReader reader(packet);
    const bool isBjnp = asText(reader.take(kMagic.size())) == kMagic;
    const bool isAnswer = reader.u8() == kAnswer;
    const bool isToCommand = reader.u8() == command;
    reader.skip(4);  // error, sequence number
    const std::uint16_t session = reader.be16();
    reader.skip(4);  // payload length
    if (reader.failed() || !isBjnp || !isAnswer || !isToCommand) return std::nullopt;
    return BjnpAnswer{session, reader.rest()};
}

std::optional<BjnpPrinter> bjnpDiscoveredPrinter(Bytes packet) {
    const auto answer = bjnpAnswerTo(bjnp_commands::discover, packet);
    if (!answer) return std::nullopt;
    ByteReader reader(answer->payload);
    reader.skip(kMacOffset - kHeaderSize);
    BjnpPrinter printer;
    readInto(printer.mac, reader);
    readInto(printer.address, reader);
    if (reader.failed()) return std::nullopt;
    return printer;
}

void nameBjnpPrinter(BjnpPrinter& printer, std::string_view deviceID) {
    deviceID.remove_prefix(std::min(kLengthPrefix, deviceID.size()));
    if (const auto model = textBetween(deviceID, "MDL:", ';')) keepClean(printer.model, *model);
    if (const auto set = textBetween(deviceID, "CMD:", ';')) keepClean(printer.commandSet, *set);
}

}  // namespace tintoral
