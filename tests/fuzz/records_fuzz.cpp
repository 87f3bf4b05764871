// Whatever the settings hold in place of printer records: the start's rules apply to them, a status
// can be told, and the table can be written and read again. Their first record is also taken for
// the model table.
#include <cstdlib>

#include "monitor/record_rules.h"
#include "records/model_merge.h"
#include "records/printer_table.h"
#include "support/byte_reader.h"

namespace {

using namespace tintoral;

void applyRules(PrinterRecord& printer, const PrinterRecord& first) {
    prepareAtStart(printer);
    refusalToSelect(printer);
    maySelectByItself(printer);
    levelsAreStale(printer, Date());
    copyFoundValues(first, printer);
    copySelectedValues(first, printer);
    printer.set(keys::active, kYes);
    if (statusLine(&printer).text.size() > 10000 + printer.text(keys::printerStatus).size())
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto root = parsePropertyList(asText(Bytes(data, size)));
    const auto* records = root ? root->as<Array>() : nullptr;
    if (!records) return 0;
    UserDefaults defaults("/nonexistent/settings");
    defaults.setPrinterTable(*records);
    PrinterTable table = loadPrinterTable(defaults);
    if (table.empty()) return 0;
    const PrinterRecord first = *table.front();
    prunePrinterTable(table, first.text(keys::printerId), ModelTable(first));
    if (table.empty()) std::abort();
    for (const PrinterRecordPtr& printer : table) applyRules(*printer, first);
    storePrinterTable(table, defaults);
    const auto stored = parsePropertyList(formatPropertyList(defaults.printerTable()));
    if (!stored || stored->as<Array>()->size() != table.size()) std::abort();
    return 0;
}
