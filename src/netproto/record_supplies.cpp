#include "netproto/record_supplies.h"

#include <algorithm>
#include <span>
#include <vector>

#include "ink/supply_names.h"
#include "netproto/printer_mib.h"
#include "support/text.h"

namespace tintoral {
namespace {

std::vector<std::string> cleanNames(std::span<const SupplyName> rows) {
    std::vector<std::string> names;
    for (const SupplyName& row : rows) {
        std::string name = cleanText(row.view());
        if (!name.empty()) names.push_back(std::move(name));
    }
    return names;
}

void rememberColors(PrinterRecord& printer, const SupplyNames& rows, int count) {
    if (count < 1 || rows.front().empty() || printer.array(keys::colors)) return;
    const std::size_t used = std::min(static_cast<std::size_t>(count), rows.size());
    const auto names = cleanNames(std::span(rows).first(used));
    if (!names.empty()) printer.set(keys::colors, Value(names));
}

}  // namespace

int inkStatusOfRecordByPMib(PrinterRecord& printer, const std::string& host, InkQuantities& record,
                            BoundedText& status) {
    SupplyNames names;
    const int count =
        getInkStatusByPMib(printer.text(keys::makerName), host, status, record, names);
    rememberColors(printer, names, count);
    return count;
}

}  // namespace tintoral
