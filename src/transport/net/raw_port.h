// Ink levels and maintenance of a printer on a raw TCP port (normally 9100).
#pragma once

#include "ink/ink_quantities.h"
#include "records/printer_record.h"
#include "support/fixed_text.h"

namespace tintoral {

// Asks the printer of the record ("makerName", "modelName", "ipAdrs", "port", "commandType",
// "usb_CMD").
//
// EPSON: the command variants D4, RC, RC1, RC0 in that order, starting at the one that worked last;
// the one that works is remembered in "commandType". Canon: Canon's status inquiry. Any other
// maker: the Printer MIB, which may fill "Colors". A record whose "Active" is "NO" is never
// contacted.
//
// Result: the number of inks, 0 when the printer answered without levels or is inactive, negative
// when it could not be reached.
int port9100GetInkStatus(PrinterRecord& printer, InkQuantities& record, BoundedText& status);

// Sends a maintenance job (an option of vendors/epson.h) to an Epson or Canon printer; other makers
// and inactive records get nothing.
void port9100NozzleOptions(const PrinterRecord& printer, int option);

}  // namespace tintoral
