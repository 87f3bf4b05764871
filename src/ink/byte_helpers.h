// Small conversions that the status parsers share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "support/byte_reader.h"
#include "support/fixed_text.h"

namespace tintoral {

// The value of two hex characters as a signed byte. Lenient: a character from 'a' on counts as its
// code minus 87, from 'A' on as its code minus 55, one below '0' as 0, any other as its code minus
// 48; the first one's value is masked to four bits. A character that is missing counts as NUL.
std::int8_t hTob(std::string_view twoCharacters);

// Converts hex characters into bytes, the first of each two being the high nibble. A character that
// is not a hex digit takes the nibble value of the one before it (0 at the start). Stops when
// `output` is full. Result: the number of bytes written; an odd last character writes its high
// nibble and counts as a byte.
std::size_t hexToBin(std::string_view hex, MutableBytes output);

// The big-endian integer in `bytes`: 1 byte sign-extended, 2 or 3 bytes unsigned, 4 bytes as they
// are; any other width gives 0 (X.690 8.3, as printers use it).
std::int32_t b2i(Bytes bytes);

// The index at which `needle` occurs in `buffer`. The search stops one position early, as meant: a
// needle that ends at the buffer's very last byte is not found.
std::optional<std::size_t> bisearch(Bytes buffer, std::string_view needle);

}  // namespace tintoral
