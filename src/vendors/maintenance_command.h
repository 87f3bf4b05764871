// A maintenance job in the language of a printer's maker, whatever way the printer is reached.
#pragma once

#include <cstddef>
#include <string_view>

#include "support/byte_reader.h"

namespace tintoral {

// Room for any of them.
inline constexpr std::size_t kMaintenanceCommandRoom = 256;

// mkEpsonNozzleOption() for "EPSON", mkCanonNozzleOption() for "Canon". Result: the bytes built; 0
// for another maker or option and when the buffer is too small.
std::size_t mkMaintenanceCommand(MutableBytes buffer, std::string_view maker,
                                 std::string_view model, int option);

}  // namespace tintoral
