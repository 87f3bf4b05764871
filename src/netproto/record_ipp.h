// An IPP queue asked on behalf of a printer record.
#pragma once

#include "ink/ink_quantities.h"
#include "records/printer_record.h"
#include "support/fixed_text.h"

namespace tintoral {

// Asks the record's "ippURL" with ippGetPrinterStatusAndQuantities(). With a positive result,
// "Colors" becomes the names and "rgbColors" the colours of so many markers, whatever the record
// had before; otherwise both stay. Result: that of ippGetPrinterStatusAndQuantities(), 0 without a
// URL.
int inkStatusOfRecordByIpp(PrinterRecord& printer, InkQuantities& inks, BoundedText& status);

}  // namespace tintoral
