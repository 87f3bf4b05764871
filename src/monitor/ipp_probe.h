// Asks an IPP queue for its supplies while printers are being listed. A queue that answers with
// levels is from then on updated through IPP.
#pragma once

#include <string_view>

#include "ink/ink_quantities.h"
#include "ink/supply_names.h"
#include "records/printer_record.h"
#include "support/fixed_text.h"

namespace tintoral {

// As ippGetPrinterStatusAndQuantities(): a count above 0 comes with status, levels, names and
// colours ("#RRGGBB" or empty); the last argument is an optional dump.
using IppQuery = int (*)(std::string_view uri, BoundedText& status, InkQuantities& inks,
                         SupplyNames& names, SupplyNames& colors, BoundedText* dump);

// Asks the queue at the record's "ippURL"; nothing is sent when it has none. With levels, sets
// "printerStatus", "rgbColors", "inkDict" (its "Colors" are the supply names, twelve at the most)
// and "serverType" = "Mac cups1.4"; else the record stays as it is. Result: that of `query`, or
// negative without an address.
int probeIppRecord(PrinterRecord& printer, IppQuery query);

}  // namespace tintoral
