// What can be asked of a USB printer on its default pipe, without claiming an interface: the kernel
// allows these requests beside a driver or another program.
//
//   request          bmRequestType  bRequest  wValue             wIndex          wLength  time-out
//   device ID        A1             00        0                  interface << 8  512      60 s
//   device           80             06        0100               0               18       caller's
//   serial number    80             06        0300 | its index   0403            caller's caller's
//   bridge register  40             04        register << 8      0               0        2 s
//                                               | value
//
// Public sources: USB 2.0, 9.4.3; USB Device Class Definition for Printing Devices 1.1, 4.2.1.
// Results are libusb's: 0 or more, or a negative error.
#pragma once

#include <chrono>
#include <span>
#include <string>
#include <string_view>

#include "support/fixed_text.h"
#include "transport/usb/usb_interfaces.h"

namespace tintoral {

// Make and model as the device ID gives them (device_id.h), clean. Whoever lists printers and
// whoever opens one splits the device ID here, so that the same printer gets the same names.
struct PrinterNames {
    explicit PrinterNames(std::string_view deviceID);

    FixedText<64> make;
    FixedText<64> model;
};

// Asks for the IEEE 1284 device ID. `deviceID` gets the clean text behind the two length bytes, up
// to the first NUL and whatever the length says; it is empty on failure. Result: bytes transferred,
// or the error.
int readDeviceID(const USBPrinterInterface& printerInterface, FixedText<1025>& deviceID);

// Reads the serial number's string descriptor: unit 0 holds its header, then UTF-16 in host order.
// `length` becomes the bytes received, header included; 0 when the device names no serial number or
// the descriptor's own length is 0 or more than the buffer. Result: 0 or the error; -1 for a null
// interface.
int USBDeviceRequest(const USBPrinterInterface* printerInterface, std::span<char16_t> buffer,
                     std::size_t& length, std::chrono::milliseconds timeout);

// The serial number as clean UTF-8 of at most 127 bytes, asked for with a time-out of 2 s for each
// request; empty when there is none.
std::string readSerialNumber(const USBPrinterInterface& printerInterface);

// Writes one register of a USB-to-parallel bridge chip (USS-725).
int USS725SetRegister(const USBPrinterInterface& printerInterface, std::uint8_t reg,
                      std::uint8_t value);

// Writes 07 into register 8, 49 into 7 and 01 into 9, until one fails. Result: of the last write.
int USS725Initialize(const USBPrinterInterface& printerInterface);

}  // namespace tintoral
