// Bytes as hex digits, in what simulators are told and in what they have heard.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "support/byte_reader.h"

namespace tintoral::test {

using ByteVector = std::vector<std::uint8_t>;

// Upper-case hex, without blanks.
std::string hexOf(Bytes bytes);

// The bytes of hex digits; blanks are skipped.
ByteVector bytesOfHex(std::string_view hex);

}  // namespace tintoral::test
