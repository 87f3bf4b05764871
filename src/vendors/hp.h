// HP's pen status inside the IEEE 1284 device ID, the "DWS:" warnings that Canon printers send, and HP's cleaning
// command. Pure.
#pragma once

#include <cstddef>
#include <string_view>

#include "ink/ink_quantities.h"
#include "support/byte_reader.h"
#include "support/fixed_text.h"

namespace tintoral {

// Pens and status of a device ID, from its "VSTATUS:" field or else its "S:" field. Without either, the record and
// the status text are cleared. Result: the number of pens, 0 when there are none, -1 for an unknown version of "S:".
int parseHPDeviceID(std::string_view deviceID, BoundedText& status, InkQuantities& record);

// The "VSTATUS:" field. Result: the number of pens.
int parseVStatus(std::string_view field, InkQuantities& record, BoundedText& status);

// The "S:" field, with or without its leading ";S:" or "S:". Result: the number of pens, at most 15; -1 for an
// unknown version ("Version missing at deviceID." in the status text).
int parseSStatus(std::string_view field, InkQuantities& record, BoundedText& status);

// The "DWS:" field: every known warning code sets the level of one colour. Result: the record's count, 0 without the
// field.
int parseDWS(std::string_view reply, InkQuantities& record);

// The cleaning command for a command set: 72 bytes ("PJL,PML..."), 12 bytes ("MLC,PCL,PML...", for the PML channel)
// or 0. Clears the first 128 bytes first.
std::size_t mkHPCleaningCmd(std::string_view commandSet, MutableBytes buffer);

}  // namespace tintoral
