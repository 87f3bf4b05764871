// Ink levels and maintenance of a USB printer that an AirPort base station shares.
//
// Records used: "serverType" "AirPort" whose "Active" is not "NO". The base station is at
// "hostName" and "port", the printer's name on it is "usbPrinterName". Each call opens a connection
// of its own (riousb.h) and closes it again.
#pragma once

#include "ink/ink_quantities.h"
#include "records/printer_record.h"
#include "support/fixed_text.h"

namespace tintoral {

// Asks the printer.
//
//   "HP"      the device ID, for up to 1000 ms (hp.h)
//   "EPSON"   on the D4 control channel when "usb_CMD" names D4; else in remote mode in the variant
//             that "commandType" names, for up to 800 ms
//   "Canon"   the status inquiry that "usb_CMD" wants, for up to 600 ms, and then the command that
//             ends it; for XML replies up to 400 ms more for each further piece, instead, and
//             5 s for all of them
//
// Replies are read up to 1024 bytes. Nothing is remembered in the record.
//
// Result: the number of inks; 0 for everything else: another maker, another kind of record, a base
// station or printer that does not answer, an answer without levels.
int riousbGetInkStatus(PrinterRecord& printer, InkQuantities& record, BoundedText& status);

// Sends a maintenance job (an option of vendors/epson.h) to an Epson or Canon printer; other makers
// get nothing.
void riousbNozzleOptions(const PrinterRecord& printer, int option);

}  // namespace tintoral
