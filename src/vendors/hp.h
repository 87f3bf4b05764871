// HP's pen status inside the IEEE 1284 device ID, the "DWS:" warnings that Canon printers send,
// HP's cleaning command and the requests of its diagnosis. Pure.
//
// The "S:" field, in characters counted from after "S:":
//
//   0            2   version: "00", "01", "02" (p is 14), "03" (p is 16) or "04" (p is 20)
//   p + 2        1   number of pens, a hex digit
//   p + 3 + 8k   8   pen k as four bytes in hex: its colour in the low six bits of the first, its
//   level as the last
//
// A command for a printer that speaks PJL is framed like this; PML is the query language inside:
//
//   ESC "E", ESC "%-12345X", "@PJL ENTER LANGUAGE=PCL3GUI", LF
//   ESC "E" (requests only), ESC "&b" n "WPML ", n - 4 bytes of PML
//   ESC "E", ESC "%-12345X"
//
// A builder whose buffer is too small writes part of the message at most and returns 0.
#pragma once

#include <cstddef>
#include <string_view>

#include "ink/ink_quantities.h"
#include "support/byte_reader.h"
#include "support/fixed_text.h"

namespace tintoral {

// Pens and status of a device ID, from its "VSTATUS:" field or else its "S:" field, either ended by
// ";" or by the end of the text. The status starts as "Online"; without either field the record and
// the status text are cleared. Result: the number of pens, 0 when there are none, -1 for an unknown
// version of "S:".
int parseHPDeviceID(std::string_view deviceID, BoundedText& status, InkQuantities& record);

// The "VSTATUS:" field: the last known state word sets the status text (none leaves it), "K" the
// black pen and "C" the colour pen. As meant, the colour pen is always the second entry, also where
// it is the only one counted, and an entry keeps what it held when its pen or its level is missing.
// A level has up to three digits, its low byte is kept. Result: the number of pens, 0 to 2.
int parseVStatus(std::string_view field, InkQuantities& record, BoundedText& status);

// The "S:" field, with or without its leading ";S:" or "S:". The status text is left alone but for
// an unknown version ("Version missing at deviceID.", count 0, result -1). Result: the number of
// pens, at most 15 and no more than the field holds.
int parseSStatus(std::string_view field, InkQuantities& record, BoundedText& status);

// The "DWS:" field: warning codes of four characters, each of which sets the level of one colour;
// unknown codes are stepped over, "NO" ends them. Result: the record's count, 0 without a complete
// field.
int parseDWS(std::string_view reply, InkQuantities& record);

// The cleaning command for a command set: 72 bytes ("PJL,PML..."), 12 bytes ("MLC,PCL,PML...", for
// the PML channel) or 0. Clears the first 128 bytes first.
std::size_t mkHPCleaningCmd(std::string_view commandSet, MutableBytes buffer);

// Request 0 (model name, 69 bytes), 1 or 2 (supplies descriptions, 72 bytes each) of the diagnosis
// over PJL; 0 for any other index.
inline constexpr int kHPDiagnosticRequests = 3;
std::size_t mkHPDiagnosticRequest(int index, MutableBytes buffer);

}  // namespace tintoral
