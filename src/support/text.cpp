#include "support/text.h"

#include <algorithm>
#include <cstdint>

#include "support/byte_reader.h"
#include "support/fixed_text.h"

namespace tintoral {
namespace {

char lowered(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool sameIgnoringCase(char a, char b) {
    return lowered(a) == lowered(b);
}

struct Character {
    char32_t code;
    std::size_t length;  // bytes used; 0: the text ends inside this character
};

std::size_t sequenceLength(std::uint8_t lead) {
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead < 0xE0) return 2;
    if (lead >= 0xE0 && lead < 0xF0) return 3;
    if (lead >= 0xF0 && lead < 0xF5) return 4;
    return 0;
}

bool isScalarOfLength(char32_t code, std::size_t length) {
    constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    return code >= kSmallest[length] && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
}

// The first character of `bytes`, which is not empty; an invalid lead byte stands for itself (ISO
// 8859-1).
Character firstCharacter(Bytes bytes) {
    const std::uint8_t lead = bytes[0];
    const Character single{lead, 1};
    const std::size_t length = sequenceLength(lead);
    if (length <= 1) return single;
    char32_t code = lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if (i == bytes.size()) return {0, 0};
        if ((bytes[i] & 0xC0) != 0x80) return single;
        code = code << 6 | (bytes[i] & 0x3FU);
    }
    return isScalarOfLength(code, length) ? Character{code, length} : single;
}

bool isHarmless(char32_t c) {
    const bool control = c < 0x20 || (c >= 0x7F && c < 0xA0);
    const bool separator = c == 0x2028 || c == 0x2029;
    const bool direction = (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
    const bool noCharacter = c == 0xFFFE || c == 0xFFFF;  // not allowed in an XML property list
    return !control && !separator && !direction && !noCharacter;
}

bool isHighSurrogate(char32_t c) {
    return c >= 0xD800 && c < 0xDC00;
}

bool isLowSurrogate(char32_t c) {
    return c >= 0xDC00 && c < 0xE000;
}

void appendUtf8(std::string& out, char32_t c) {
    const auto tail = [&](int shift) { out += static_cast<char>(0x80 | (c >> shift & 0x3F)); };
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | c >> 6);
        tail(0);
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | c >> 12);
        tail(6), tail(0);
    } else {
        out += static_cast<char>(0xF0 | c >> 18);
        tail(12), tail(6), tail(0);
    }
}

// Every code that is not harmless has at most four hexadecimal digits.
void appendCode(std::string& out, char32_t c) {
    FixedText<16> code;
    code.format("<U+%04X>", static_cast<unsigned>(c));
    out += code.view();
}

constexpr char32_t kReplacement = 0xFFFD;

void appendUtf16(std::u16string& out, char32_t c) {
    if (c < 0x10000) {
        out += static_cast<char16_t>(c);
    } else {
        out += static_cast<char16_t>(0xD800 | (c - 0x10000) >> 10);
        out += static_cast<char16_t>(0xDC00 | (c & 0x3FF));
    }
}

bool isPrintableAscii(char c) {
    return c >= ' ' && c <= '~';
}

}  // namespace

std::string cleanText(std::string_view text) {
    std::string clean;
    clean.reserve(text.size());
    ByteReader reader(asBytes(text));
    while (!reader.atEnd()) {
        const Character c = firstCharacter(reader.rest());
        if (c.length == 0) break;
        if (isHarmless(c.code)) appendUtf8(clean, c.code);
        reader.skip(c.length);
    }
    return clean;
}

std::string spelledOutText(std::string_view text) {
    std::string spelled;
    spelled.reserve(text.size());
    ByteReader reader(asBytes(text));
    while (!reader.atEnd()) {
        const Character next = firstCharacter(reader.rest());
        const Character c = next.length == 0 ? Character{reader.rest()[0], 1} : next;
        if (isHarmless(c.code)) {
            appendUtf8(spelled, c.code);
        } else {
            appendCode(spelled, c.code);
        }
        reader.skip(c.length);
    }
    return spelled;
}

std::string storableText(const std::string& text) {
    if (std::ranges::all_of(text, isPrintableAscii)) return text;
    std::string oneLine = text;
    std::erase_if(oneLine, [](char c) { return c == '\n' || c == '\r' || c == '\t'; });
    return cleanText(oneLine) == oneLine ? text : cleanText(text);
}

std::u16string utf16FromUtf8(std::string_view text) {
    std::u16string units;
    ByteReader reader(asBytes(text));
    while (!reader.atEnd()) {
        const Character c = firstCharacter(reader.rest());
        if (c.length == 0) break;
        appendUtf16(units, c.code);
        reader.skip(c.length);
    }
    return units;
}

std::string utf8FromUtf16(std::u16string_view text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char32_t unit = text[i];
        const char32_t next = i + 1 < text.size() ? text[i + 1] : U'\0';
        if (isHighSurrogate(unit) && isLowSurrogate(next)) {
            appendUtf8(bytes, 0x10000 + ((unit & 0x3FF) << 10 | (next & 0x3FF)));
            ++i;
        } else {
            const bool isHalf = isHighSurrogate(unit) || isLowSurrogate(unit);
            appendUtf8(bytes, isHalf ? kReplacement : unit);
        }
    }
    return bytes;
}

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, sameIgnoringCase);
}

bool startsWithIgnoringCase(std::string_view text, std::string_view prefix) {
    return equalsIgnoringCase(text.substr(0, prefix.size()), prefix);
}

std::size_t findIgnoringCase(std::string_view text, std::string_view needle) {
    const auto hit =
        std::search(text.begin(), text.end(), needle.begin(), needle.end(), sameIgnoringCase);
    if (hit == text.end() && !needle.empty()) return std::string_view::npos;
    return static_cast<std::size_t>(hit - text.begin());
}

bool containsIgnoringCase(std::string_view text, std::string_view needle) {
    return findIgnoringCase(text, needle) != std::string_view::npos;
}

}  // namespace tintoral
