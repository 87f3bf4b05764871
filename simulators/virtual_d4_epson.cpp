#include "simulators/virtual_d4_epson.h"

#include <algorithm>
#include <string_view>

#include "transport/channels/packet.h"

namespace tintoral::test {
namespace {

using namespace packet_command;

constexpr std::uint8_t kGetSocketID = 0x09;
constexpr std::uint8_t kSocket = 2;
constexpr std::uint8_t kHeaderCredit = 1;
constexpr std::string_view kService = "EPSON-CTRL";
constexpr std::string_view kEnterPacketMode = "@EJL 1284.4\n@EJL\n@EJL\n";

ByteVector bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

void appendBe16(ByteVector& bytes, std::uint16_t value) {
    bytes.push_back(static_cast<std::uint8_t>(value >> 8));
    bytes.push_back(static_cast<std::uint8_t>(value));
}

// How many characters at the end of `text` may be the beginning of what asks for packet mode.
std::size_t beginningsAtEnd(std::string_view text) {
    std::size_t count = std::min(text.size(), kEnterPacketMode.size() - 1);
    while (!text.ends_with(kEnterPacketMode.substr(0, count))) --count;
    return count;
}

}  // namespace

EpsonSetup VirtualD4Epson::remoteModeWith(std::vector<EpsonInk> inks) {
    EpsonSetup setup;
    setup.replies.fill(EpsonReply::None);
    setup.inks = std::move(inks);
    setup.cleaningUsesInk = true;
    return setup;
}

bool VirtualD4Epson::takeText(std::string& heard) {
    if (packetMode_) return true;
    const auto at = heard.find(kEnterPacketMode);
    packetMode_ = at != std::string::npos;
    const std::size_t text = packetMode_ ? at : heard.size() - beginningsAtEnd(heard);
    remoteMode_.onReceive(asBytes(heard).first(text));
    heard.erase(0, packetMode_ ? text + kEnterPacketMode.size() : text);
    if (!packetMode_) return false;
    say({0x00, 0x00, 0x00, 0x08, 0x01, 0x00, 0xC5, 0x00});
    return true;
}

void VirtualD4Epson::onTransaction(std::uint8_t command, Bytes arguments) {
    const ByteVector socket{kSocket, kSocket};
    switch (command) {
        case kInit:
            revision16_ = byteAt(arguments, 0) == 0x10;
            return reply(kHeaderCredit, command, {byteAt(arguments, 0)});
        case kGetSocketID: {
            ByteVector fields = bytesOf(kService);
            fields.insert(fields.begin(),
                          asText(arguments) == kService ? kSocket : std::uint8_t{0});
            return reply(kHeaderCredit, command, fields);
        }
        case kOpenChannel:
            return onOpenChannel();
        case kCreditRequest:
            return onCreditRequest();
        case kCredit:
            addReadCredit(be16At(arguments, 2));
            return reply(kHeaderCredit, command, socket);
        case kCloseChannel:
            return reply(kHeaderCredit, command, socket);
        case kExit:
            packetMode_ = habits().refuses == command;
            return reply(kHeaderCredit, command, {});
        default:
            // Also the text that asks for packet mode: its first bytes look like a header.
            error();
    }
}

void VirtualD4Epson::onOpenChannel() {
    ByteVector fields{kSocket, kSocket, 0x00, 0xC8, 0x00, 0xC8};
    if (!revision16_) appendBe16(fields, 0xFFFF);
    appendBe16(fields, habits().creditOnOpen);
    reply(kHeaderCredit, kOpenChannel, fields);
}

void VirtualD4Epson::onCreditRequest() {
    if (habits().credit == CreditHabit::ByReverseCredit) {
        transaction(kHeaderCredit, {kCredit, kSocket, kSocket, 0, 1});
    }
    const std::uint8_t granted = habits().credit == CreditHabit::Grants ? 1 : 0;
    reply(kHeaderCredit, kCreditRequest, {kSocket, kSocket, 0, granted});
}

void VirtualD4Epson::onData(std::uint8_t socket, Bytes data) {
    const std::string command(asText(data).substr(0, 2));
    commands_.push_back(command);
    if (command == "ch") clean();
    queueData(socket, bytesOf(command == "st" ? statusReply() : command + ":OK;\f"));
}

void VirtualD4Epson::clean() {
    std::vector<EpsonInk> inks = remoteMode_.inks();
    for (EpsonInk& ink : inks) ink.level = std::max(ink.level - 2, 0);
    remoteMode_.change(remoteModeWith(std::move(inks)));
}

std::string VirtualD4Epson::statusReply() const {
    std::string inks(1, 3);
    for (const EpsonInk& ink : remoteMode_.inks()) {
        inks += {'\x01', static_cast<char>(ink.colorCode), static_cast<char>(ink.level)};
    }
    std::string fields("\x01\x01\x04\x0F", 4);
    fields += static_cast<char>(inks.size());
    fields += inks;
    return "@BDC ST2\r\n" + std::string{static_cast<char>(fields.size()), '\0'} + fields;
}

}  // namespace tintoral::test
