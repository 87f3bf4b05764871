#include "netproto/record_ipp.h"

#include <algorithm>
#include <string>
#include <vector>

#include "ink/supply_names.h"
#include "netproto/ipp.h"
#include "support/text.h"

namespace tintoral {
namespace {

// By position: an empty row is an empty text.
Value firstTexts(const SupplyNames& rows, int count) {
    std::vector<std::string> texts(std::min(static_cast<std::size_t>(count), rows.size()));
    std::transform(rows.begin(), rows.begin() + static_cast<std::ptrdiff_t>(texts.size()),
                   texts.begin(), [](const SupplyName& row) { return cleanText(row.view()); });
    return texts;
}

}  // namespace

int inkStatusOfRecordByIpp(PrinterRecord& printer, InkQuantities& inks, BoundedText& status) {
    const std::string url = printer.text(keys::ippURL);
    if (url.empty()) return 0;
    SupplyNames names;
    SupplyNames colors;
    const int count = ippGetPrinterStatusAndQuantities(url, status, inks, names, colors, nullptr);
    if (count > 0) {
        printer.set(keys::colors, firstTexts(names, count));
        printer.set(keys::rgbColors, firstTexts(colors, count));
    }
    return count;
}

}  // namespace tintoral
