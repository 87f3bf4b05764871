// The one way in which bytes from a printer, a base station or any other peer are read.
//
// A reader walks forward over bytes that somebody else owns. Every read checks what is left; a read
// past the end yields zero (or an empty span), uses up the rest and sets failed(), so a parser may
// read a whole header and ask once at the end. A length taken from the wire goes to take() or
// skip(), which compare it with remaining(); it is never added to a pointer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace tintoral {

using Bytes = std::span<const std::uint8_t>;
using MutableBytes = std::span<std::uint8_t>;

class ByteReader {
  public:
    explicit ByteReader(Bytes bytes) : rest_(bytes) {}

    std::uint8_t u8();
    std::int8_t s8() { return static_cast<std::int8_t>(u8()); }
    std::uint16_t be16();
    std::uint16_t le16();
    std::uint32_t be32();

    // The next `count` bytes. With fewer left: an empty span, and the reader has failed.
    Bytes take(std::size_t count);
    void skip(std::size_t count) { take(count); }

    // All that is left, without moving.
    Bytes rest() const { return rest_; }
    std::size_t remaining() const { return rest_.size(); }
    bool atEnd() const { return rest_.empty(); }
    bool failed() const { return failed_; }

  private:
    Bytes rest_;
    bool failed_ = false;
};

// The bytes as characters, NULs included. The view shares the owner of `bytes`.
std::string_view asText(Bytes bytes);

// The bytes as a C program would see them: the characters before the first NUL.
std::string_view textBeforeNul(Bytes bytes);

// The characters as bytes; shares the owner of `text`.
Bytes asBytes(std::string_view text);

// What follows the first occurrence of `tag` in `text`, or nothing when the tag does not occur.
std::optional<std::string_view> textAfter(std::string_view text, std::string_view tag);

// What stands between the first `tag` and the next `end` character; nothing when either is missing.
std::optional<std::string_view> textBetween(std::string_view text, std::string_view tag, char end);

}  // namespace tintoral
