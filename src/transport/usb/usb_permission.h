// Why a USB printer could not be opened, in words for the person.
#pragma once

#include <string>

#include "transport/usb/libusb_pointers.h"
#include "transport/usb/usb_printer_info.h"

namespace tintoral {

// Says on standard error, once for each device and run, that the device may not be opened: its
// node, the reason, the udev rule that helps.
void reportUsbPermission(libusb_device* device);

// The same sentence for a diagnostics report: for the first device of the info's vendor and product
// ID that may not be opened; for any such printer when both IDs are 0. Empty when there is none.
std::string usbPermissionHint(const USBPrinterInfo& info);

}  // namespace tintoral
