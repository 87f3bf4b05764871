// Canon's status language: requests as bytes, replies ("BST:", "CIR:"). Pure; the exchange is canon_exchange.h.
#pragma once

#include <cstddef>
#include <string_view>

#include "ink/ink_quantities.h"
#include "support/byte_reader.h"
#include "support/fixed_text.h"

namespace tintoral {

// The status request for a model (exact name). For a command set with "IVEC" only the length (358) of the XML
// command is returned and the buffer is left as it was, as meant: clear it before you send it.
std::size_t mkCanonStatusInquire(std::string_view model, MutableBytes buffer, std::string_view commandSet);

// The 16 bytes that end a status inquiry.
std::size_t mkCanonExitCmd(MutableBytes buffer);

// A cleaning (option 1, 40 bytes) or nozzle-check (option 2, 48 bytes) job; 0 for another option. Clears the first 64
// bytes first.
std::size_t mkCanonNozzleOption(MutableBytes buffer, int option);

// Status text ("BST:") and levels ("CIR:") of a reply, read as text up to its first NUL. Result: the number of inks,
// at most 20; 0 without a "CIR:" field.
int parseCIR(Bytes reply, BoundedText& status, InkQuantities& record);

}  // namespace tintoral
