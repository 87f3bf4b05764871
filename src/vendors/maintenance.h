// The maintenance job of any maker whose job is plain bytes. Pure.
#pragma once

#include <cstddef>
#include <string_view>

#include "support/byte_reader.h"

namespace tintoral {

// Builds the job of an option (vendors/epson.h) for a printer of the maker "EPSON" or "Canon" in
// `buffer` (128 bytes hold any). Result: its length; 0 for another maker or option.
std::size_t mkNozzleOption(std::string_view maker, std::string_view model, int option,
                           MutableBytes buffer);

}  // namespace tintoral
