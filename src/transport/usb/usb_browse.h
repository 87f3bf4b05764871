// The USB printers that are attached to the computer.
#pragma once

#include <vector>

#include "transport/usb/usb_printer_info.h"

namespace tintoral {

// Fills `printers` with every printer (interface class 7, subclass 1 in any alternate setting), in
// libusb's order. A device with several such interfaces is listed once for each name that it gives.
// One whose device ID cannot be read is listed without make and model; one that may not be opened
// is left out, and the person is told why (usb_permission.h). Result: their number; 0 when the
// devices cannot be listed.
int USBPrinterBrowse(std::vector<USBPrinterInfo>& printers);

}  // namespace tintoral
