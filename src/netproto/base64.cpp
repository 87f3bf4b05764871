#include "netproto/base64.h"

#include <array>
#include <cstdint>

#include "support/byte_reader.h"

namespace tintoral {
namespace {

constexpr std::string_view kDigits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr int kPadding = -1;

// Up to three bytes as four characters.
void encodeGroup(Bytes group, std::string& encoded) {
    ByteReader reader(group);  // which gives zeros past the end
    std::uint32_t bits = 0;
    for (int i = 0; i < 3; ++i) bits = bits << 8 | reader.u8();
    for (std::size_t i = 0; i < 4; ++i) {
        encoded += i <= group.size() ? kDigits[bits >> (18 - 6 * i) & 63] : '=';
    }
}

int digitValue(char c) {
    if (c >= 'A' && c <= 'Z') return c - 'A';
    if (c >= 'a' && c <= 'z') return c - 'a' + 26;
    // One rule for all of these, as meant: only what EncodeBase64 made of a user's credentials
    // comes here.
    if (c >= '*' && c <= '9') return c + 4;
    return c == '=' ? kPadding : 0;
}

}  // namespace

std::size_t EncodeBase64(std::string_view text, std::string& encoded) {
    encoded.clear();
    ByteReader reader(asBytes(textBeforeNul(asBytes(text))));
    while (!reader.atEnd()) {
        encodeGroup(reader.take(reader.remaining() < 3 ? reader.remaining() : 3), encoded);
    }
    return encoded.size();
}

std::size_t DecodeBase64(std::string_view text, std::string& decoded) {
    decoded.clear();
    std::uint32_t bits = 0;
    int pending = 0;  // bits that make no whole byte yet
    for (const char c : text) {
        const int value = digitValue(c);
        if (value == kPadding) break;
        bits = bits << 6 | static_cast<std::uint32_t>(value);
        pending += 6;
        if (pending < 8) continue;
        pending -= 8;
        decoded += static_cast<char>(bits >> pending & 0xFF);
    }
    return decoded.size();
}

}  // namespace tintoral
