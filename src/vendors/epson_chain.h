// Which command variant an Epson printer speaks is found by trying, and remembered in its record.
//
//   D4 -> RC (variant 2) -> RC1 (variant 1) -> RC0 (variant 0)
//
// The walk is the same over USB and over the network; the inquiries and the first one tried are the
// caller's.
#pragma once

#include <functional>
#include <span>
#include <string_view>

#include "records/printer_record.h"

namespace tintoral {

// One variant and how to ask with it: the number of inks, 0 or less when that failed. Without an
// inquiry the link counts as a printer that cannot be reached (-1).
struct EpsonLink {
    std::string_view commandType;
    std::function<int()> inquire;
};

// Asks link after link, beginning with the record's "commandType", or with `start` when the record
// has none, until one yields 1 or more; that one is stored in "commandType" and its result
// returned. When the last one fails too, "commandType" is removed and the last result returned. A
// "commandType" that names none of the links is kept and gives 0.
int runEpsonChain(PrinterRecord& printer, std::string_view start, std::span<const EpsonLink> links);

}  // namespace tintoral
