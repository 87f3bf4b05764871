#include "simulators/virtual_mlc_hp.h"

#include <array>
#include <string_view>

#include "transport/channels/packet.h"

namespace tintoral::test {
namespace {

using namespace packet_command;
using namespace std::string_view_literals;

constexpr std::uint8_t kConfigureSocket = 0x07;
constexpr std::uint8_t kHeaderCredit = 0;
constexpr std::uint8_t kUnknownObject = 0x81;

// The object's identifier element, and its value as a text element.
struct Object {
    std::string_view identifier;
    std::string_view value;
};
constexpr std::array<Object, 2> kObjects{{
    {"\x00\x04\x01\x01\x03\x02"sv,
     "\x10\x0C"
     "DeskJet 900C"sv},
    {"\x00\x07\x02\x0B\x01\x01\x06\x01\x01"sv,
     "\x10\x0A"
     "black (45)"sv},
}};

}  // namespace

bool VirtualMlcHp::takeText(std::string& heard) {
    if (heard.starts_with("\x1B"
                          "E"))
        heard.erase(0, 2);
    return true;
}

void VirtualMlcHp::onTransaction(std::uint8_t command, Bytes arguments) {
    switch (command) {
        case kInit:
            return reply(kHeaderCredit, command, {byteAt(arguments, 0)});
        case kConfigureSocket:
            return reply(kHeaderCredit, command, {0x00, 0xC8, 0x00, 0xC8});
        case kOpenChannel:
            return reply(kHeaderCredit, command,
                         {static_cast<std::uint8_t>(habits().creditOnOpen >> 8),
                          static_cast<std::uint8_t>(habits().creditOnOpen)});
        case kCreditRequest:
            return onCreditRequest();
        case kCredit:
            addReadCredit(be16At(arguments, 2));
            return reply(kHeaderCredit, command, {});
        case kCloseChannel:
        case kExit:
            return reply(kHeaderCredit, command, {});
        default:
            error();
    }
}

void VirtualMlcHp::onCreditRequest() {
    if (habits().credit == CreditHabit::ByReverseCredit) {
        transaction(kHeaderCredit, {kCredit, 1, 1, 0, 1});
    }
    const std::uint8_t granted = habits().credit == CreditHabit::Grants ? 1 : 0;
    reply(kHeaderCredit, kCreditRequest, {0, granted});
}

void VirtualMlcHp::onData(std::uint8_t socket, Bytes data) {
    requests_.emplace_back(data.begin(), data.end());
    ByteReader reader(data);
    ByteVector answer{static_cast<std::uint8_t>(reader.u8() | kReplyBit), kUnknownObject};
    for (const auto& [identifier, value] : kObjects) {
        if (asText(reader.rest()) != identifier) continue;
        answer[1] = 0;
        answer.insert(answer.end(), identifier.begin(), identifier.end());
        answer.insert(answer.end(), value.begin(), value.end());
    }
    queueData(socket, answer);
}

}  // namespace tintoral::test
