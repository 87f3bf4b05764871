// What the model table knows, merged into a printer's record.
#pragma once

#include <optional>
#include <string_view>

#include "records/model_table.h"
#include "records/printer_record.h"

namespace tintoral {

// Looks up `key` in the table, or "MAKER MODEL" of the record when there is no key; a record that
// lacks either of the two is left alone. Otherwise:
//   - "Colors" becomes the entry's, when it has an array of that name.
//   - "commandType" becomes the entry's "CommandType" only where the rules in the source allow it:
//     what a printer was found to understand counts for more than the table, within limits.
//   - "nozzleCleaning", "printNozzleCheckPattern" and "cleaningAndTestPrint" become "YES" for each
//     command that the entry's "options" list by its menu title, and are absent otherwise, also
//     when there is no entry.
void updatePrinterDict(PrinterRecord& record, const ModelTable& models,
                       std::optional<std::string_view> key = std::nullopt);

}  // namespace tintoral
