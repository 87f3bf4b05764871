#include "monitor/ipp_probe.h"

#include <algorithm>
#include <string>
#include <vector>

#include "records/ink_dict.h"
#include "support/text.h"

namespace tintoral {
namespace {

std::vector<std::string> firstTexts(const SupplyNames& texts, std::size_t count) {
    std::vector<std::string> result;
    for (std::size_t i = 0; i < count; ++i) result.push_back(cleanText(texts[i].view()));
    return result;
}

}  // namespace

int probeIppRecord(PrinterRecord& printer, IppQuery query) {
    const std::string url = printer.text(keys::ippURL);
    if (url.empty()) return -1;
    InkQuantities inks;
    StatusText status;
    SupplyNames names;
    SupplyNames colors;
    const int result = query(url, status, inks, names, colors, nullptr);
    if (result <= 0) return result;
    const std::size_t count = std::min(static_cast<std::size_t>(result), names.size());
    const Value rgbColors = firstTexts(colors, count);
    Dictionary inkDict = makeInkDict(firstTexts(names, count), inks, currentDate());
    inkDict.set(keys::rgbColors, rgbColors);
    printer.set(keys::printerStatus, cleanText(status.view()));
    printer.set(keys::rgbColors, rgbColors);
    printer.set(keys::inkDict, std::move(inkDict));
    printer.set(keys::serverType, server_types::macCups14);
    return result;
}

}  // namespace tintoral
