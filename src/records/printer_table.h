// The printers that the program knows, in the order in which they were added.
#pragma once

#include <string_view>
#include <vector>

#include "records/model_table.h"
#include "records/printer_record.h"
#include "records/user_defaults.h"

namespace tintoral {

using PrinterTable = std::vector<PrinterRecordPtr>;

// The stored records, in stored order. Entries that are no dictionaries or have no "printerId" are
// dropped. The texts in them are foreign data as they were stored: cleanText() before they are
// shown.
PrinterTable loadPrinterTable(const UserDefaults& defaults);

// The settings' copy becomes this table; synchronize() writes it.
void storePrinterTable(const PrinterTable& table, UserDefaults& defaults);

// Removes records last seen ("Date") more than 90 whole days ago, but not the selected one and none
// without a date; every record passes through updatePrinterDict() on the way. Done once, at start;
// the caller stores the result.
void prunePrinterTable(PrinterTable& table, std::string_view selectedId, const ModelTable& models);

// The first record of that id, or null.
PrinterRecordPtr findPrinter(const PrinterTable& table, std::string_view printerId);

// Removes every record of that id.
void removePrinter(PrinterTable& table, std::string_view printerId);

}  // namespace tintoral
