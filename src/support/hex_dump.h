// Bytes made readable for the diagnostics report.
#pragma once

#include <cstddef>

#include "support/byte_reader.h"
#include "support/fixed_text.h"

namespace tintoral {

// Appends a line for every 16 bytes: the offset of the first one in hex, each byte in hex, and the
// bytes as ASCII with "." for those that cannot be printed. A line that no longer fits as a whole
// is left out, and so are all after it. Result: the number of characters added.
//
//   0000  40 42 44 43 20 53 54 32 0D 0A 05 00 01 01 04 0F  @BDC ST2........
std::size_t sDumpPacket(BoundedText& text, Bytes packet);

}  // namespace tintoral
