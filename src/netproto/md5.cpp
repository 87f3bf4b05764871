#include "netproto/md5.h"

#include <bit>

#include "support/byte_writer.h"

namespace tintoral {
namespace {

constexpr std::size_t kBlock = 64;
using State = std::array<std::uint32_t, 4>;

// The integer part of 2^32 times |sin(i + 1)|, RFC 1321 section 3.4.
constexpr std::array<std::uint32_t, 64> kSines{
    0xD76AA478, 0xE8C7B756, 0x242070DB, 0xC1BDCEEE, 0xF57C0FAF, 0x4787C62A, 0xA8304613, 0xFD469501,
    0x698098D8, 0x8B44F7AF, 0xFFFF5BB1, 0x895CD7BE, 0x6B901122, 0xFD987193, 0xA679438E, 0x49B40821,
    0xF61E2562, 0xC040B340, 0x265E5A51, 0xE9B6C7AA, 0xD62F105D, 0x02441453, 0xD8A1E681, 0xE7D3FBC8,
    0x21E1CDE6, 0xC33707D6, 0xF4D50D87, 0x455A14ED, 0xA9E3E905, 0xFCEFA3F8, 0x676F02D9, 0x8D2A4C8A,
    0xFFFA3942, 0x8771F681, 0x6D9D6122, 0xFDE5380C, 0xA4BEEA44, 0x4BDECFA9, 0xF6BB4B60, 0xBEBFBC70,
    0x289B7EC6, 0xEAA127FA, 0xD4EF3085, 0x04881D05, 0xD9D4D039, 0xE6DB99E5, 0x1FA27CF8, 0xC4AC5665,
    0xF4292244, 0x432AFF97, 0xAB9423A7, 0xFC93A039, 0x655B59C3, 0x8F0CCC92, 0xFFEFF47D, 0x85845DD1,
    0x6FA87E4F, 0xFE2CE6E0, 0xA3014314, 0x4E0811A1, 0xF7537E82, 0xBD3AF235, 0x2AD7D2BB, 0xEB86D391,
};

// One row for each of the four rounds.
constexpr int kRotations[4][4] = {
    {7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};
constexpr struct { std::size_t step, start; } kWordOrder[4] = {{1, 0}, {5, 1}, {3, 5}, {7, 0}};

std::uint32_t mix(std::size_t round, const State& s) {
    const auto [a, b, c, d] = s;
    switch (round) {
        case 0:
            return (b & c) | (~b & d);
        case 1:
            return (b & d) | (c & ~d);
        case 2:
            return b ^ c ^ d;
        default:
            return c ^ (b | ~d);
    }
}

std::uint32_t le32(ByteReader& reader) {
    const std::uint32_t low = reader.le16();
    return low | std::uint32_t{reader.le16()} << 16;
}

void addBlock(State& state, Bytes block) {
    std::array<std::uint32_t, 16> words{};
    ByteReader reader(block);
    for (std::uint32_t& word : words) word = le32(reader);
    State s = state;
    for (std::size_t i = 0; i < kSines.size(); ++i) {
        const std::size_t round = i / 16;
        const auto [step, start] = kWordOrder[round];
        const std::uint32_t sum =
            s[0] + mix(round, s) + kSines[i] + words[(start + i * step) % words.size()];
        s = {s[3], s[1] + std::rotl(sum, kRotations[round][i % 4]), s[1], s[2]};
    }
    for (std::size_t i = 0; i < state.size(); ++i) state[i] += s[i];
}

void writeLe32(ByteWriter& writer, std::uint32_t value) {
    writer.le16(static_cast<std::uint16_t>(value)).le16(static_cast<std::uint16_t>(value >> 16));
}

// What is left after the whole blocks, a one bit, zeros, and the message's length in bits.
void addEnd(State& state, Bytes rest, std::uint64_t messageSize) {
    std::array<std::uint8_t, 2 * kBlock> end{};
    const std::size_t blocks = rest.size() + 9 > kBlock ? 2 : 1;
    ByteWriter(end).bytes(rest).u8(0x80);
    ByteWriter length(MutableBytes(end).subspan(blocks * kBlock - 8));
    const std::uint64_t bits = messageSize * 8;
    writeLe32(length, static_cast<std::uint32_t>(bits));
    writeLe32(length, static_cast<std::uint32_t>(bits >> 32));
    for (std::size_t i = 0; i < blocks; ++i) {
        addBlock(state, Bytes(end).subspan(i * kBlock, kBlock));
    }
}

}  // namespace

std::array<std::uint8_t, 16> md5(Bytes message) {
    State state{0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
    ByteReader reader(message);
    while (reader.remaining() >= kBlock) addBlock(state, reader.take(kBlock));
    addEnd(state, reader.rest(), message.size());
    std::array<std::uint8_t, 16> digest{};
    ByteWriter writer(digest);
    for (const std::uint32_t word : state) writeLe32(writer, word);
    return digest;
}

std::string md5Hex(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string hex;
    for (const std::uint8_t byte : md5(asBytes(text))) {
        hex += kDigits[byte >> 4];
        hex += kDigits[byte & 15];
    }
    return hex;
}

}  // namespace tintoral
