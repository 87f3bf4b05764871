// Ink levels and maintenance of a printer on a raw TCP port (normally 9100).
#pragma once

#include "ink/ink_quantities.h"
#include "records/printer_record.h"
#include "support/fixed_text.h"

namespace tintoral {

// Asks the printer of the record ("makerName", "modelName", "ipAdrs", "port", "commandType",
// "usb_CMD").
//
//   "EPSON"    the command variants D4, RC, RC1, RC0 in that order, starting at the one that
//              worked last, else at D4 when "usb_CMD" names it, else at RC0, or at RC for a printer
//              that was typed in, whose command set nothing has told; the one that works
//              is remembered in "commandType" (epson_chain.h)
//   "Canon"    Canon's status inquiry, as "usb_CMD" wants it (canon_exchange.h)
//   others     the Printer MIB, which may fill "Colors"
//
// A record whose "Active" is "NO" is never contacted, nor is one without an address, nor an Epson
// or Canon printer with a port outside 1 to 65535. A "commandType" that names no variant is kept,
// and the result is 0.
//
// Result: the number of inks, 0 when the printer answered without levels or is inactive, negative
// when it could not be reached.
int port9100GetInkStatus(PrinterRecord& printer, InkQuantities& record, BoundedText& status);

// Asks an Epson printer that a base station announces as an LPD queue: remote mode on port 9100 of
// "ipAdrs", in the variants RC, RC1, RC0, with the same memory in "commandType". Results as above.
int port9100GetEpsonRemoteInkStatus(PrinterRecord& printer, InkQuantities& record,
                                    BoundedText& status);

// Sends a maintenance job (an option of vendors/epson.h) to an Epson or Canon printer; other makers
// get nothing, nor do records that port9100GetInkStatus() would not contact.
void port9100NozzleOptions(const PrinterRecord& printer, int option);

}  // namespace tintoral
