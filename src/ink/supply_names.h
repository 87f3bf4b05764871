// The names (or colours) of up to twelve supplies as a printer reports them, 64 bytes a row.
#pragma once

#include <array>

#include "support/fixed_text.h"

namespace tintoral {

using SupplyName = FixedText<64>;
using SupplyNames = std::array<SupplyName, 12>;

}  // namespace tintoral
