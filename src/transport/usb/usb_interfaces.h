// The printer-class interfaces of a USB device, as its descriptors show them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "transport/usb/libusb_pointers.h"

struct libusb_interface_descriptor;

namespace tintoral {

// A printer-class interface of an open device, and the alternate setting that is used of it. The
// device belongs to somebody else.
struct USBPrinterInterface {
    libusb_device_handle* device = nullptr;
    std::uint8_t number = 0;
    std::uint8_t alternateSetting = 0;
};

// Endpoint addresses; 0: none.
struct BulkPipes {
    std::uint8_t out = 0;
    std::uint8_t in = 0;
    std::uint16_t inPacketSize = 0;  // bytes
};

// The interfaces with class 7 (printer) in any alternate setting; with a subclass given, only those
// of that subclass. The setting chosen is the first with bulk pipes in both directions that is not
// IPP over USB (protocol 4), else the first of the class.
std::vector<USBPrinterInterface> printerInterfaces(
    const libusb_config_descriptor& configuration, libusb_device_handle* device,
    std::optional<std::uint8_t> subclass = std::nullopt);

inline constexpr std::uint8_t kPrinterSubclass = 1;

// The configuration that is active; null when the device has none.
LibusbPointer<libusb_config_descriptor> activeConfiguration(libusb_device* device);

// True for a device with an interface of class 7, subclass 1 in its active configuration.
bool isPrinter(libusb_device* device);

// The setting's descriptor, which the configuration owns; null when it has no such setting.
const libusb_interface_descriptor* findSetting(const libusb_config_descriptor& configuration,
                                               const USBPrinterInterface& wanted);

// The first bulk endpoint of each direction.
BulkPipes findBulkPipes(const libusb_interface_descriptor& setting);

}  // namespace tintoral
