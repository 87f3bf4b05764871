// PML, HP's Printer Management Language, as it travels inside an MLC channel. Pure; the exchange is
// pml_exchange.h.
//
//   request   command (0 get, 4 set), object element; for "set" the value element
//   reply     command, status (negative: error), object element, value element
//   element   type, length, value
//
//   type      value                     written as                          read as
//   0         object identifier         a byte for each component           "1.1.3.2"
//   4, 8, 32  integer                   4 bytes                             0 to 4 bytes, see b2i
//   16        text                      its bytes                           its bytes
//   20        octets                    the type byte alone                 its bytes
//   other     -                         the type byte alone                 0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <variant>

#include "support/byte_reader.h"
#include "support/fixed_text.h"

namespace tintoral {

namespace pml_type {
inline constexpr std::uint8_t kObjectIdentifier = 0;
inline constexpr std::uint8_t kText = 16;
inline constexpr std::uint8_t kOctets = 20;
}  // namespace pml_type

inline constexpr std::uint8_t kPMLGet = 0;
inline constexpr std::uint8_t kPMLSet = 4;

// What is to be encoded: a number for the integer types, text for identifiers and texts.
using PMLArgument = std::variant<std::int32_t, std::string_view>;

// What was decoded. An identifier of 255 components fits the text.
struct PMLValue {
    std::uint8_t type = 0;
    std::int32_t number = 0;  // of an integer; 0 for all others
    FixedText<1024> text;  // of an identifier, text or octets (NULs included); empty for all others
    std::size_t length = 0;  // bytes of the encoded value
};

struct PMLResponse {
    std::int8_t status = 0;
    FixedText<1024> object;
    PMLValue value;
};

// Writes one element. Result: its size; 0 when it does not fit `out`, its value takes more than 255
// bytes, or the argument is of the wrong kind for the type. Components are the low bytes of their
// decimal numbers.
std::size_t makePMLBER(MutableBytes out, std::uint8_t type, const PMLArgument& value);

// Reads the element at the start of `bytes`. Result: its size, length + 2; 0, and an empty value,
// when it runs past the end.
std::size_t parsePMLBER(Bytes bytes, PMLValue& value);

// Writes a request. The value is used for kPMLSet only. Result: its size; 0 when an element cannot
// be written.
std::size_t makePMLRequest(MutableBytes out, std::uint8_t command, std::string_view object,
                           std::uint8_t type, const PMLArgument& value);

// Reads a reply. Result: 0; -1 when the status is negative (value.length is then that of all that
// follows it) or the reply is malformed: cut short, or its first element no object identifier.
int parsePMLResponse(Bytes reply, PMLResponse& response);

}  // namespace tintoral
