// One USB printer: found by its make and model, opened, written to and read from (libusb 1.0).
//
//   USBPrinterOpen -> USBPrinterInterfaceOpen -> send, receive ... -> USBPrinterInterfaceClose
//   -> USBPrinterClose
//
// The device ID is there after USBPrinterOpen(); it is read without claiming the interface
// (usb_requests.h). The bulk pipes need the claim: the kernel's driver (usblp) is detached with it
// and given back with it, also after a failure and when the handle goes. An interface that another
// program has claimed is left to it.
//
// Nothing is logged, but for a device that may not be opened for want of permission, of which the
// person is told once (usb_permission.h). Each step that fails writes a line into `msg`, or into
// the reply buffer, so that who prints the reply prints the error in its place. Result codes are
// libusb's: 0 or a negative number, printed as 32 bits in hex (fffffffa: busy). A pipe that stalls
// is cleared, so that the next transfer works.
//
// Every wait is finite:
//   control requests   usb_requests.h
//   bulk write         2 s
//   bulk read          1 s unless the caller says otherwise
//   interface busy     one more try after 1 s
// A printer that says nothing thus holds USBGetReply() for 1.1 s with each of its reads.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "support/byte_reader.h"
#include "support/fixed_text.h"
#include "transport/usb/libusb_pointers.h"
#include "transport/usb/usb_interfaces.h"
#include "transport/usb/usb_printer_info.h"

namespace tintoral {

inline constexpr std::chrono::milliseconds kUsbWriteTimeout{2000};
inline constexpr std::chrono::milliseconds kUsbReadTimeout{1000};

// For a read that only clears away what a printer may still have to say.
inline constexpr std::chrono::milliseconds kUsbDrainTimeout{200};

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

    bool interfaceOpen = false;
    BulkPipes pipes;
    // The rest of a packet of which a read wanted only a part, for the next read.
    std::vector<std::uint8_t> unread;
};

// Opens the first device of the info's vendor and product ID with a printer-class interface whose
// device ID gives exactly the info's maker and model. Two printers of the same model cannot be told
// apart. The device's first configuration is set only when another one is active, which fails while
// a driver such as usblp is bound to the device. A vendor ID of 04B8 with product ID 2, 4 or 6 is a
// USB-to-parallel bridge, which is initialised first and used in alternate setting 1.
//
// Result: null when there is no such printer, with the last failure in `msg`. Where the devices
// cannot even be listed, a handle without a printer interface, as meant: opening its interface
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

// One bulk read; `length` becomes the bytes received. Nothing received until the time is up is
// success with 0 bytes.
int USBRecv(USBPrinterHandle& handle, MutableBytes buffer, std::size_t& length,
            std::chrono::milliseconds timeout = kUsbReadTimeout);

// Reads, each after a pause of 100 ms, until the buffer is full or the time is up. Result: bytes
// received, 0 when none came in time; -1 when a read failed before any came.
int USBWaitRecv(USBPrinterHandle& handle, MutableBytes buffer, std::chrono::milliseconds timeout);

// Reads pieces of at most 512 bytes, each after a pause of 100 ms, until `length` bytes have come
// or `retries` + 1 reads are done. A read that times out is one of 0 bytes; once the reply has
// begun it ends it. The first read is of 512 bytes even when `length` is less, and a reply that has
// gone past `length` is read on, both as meant; no read goes past the end of `reply`. `length`
// becomes the bytes received. A read that fails ends the reply with its error line, which does not
// count. Result: of the last read.
int USBGetReply(USBPrinterHandle& handle, MutableBytes reply, std::size_t& length, int retries);

// Writes the command and, after 100 ms, reads as USBGetReply(), but with pauses of 120 ms. A write
// that fails leaves its error line in `reply`, a length of 0 and its result.
int USBSendCmdAndGetReply(USBPrinterHandle& handle, Bytes command, MutableBytes reply,
                          std::size_t& length, int retries);

// As USBSendCmd(), through libusb's event loop. Result: of the start; 0 once the write has ended,
// however it has, as meant.
int USBSendCmdAsync(USBPrinterHandle& handle, Bytes bytes);

// USB printers are not asked for the parallel port's status lines. Result: always 0.
int USBGetCentronicsStatus();

}  // namespace tintoral
