#include "transport/channels/pml.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

#include "ink/byte_helpers.h"
#include "support/byte_writer.h"

namespace tintoral {
namespace {

using namespace pml_type;

enum class Kind { Identifier, Integer, Text, Octets, Nothing };

Kind kindOf(std::uint8_t type) {
    switch (type) {
        case kObjectIdentifier:
            return Kind::Identifier;
        case 4:
        case 8:
        case 32:
            return Kind::Integer;
        case kText:
            return Kind::Text;
        case kOctets:
            return Kind::Octets;
        default:
            return Kind::Nothing;
    }
}

constexpr std::size_t kLongestValue = std::numeric_limits<std::uint8_t>::max();

// The type byte, the length byte and the value.
std::size_t element(ByteWriter& writer, std::uint8_t type, Bytes value) {
    if (value.size() > kLongestValue) return 0;
    return writer.u8(type).u8(static_cast<std::uint8_t>(value.size())).bytes(value).finish();
}

// The decimal number that `component` begins with, cut to a byte; 0 when it begins with none.
std::uint8_t componentValue(std::string_view component) {
    std::int32_t number = 0;
    std::from_chars(component.data(), component.data() + component.size(), number);
    return static_cast<std::uint8_t>(number);
}

std::size_t identifierElement(ByteWriter& writer, std::string_view object) {
    std::array<std::uint8_t, kLongestValue> storage;
    ByteWriter components(storage);
    while (!object.empty()) {
        const std::size_t dot = object.find('.');
        components.u8(componentValue(object.substr(0, dot)));
        object = dot == std::string_view::npos ? std::string_view{} : object.substr(dot + 1);
    }
    return components.failed() ? 0 : element(writer, kObjectIdentifier, components.written());
}

std::size_t integerElement(ByteWriter& writer, std::uint8_t type, std::int32_t number) {
    return writer.u8(type).u8(4).be32(static_cast<std::uint32_t>(number)).finish();
}

void identifierText(Bytes components, BoundedText& text) {
    for (const std::uint8_t component : components) {
        text.appendFormat(text.empty() ? "%d" : ".%d", component);
    }
}

void decode(Bytes bytes, PMLValue& value) {
    switch (kindOf(value.type)) {
        case Kind::Identifier:
            identifierText(bytes, value.text);
            break;
        case Kind::Integer:
            value.number = b2i(bytes.first(std::min<std::size_t>(bytes.size(), 4)));
            break;
        case Kind::Text:
        case Kind::Octets:
            value.text.assign(asText(bytes));
            break;
        case Kind::Nothing:
            break;
    }
}

}  // namespace

std::size_t makePMLBER(MutableBytes out, std::uint8_t type, const PMLArgument& value) {
    ByteWriter writer(out);
    const Kind kind = kindOf(type);
    if (kind == Kind::Octets || kind == Kind::Nothing) return writer.u8(type).finish();
    if (kind == Kind::Integer) {
        const auto* number = std::get_if<std::int32_t>(&value);
        return number == nullptr ? 0 : integerElement(writer, type, *number);
    }
    const auto* text = std::get_if<std::string_view>(&value);
    if (text == nullptr) return 0;
    return kind == Kind::Text ? element(writer, type, asBytes(*text))
                              : identifierElement(writer, *text);
}

std::size_t parsePMLBER(Bytes bytes, PMLValue& value) {
    ByteReader reader(bytes);
    value = {};
    const std::uint8_t type = reader.u8();
    const Bytes content = reader.take(reader.u8());
    if (reader.failed()) return 0;
    value.type = type;
    value.length = content.size();
    decode(content, value);
    return content.size() + 2;
}

std::size_t makePMLRequest(MutableBytes out, std::uint8_t command, std::string_view object,
                           std::uint8_t type, const PMLArgument& value) {
    if (out.empty()) return 0;
    out[0] = command;
    const std::size_t objectSize = makePMLBER(out.subspan(1), kObjectIdentifier, object);
    if (objectSize == 0 || command != kPMLSet) return objectSize == 0 ? 0 : 1 + objectSize;
    const std::size_t valueSize = makePMLBER(out.subspan(1 + objectSize), type, value);
    return valueSize == 0 ? 0 : 1 + objectSize + valueSize;
}

int parsePMLResponse(Bytes reply, PMLResponse& response) {
    response = {};
    ByteReader reader(reply);
    reader.skip(1);
    response.status = reader.s8();
    if (response.status < 0) {
        response.value.length = reader.remaining();
        return -1;
    }
    PMLValue object;
    const std::size_t objectSize = parsePMLBER(reader.rest(), object);
    if (objectSize == 0 || kindOf(object.type) != Kind::Identifier) return -1;
    response.object = object.text;
    reader.skip(objectSize);
    return parsePMLBER(reader.rest(), response.value) == 0 ? -1 : 0;
}

}  // namespace tintoral
