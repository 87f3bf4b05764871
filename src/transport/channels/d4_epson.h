// What Epson printers are asked on their D4 control channel, "EPSON-CTRL". Each call enters packet
// mode, opens the channel at revision 16 (once more after 500 ms when that fails) and closes it
// again; 100 ms lie before the command and before each reply. d4.h says how long that may take.
#pragma once

#include "support/byte_reader.h"
#include "support/fixed_text.h"
#include "vendors/transport_io.h"

namespace tintoral {

// The result when there is no control channel to ask on.
inline constexpr int kNoD4Channel = 512;

// The status inquiry "st" 01 00 01. Clears `reply` first (kD4PayloadRoom bytes hold any). `dump`
// gets a line with the length of the reply and its hex dump appended; it may be null. Result: the
// length of the reply, 0 when it is empty or cannot be read, kNoD4Channel.
int d4GetEpsonInkStatus(const IoHandle& handle, MutableBytes reply, BoundedText* dump);

// A maintenance job (an option of vendors/epson.h; another one sends an empty packet) and the
// command that ends it. Two words about it go to standard output. Result: the length of the end's
// reply, or of the job's when that is empty, or 0; kNoD4Channel also when the job cannot be
// written.
int d4EpsonNozzleOption(const IoHandle& handle, int option);

}  // namespace tintoral
