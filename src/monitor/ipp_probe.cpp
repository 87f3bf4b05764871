#include "monitor/ipp_probe.h"

#include "records/ink_dict.h"
#include "support/text.h"

namespace tintoral {

int probeIppRecord(PrinterRecord& printer, PrinterQuery query) {
    // The names stay out of the record itself: they are learned by its first update.
    PrinterRecord answer{{std::string(keys::ippURL), printer.text(keys::ippURL)}};
    InkQuantities inks;
    StatusText status;
    const int result = query(answer, inks, status);
    if (result <= 0) return result;
    const Value rgbColors = answer.texts(keys::rgbColors).value_or(std::vector<std::string>());
    Dictionary inkDict = makeInkDict(
        answer.texts(keys::colors).value_or(std::vector<std::string>()), inks, currentDate());
    inkDict.set(keys::rgbColors, rgbColors);
    printer.set(keys::printerStatus, cleanText(status.view()));
    printer.set(keys::rgbColors, rgbColors);
    printer.set(keys::inkDict, std::move(inkDict));
    printer.set(keys::serverType, server_types::macCups14);
    return result;
}

}  // namespace tintoral
