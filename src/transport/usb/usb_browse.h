// The USB printers that are attached to the computer.
#pragma once

#include <vector>

#include "transport/usb/usb_printer_info.h"

namespace tintoral {

// Fills `printers` with every printer (interface class 7, subclass 1 in any alternate setting), in
// the order of their location. A device with several such interfaces is listed once for each make
// and model that they give. One whose device ID cannot be read is listed without make and model;
// one that may not be opened is left out, and the person is told why (usb_permission.h). Each
// interface takes at most the time-outs of usb_requests.h. Result: the number of printers; 0 when
// the devices cannot be listed.
int USBPrinterBrowse(std::vector<USBPrinterInfo>& printers);

}  // namespace tintoral
