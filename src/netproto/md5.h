// The MD5 digest (RFC 1321), for HTTP Digest authorisation only: it protects nothing against
// somebody who tries.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "support/byte_reader.h"

namespace tintoral {

std::array<std::uint8_t, 16> md5(Bytes message);

// The digest of a text as 32 lower-case hexadecimal digits.
std::string md5Hex(std::string_view text);

}  // namespace tintoral
