// The Printer MIB asked on behalf of a printer record.
#pragma once

#include <string>

#include "ink/ink_quantities.h"
#include "records/printer_record.h"
#include "support/fixed_text.h"

namespace tintoral {

// Asks `host` with getInkStatusByPMib() for the record's "makerName". With a positive result, a
// record that has no "Colors" yet receives the supply names that came, without empty ones and
// without control characters; none when the first name is empty. Result: that of
// getInkStatusByPMib().
int inkStatusOfRecordByPMib(PrinterRecord& printer, const std::string& host, InkQuantities& record,
                            BoundedText& status);

}  // namespace tintoral
