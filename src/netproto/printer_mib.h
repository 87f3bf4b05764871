// Status and supplies of any printer that serves the Host Resources MIB (RFC 2790) and the Printer MIB (RFC 3805),
// asked over SNMPv1 with the community "public".
#pragma once

#include <string>
#include <string_view>

#include "ink/ink_quantities.h"
#include "ink/supply_names.h"
#include "support/fixed_text.h"

namespace tintoral {

// Status and levels in one go. `maker` is compared exactly: "HP" reads the printer's IEEE 1284 device ID first and
// falls back to the supplies table. Of the supplies' descriptions only the last one ends up in `names`, in its first
// row, as meant.
//
// Result: the number of inks; 0 when the printer has no supplies table; negative when it did not answer (the status
// text then says so).
int getInkStatusByPMib(std::string_view maker, const std::string& host, BoundedText& status, InkQuantities& record,
                       SupplyNames& names);

}  // namespace tintoral
