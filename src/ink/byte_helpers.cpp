#include "ink/byte_helpers.h"

#include <algorithm>

namespace tintoral {
namespace {

unsigned lenientHexValue(char character) {
    const unsigned code = static_cast<unsigned char>(character);
    if (code >= 'a') return code - 87;
    if (code >= 'A') return code - 55;
    return code < '0' ? 0 : code - '0';
}

std::optional<std::uint8_t> hexDigitValue(char character) {
    constexpr std::string_view kLower = "0123456789abcdef";
    constexpr std::string_view kUpper = "0123456789ABCDEF";
    const auto value = std::min(kLower.find(character), kUpper.find(character));
    if (value == std::string_view::npos) return std::nullopt;
    return static_cast<std::uint8_t>(value);
}

}  // namespace

std::int8_t hTob(std::string_view twoCharacters) {
    const auto valueAt = [&](std::size_t index) {
        return lenientHexValue(index < twoCharacters.size() ? twoCharacters[index] : '\0');
    };
    return static_cast<std::int8_t>(((valueAt(0) & 0x0F) << 4) + valueAt(1));
}

std::size_t hexToBin(std::string_view hex, MutableBytes output) {
    std::uint8_t nibble = 0;
    const std::size_t digits = std::min(hex.size(), 2 * output.size());
    for (std::size_t i = 0; i < digits; ++i) {
        nibble = hexDigitValue(hex[i]).value_or(nibble);
        std::uint8_t& byte = output[i / 2];
        byte = static_cast<std::uint8_t>(i % 2 == 0 ? nibble << 4 : byte | nibble);
    }
    return (digits + 1) / 2;
}

std::int32_t b2i(Bytes bytes) {
    if (bytes.empty() || bytes.size() > 4) return 0;
    if (bytes.size() == 1) return ByteReader(bytes).s8();
    std::uint32_t value = 0;
    for (const std::uint8_t byte : bytes) value = value << 8 | byte;
    return static_cast<std::int32_t>(value);
}

std::optional<std::size_t> bisearch(Bytes buffer, std::string_view needle) {
    if (buffer.empty()) return std::nullopt;
    const Bytes searched = buffer.first(buffer.size() - 1);  // one short, as meant
    const auto index = asText(searched).find(needle);
    if (index == std::string_view::npos) return std::nullopt;
    return index;
}

}  // namespace tintoral
