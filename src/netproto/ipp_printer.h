// What the answer to Get-Printer-Attributes says of a printer: its state (RFC 8011 5.4) and, where
// a CUPS server answers, its supplies. Pure; the exchange is ipp.h.
//
// CUPS reports supplies as the marker attributes of its queues ("marker-levels" and so on, see the
// CUPS implementation of IPP); of each attribute only the first value is used, as meant.
#pragma once

#include <string>

#include "ink/ink_quantities.h"
#include "ink/supply_names.h"
#include "netproto/ipp_message.h"
#include "support/fixed_text.h"

namespace tintoral {

// Texts are as the printer sent them; a text that it did not send is empty.
struct IppPrinter {
    int state = 0;  // "printer-state": 3 idle, 4 processing, 5 stopped; 0 when it was not sent
    std::string stateMessage;
    bool isShared = false;
    std::string location;
    std::string cupsVersion;
    IppTuples attributes;  // all that was sent
};

IppPrinter readIppPrinter(IppTuples&& attributes);

// The state in words ("Idle", "Printing", "Unknown", "None") and the marker's level, with name and
// colour ("#RRGGBB") in the first rows. Only a CUPS above 1.3 is believed to know markers. A level
// is a percentage, or -1 to -128 as reported (CUPS: -1 other, -2 unknown, -3 some remaining; -2
// also when there is none); the entry's ColorID becomes 0, the record's count is not touched.
// Names, colours and what is appended to `dump` (which may be null) are clean. Result: the number
// of markers, in practice 1; 0 when there are none.
int readStatusAndMarkers(const IppPrinter& printer, BoundedText& status, InkQuantities& inks,
                         SupplyNames& names, SupplyNames& colors, BoundedText* dump);

}  // namespace tintoral
