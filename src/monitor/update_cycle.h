// One update of one printer: which query its record calls for, and what the answer makes of the
// record.
#pragma once

#include <span>
#include <string_view>

#include "ink/ink_quantities.h"
#include "records/printer_record.h"
#include "support/fixed_text.h"

namespace tintoral {

// Asks a printer. `inks` comes pre-filled from the record's "Colors"; `status` comes empty. Result:
// negative when the printer could not be reached, 0 when it answered without levels, else the
// number of inks. A query may keep what it learned (command type, colours) in the record.
using PrinterQuery = int (*)(PrinterRecord& printer, InkQuantities& inks, BoundedText& status);

// One way to a printer. A row applies when the server type is equal and the record's "kind" begins
// with the prefix.
struct DispatchRow {
    std::string_view serverType;
    std::string_view kindPrefix;
    bool needsActive;  // unreachable at once unless "Active" is "YES"
    PrinterQuery query;
};

// All ways to a printer; the first row that applies counts.
std::span<const DispatchRow> dispatchTable();

// The answer of the printer by the first row of `table` that applies; 0 when none does.
int queryPrinter(PrinterRecord& printer, InkQuantities& inks, BoundedText& status,
                 std::span<const DispatchRow> table = dispatchTable());

enum class UpdateOutcome { Unreachable, NoLevels, Levels };

// One update from end to end: asks the printer and sets "printerStatus"; with levels also
// "inkDict", "Date" and, when the record had none, "Colors". Without levels the previous "inkDict"
// stays.
UpdateOutcome updatePrinter(PrinterRecord& printer,
                            std::span<const DispatchRow> table = dispatchTable());

}  // namespace tintoral
