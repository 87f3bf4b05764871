// Base64 (RFC 4648 section 4) for HTTP credentials.
#pragma once

#include <string>
#include <string_view>

namespace tintoral {

// Encodes the text up to its first NUL, as meant, with "=" padding. Result: the length of
// `encoded`.
std::size_t EncodeBase64(std::string_view text, std::string& encoded);

// Decodes groups of four characters up to the first "=" or the end of the text. As meant, "+" and
// "/" are not the last two digits but 47 and 51, and other characters that are no digits count as
// some digit too: nothing is refused. Result: the length of `decoded`, which may hold any byte.
std::size_t DecodeBase64(std::string_view text, std::string& decoded);

}  // namespace tintoral
