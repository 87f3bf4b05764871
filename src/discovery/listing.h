// Printers that are looked for on demand, as printer records: those on USB and those that answered
// a BJNP discovery. Pure; the looking is transport/usb/usb_browse.h and netproto/bjnp.h.
#pragma once

#include <string>
#include <string_view>

#include "netproto/bjnp_packets.h"
#include "records/printer_record.h"
#include "transport/usb/usb_printer_info.h"

namespace tintoral {

// The record of a USB printer. Its "serialID" is by serialOf(), or the device's own serial number
// where the device ID holds none.
PrinterRecordPtr recordOfUsbPrinter(const USBPrinterInfo& printer);

// The record of a BJNP printer.
PrinterRecordPtr recordOfBjnpPrinter(const BjnpPrinter& printer);

// Fields of an IEEE 1284 device ID, as records keep them: at most 128 bytes, their closing ";"
// included. Empty for a field without one.

// The command set, after "CMD:".
std::string commandSetOf(std::string_view deviceID);

// What follows "SERN:" or, failing that, "SN:"; after "SN:" without its first two characters, as
// meant: stored identities hold it so.
struct SerialField {
    bool found;
    std::string serial;
};
SerialField serialOf(std::string_view deviceID);

}  // namespace tintoral
