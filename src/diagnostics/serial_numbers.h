// Serial numbers made unreadable in a diagnostics report that goes to others.
#pragma once

#include <string>
#include <string_view>

namespace tintoral {

// Puts a "*" for each character of
//   - the value of each field "SN:", "SERN:" or "SERIALNUMBER:" (IEEE 1284 device IDs; upper or
//     lower case), up to the next ";", quotation mark or end of line, and
//   - each occurrence of `serialNumber`, when it has at least 4 characters,
// also in the hex dumps of sDumpPacket() (support/hex_dump.h), where a field may go over several
// lines: in their bytes and in their text. All else stays as it is, and the length too.
void hideSerialNumbers(std::string& report, std::string_view serialNumber);

}  // namespace tintoral
