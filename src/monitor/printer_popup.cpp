#include "monitor/printer_popup.h"

#include <algorithm>

namespace tintoral {

void PrinterPopup::insertFirst(PrinterRecordPtr printer) {
    printers_.insert(printers_.begin(), std::move(printer));
}

PrinterRecordPtr PrinterPopup::dropWhenFull() {
    constexpr std::size_t kDroppedIndex = 98;
    if (entryCount() < kMaximumEntries) return nullptr;
    const auto at = printers_.begin() + kDroppedIndex;
    PrinterRecordPtr dropped = *at;
    printers_.erase(at);
    return dropped;
}

void PrinterPopup::remove(std::string_view id) {
    std::erase_if(printers_, [&](const PrinterRecordPtr& printer) {
        return printer->text(keys::printerId) == id;
    });
}

int PrinterPopup::indexOf(std::string_view id) const {
    const auto hit = std::ranges::find_if(printers_, [&](const PrinterRecordPtr& printer) {
        return printer->text(keys::printerId) == id;
    });
    return hit == printers_.end() ? -1 : static_cast<int>(hit - printers_.begin());
}

PrinterRecordPtr PrinterPopup::find(std::string_view id) const {
    const int index = indexOf(id);
    return index < 0 ? nullptr : printers_[static_cast<std::size_t>(index)];
}

}  // namespace tintoral
