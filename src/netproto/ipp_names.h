// The standard names of IPP operations and status codes, and readable dumps of requests.
#pragma once

#include <cstdint>
#include <string_view>

#include "support/byte_reader.h"

namespace tintoral {

// The name of a status code (RFC 8011 appendix B, RFC 3995, RFC 3996, RFC 3998, CUPS); "unknown"
// for any other.
std::string_view getStatusString(std::uint16_t statusCode);

// The name of an operation id (RFC 8011 5.4.15, RFC 3380, RFC 3995, RFC 3996, RFC 3998, CUPS);
// "unknown" for any other.
std::string_view getOpString(std::uint16_t operation);

// Prints version, operation and request id of a request to standard output; a line that says so
// when it is shorter than 8 bytes.
void DumpIppHdr(Bytes request);

// Prints a line for each attribute and each further value of a request's attributes (what follows
// the first 8 bytes), as far as they are whole and into 4 KB. Texts are printed clean.
void DumpIppAttributes(Bytes attributes);

}  // namespace tintoral
