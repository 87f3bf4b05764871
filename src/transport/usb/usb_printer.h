// One USB printer: found by its make and model, opened, written to and read from (libusb 1.0).
//
//   USBPrinterOpen -> USBPrinterInterfaceOpen -> send, receive ... -> USBPrinterInterfaceClose
//   -> USBPrinterClose
//
//   request          bmRequestType  bRequest  wValue              wIndex               wLength
//   device ID        A1             00        0                   interface << 8       512
//   serial number    80             06        0300 | iSerial      0403                 514
//   bridge register  40             04        register << 8       0                    0
//                                               | value
//
// Public sources: USB Device Class Definition for Printing Devices 1.1 (GET_DEVICE_ID), IEEE 1284.
//
// The device ID is read without claiming the interface; the kernel allows that request beside a
// driver or another program. The bulk pipes need the claim: the kernel's driver (usblp) is detached
// with it and given back with it, also after a failure and when the handle goes. An interface that
// another program has claimed is left to it.
//
// Nothing is logged, but for a device that may not be opened for want of permission, of which the
// person is told once (usb_permission.h). Each step that fails writes a line into `msg`, or into
// the reply buffer, so that who prints the reply prints the error in its place. Result codes are
// libusb's: 0 or a negative number, printed as 32 bits in hex (fffffffa: busy).
//
// Every wait is finite:
//   device ID              60 s            serial number      2 s, 1 s for the device descriptor
//   bulk write             2 s             bulk read          1 s unless the caller says otherwise
//   interface busy         one more try after 1 s
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "support/byte_reader.h"
#include "support/fixed_text.h"
#include "transport/usb/libusb_pointers.h"
#include "transport/usb/usb_printer_info.h"

namespace tintoral {

inline constexpr std::chrono::milliseconds kUsbWriteTimeout{2000};
inline constexpr std::chrono::milliseconds kUsbReadTimeout{1000};

// Enough for a printer that has something left to say; a silent one costs no more.
inline constexpr std::chrono::milliseconds kUsbDrainTimeout{200};

// A printer-class interface of an open device, and the alternate setting that is used of it. The
// device belongs to the handle.
struct USBPrinterInterface {
    libusb_device_handle* device = nullptr;
    std::uint8_t number = 0;
    std::uint8_t alternateSetting = 0;
};

// One open printer. Its end closes all that is open.
struct USBPrinterHandle {
    USBPrinterHandle() = default;
    ~USBPrinterHandle();
    USBPrinterHandle(const USBPrinterHandle&) = delete;
    USBPrinterHandle& operator=(const USBPrinterHandle&) = delete;

    LibusbPointer<libusb_context> masterPort;
    LibusbPointer<libusb_device_handle> deviceInterface;
    std::optional<USBPrinterInterface> printerInterface;
    FixedText<64> model;
    FixedText<64> maker;
    FixedText<1025> deviceID;
    FixedText<132> serialNumber;
    std::uint16_t vendorID = 0;
    std::uint16_t productID = 0;
    std::uint8_t bulkInPipe = 0;  // endpoint addresses; 0: none
    std::uint8_t bulkOutPipe = 0;
    bool interfaceOpen = false;

    // A transfer takes whole packets; what of a packet was more than a read asked for is kept for
    // the next read.
    std::size_t bulkInPacketSize = 0;
    std::vector<std::uint8_t> unread;
};

// Opens the first device of the info's vendor and product ID that has a printer-class interface
// (class 7) whose device ID gives exactly the info's maker and model. Two printers of the same
// model cannot be told apart. The device's first configuration is set when another one is active,
// which fails while a driver (usblp) is bound; an active one is left alone. A vendor ID 04B8 with
// product ID 2, 4 or 6 is a USB-to-parallel bridge and is initialised first.
//
// Result: null when there is no such printer, with the last failure in `msg`. Where the devices
// cannot even be listed, a handle without a printer interface, as meant: opening the interface then
// fails.
std::unique_ptr<USBPrinterHandle> USBPrinterOpen(const USBPrinterInfo* info, BoundedText& msg);

void USBPrinterClose(std::unique_ptr<USBPrinterHandle> handle);

// Claims the interface and finds its bulk pipes, the first of each direction. Result: 0, also when
// it has no bulk pipe; 1 on failure, with nothing left claimed.
int USBPrinterInterfaceOpen(USBPrinterHandle& handle, BoundedText& msg);

// Releases the interface and gives the kernel's driver back. Result: of the release; not found when
// the interface is not open.
int USBPrinterInterfaceClose(USBPrinterHandle& handle);

// Copies the device ID that the printer was found by. Result: bytes copied.
std::size_t USBPrinterGetDeviceID(const USBPrinterHandle& handle, BoundedText& out);

// One bulk write. Result: 0; timed out when the printer did not take all of it in time.
int USBSendCmd(USBPrinterHandle& handle, Bytes bytes);

// One bulk read of at most buffer.size() bytes; `length` becomes the bytes received. A printer that
// has nothing to say until the time is up gives 0 bytes and success.
int USBRecv(USBPrinterHandle& handle, MutableBytes buffer, std::size_t& length,
            std::chrono::milliseconds timeout = kUsbReadTimeout);

// Reads, after a pause of 100 ms each, until the buffer is full or the time is up. Result: bytes
// received, 0 when none came in time; -1 when a read failed before any came.
int USBWaitRecv(USBPrinterHandle& handle, MutableBytes buffer, std::chrono::milliseconds timeout);

// Reads pieces of at most 512 bytes after a pause of 100 ms each, until `length` bytes have come or
// `retries` + 1 reads are done. A read that times out counts as one of 0 bytes; after the reply has
// begun it ends it. The first read is of 512 bytes however small `length` is, as meant; none goes
// past the end of `reply`. `length` becomes the bytes received. A read that fails ends the reply
// with its error line, which does not count. Result: of the last read.
int USBGetReply(USBPrinterHandle& handle, MutableBytes reply, std::size_t& length, int retries);

// Writes the command, then reads as USBGetReply() but with pauses of 120 ms after one of 100 ms. A
// write that fails leaves its error line in `reply`, a length of 0 and its result.
int USBSendCmdAndGetReply(USBPrinterHandle& handle, Bytes command, MutableBytes reply,
                          std::size_t& length, int retries);

// As USBSendCmd(), through libusb's event loop. Result: of the start; 0 once it has ended, however
// it has, as meant.
int USBSendCmdAsync(USBPrinterHandle& handle, Bytes bytes);

// Reads the serial number's string descriptor: unit 0 holds its header, then UTF-16 in host order.
// `length` becomes the bytes received, header included, at most those of the buffer; 0 when there
// is no serial number or the descriptor's own length is 0 or more than the buffer. Result: of the
// last request; -1 for a null interface.
int USBDeviceRequest(const USBPrinterInterface* printerInterface, std::span<char16_t> buffer,
                     std::size_t& length, std::chrono::milliseconds timeout);

// The parallel port's status lines have no meaning here. Result: always 0.
int USBGetCentronicsStatus();

// Brings the bridge chip (USS-725) into its usual mode: registers 8, 7 and 9, until one fails.
// Result: of the last write.
int USS725Initialize(const USBPrinterInterface& printerInterface);

int USS725SetRegister(const USBPrinterInterface& printerInterface, std::uint8_t reg,
                      std::uint8_t value);

}  // namespace tintoral
