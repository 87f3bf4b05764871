// A Canon printer's BJNP status asked on behalf of a printer record.
#pragma once

#include "ink/ink_quantities.h"
#include "records/printer_record.h"
#include "support/fixed_text.h"

namespace tintoral {

// Asks the printer at the record's "ipAdrs", a dotted address, in a session of its own (bjnp.h), 3
// s at the most. The levels are those of "CIR:", or else the warnings of "DWS:".
//
// Result: the number of inks; 0 when the printer answered without levels; -1 when it gave no
// status, and then `status` is "Can't communicate to the printer." and the session left open.
int inkStatusOfRecordByBjnp(PrinterRecord& printer, InkQuantities& record, BoundedText& status);

}  // namespace tintoral
