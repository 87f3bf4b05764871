// The list behind the main window's pop-up: the known printers, newest first, then a separator and
// "Select printer".
#pragma once

#include <string_view>
#include <vector>

#include "records/printer_record.h"

namespace tintoral {

class PrinterPopup {
  public:
    // The pop-up holds at most this many entries, the separator and "Select printer" included.
    static constexpr std::size_t kMaximumEntries = 101;

    // A new printer comes first.
    void insertFirst(PrinterRecordPtr printer);

    // Makes room for one more: a full pop-up loses its oldest printer, at index 98. Null when there
    // was room.
    PrinterRecordPtr dropWhenFull();

    // Takes out the printer of that id, if there is one.
    void remove(std::string_view id);

    // The record whose "printerId" is `id`, or null.
    PrinterRecordPtr find(std::string_view id) const;

    // The index of a record by its "printerId", or -1.
    int indexOf(std::string_view id) const;

    const std::vector<PrinterRecordPtr>& printers() const { return printers_; }
    std::size_t entryCount() const { return printers_.size() + 2; }

  private:
    std::vector<PrinterRecordPtr> printers_;
};

}  // namespace tintoral
