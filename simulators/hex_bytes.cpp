#include "simulators/hex_bytes.h"

#include "ink/byte_helpers.h"

namespace tintoral::test {

std::string hexOf(Bytes bytes) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    for (const std::uint8_t byte : bytes) text += {kDigits[byte >> 4], kDigits[byte & 0x0F]};
    return text;
}

ByteVector bytesOfHex(std::string_view hex) {
    std::string digits(hex);
    std::erase(digits, ' ');
    ByteVector bytes(digits.size() / 2);
    hexToBin(digits, bytes);
    return bytes;
}

}  // namespace tintoral::test
