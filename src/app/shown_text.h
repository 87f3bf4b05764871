// Stored texts made fit to show: they may be foreign.
#pragma once

#include <QString>
#include <string>

#include "records/printer_record.h"
#include "support/text.h"

namespace tintoral {

// The text without control characters.
inline QString shownText(const std::string& text) {
    return QString::fromStdString(cleanText(text));
}

// The printer's name as people know it, or its id where it has none.
inline QString shownName(const PrinterRecord& printer) {
    const std::string name = printer.text(keys::printerName);
    return shownText(name.empty() ? printer.text(keys::printerId) : name);
}

}  // namespace tintoral
