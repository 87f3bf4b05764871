// Ink levels and maintenance of the printers that are attached by USB. Each call opens the printer,
// does its work and closes it again.
//
//   maker    asked                                          reply
//   EPSON    D4 control channel, or remote mode after       "@BDC ST2", "@EJL STATUS CODE" or
//            what was left in the printer has been read     "@BDC ST\r"
//   Canon    status request, and, unless it speaks IVEC,    2 bytes, then "CIR:" or "DWS:"
//            the request that ends the inquiry
//   HP       nothing                                        the device ID
//
// A printer is named by a USBPrinterInfo of its maker, model, vendor and product ID. `status` and
// `record` are the caller's. The getters' result is the parser's: the number of inks, 0 when there
// are none, -1 when the printer cannot be opened, written to or read from (the status text is then
// left alone).
//
// What an exchange takes at the most: D4 as stated in d4.h; remote mode 12.8 s (two writes of 2 s,
// a drain, 2 s of patience, 6 reads of 1.1 s); Canon 7.5 s (two writes of 2 s, 3 reads of 1.1 s).
// Opening comes before it, for each command type that is tried: up to 64 s for each interface of
// such a printer (usb_requests.h), and 1 s more for one that is busy.
#pragma once

#include <string_view>

#include "ink/ink_quantities.h"
#include "records/printer_record.h"
#include "support/byte_reader.h"
#include "support/fixed_text.h"
#include "transport/usb/usb_printer_info.h"

namespace tintoral {

// The printer that a record describes: "makerName", "devModelName" (or else "modelName"),
// "vendorID", "productID", "serialID".
USBPrinterInfo usbPrinterOfRecord(const PrinterRecord& printer);

// Asks in the way of the record's maker. An EPSON printer is asked in each command type in turn
// (D4, RC, RC1, RC0), beginning with the one in "commandType", which is then set to the one that
// answered, or removed when none did. Result: as above; 0 with "This printer is not suppoted yet."
// (as meant) for any other maker.
int USBGetInkStatus(PrinterRecord& printer, InkQuantities& record, BoundedText& status);

int usbEpsonD4GetStatusAndInkQuantities(const USBPrinterInfo& info, BoundedText& status,
                                        InkQuantities& record);

// `variant` is 2, 1 or 0 (vendors/epson.h). As meant, the reply's length is taken to be what was
// left in the printer before; it may still come in several reads, up to 2560 bytes (usb_printer.h).
int usbEpsonRCGetStatusAndInkQuantities(const USBPrinterInfo& info, BoundedText& status,
                                        InkQuantities& record, int variant);

int usbCanonGetStatusAndInkQuantities(const USBPrinterInfo& info, BoundedText& status,
                                      InkQuantities& record, std::string_view commandSet);

int usbHPGetStatusAndInkQuantities(const USBPrinterInfo& info, BoundedText& status,
                                   InkQuantities& record);

// Runs the maintenance job of an option (vendors/epson.h) on the printer of a record; an HP printer
// is cleaned whatever the option. Nothing for any other maker, and no word when it fails.
void usbNozzleOptions(const PrinterRecord& printer, int option);

// Cleans an HP printer whose command set begins with "MLC,PCL,PML" (on the MLC channel) or
// "PJL,PML". Result: 0.
int usbHPNozzleCleaning(const USBPrinterInfo& info, std::string_view commandSet);

// Runs the maintenance job of an option on the D4 control channel; `ignored` is not used. Result:
// -1, as meant, whatever came of it.
int usbEpsonD4NozzelOptions(const USBPrinterInfo& info, int ignored, int option);

// Writes the bytes in one transfer. Result: 0, also when that failed.
int USBPrinterPrintSendCommand(const USBPrinterInfo& info, Bytes bytes);

}  // namespace tintoral
