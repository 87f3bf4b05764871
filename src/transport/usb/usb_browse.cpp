#include "transport/usb/usb_browse.h"

#include <libusb.h>

#include <algorithm>
#include <array>
#include <iterator>

#include "transport/usb/libusb_pointers.h"
#include "transport/usb/usb_interfaces.h"
#include "transport/usb/usb_permission.h"
#include "transport/usb/usb_requests.h"

namespace tintoral {
namespace {

constexpr int kHighestNibble = 20;

// The bus in the high byte, then a nibble for each port from the root hub on.
std::uint32_t locationOf(libusb_device* device) {
    std::array<std::uint8_t, 7> ports{};
    const int count = libusb_get_port_numbers(device, ports.data(), static_cast<int>(ports.size()));
    std::uint32_t location = std::uint32_t{libusb_get_bus_number(device)} << 24;
    for (int i = 0, shift = kHighestNibble; i < count && shift >= 0; ++i, shift -= 4) {
        location |= (ports[static_cast<std::size_t>(i)] & 0xFU) << shift;
    }
    return location;
}

USBPrinterInfo describe(libusb_device* device, const USBPrinterInterface& printerInterface) {
    libusb_device_descriptor descriptor{};
    libusb_get_device_descriptor(device, &descriptor);
    USBPrinterInfo info;
    info.locationID = locationOf(device);
    info.vendorID = descriptor.idVendor;
    info.productID = descriptor.idProduct;
    info.serialNumber.assign(readSerialNumber(printerInterface));
    readDeviceID(printerInterface, info.deviceID);
    const PrinterNames names(info.deviceID.view());
    info.maker = names.make;
    info.model = names.model;
    return info;
}

std::vector<USBPrinterInfo> describeAll(libusb_device* device, libusb_device_handle* handle) {
    std::vector<USBPrinterInfo> printers;
    const auto configuration = activeConfiguration(device);
    if (configuration == nullptr) return printers;
    for (const auto& printerInterface :
         printerInterfaces(*configuration, handle, kPrinterSubclass)) {
        printers.push_back(describe(device, printerInterface));
    }
    return printers;
}

bool haveSameNames(const USBPrinterInfo& a, const USBPrinterInfo& b) {
    return a.maker.view() == b.maker.view() && a.model.view() == b.model.view();
}

// A printer with IPP over USB has the interface several times over, and not all of them give the
// device ID.
void dropRepetitions(std::vector<USBPrinterInfo>& printers) {
    std::stable_partition(printers.begin(), printers.end(),
                          [](const USBPrinterInfo& printer) { return !printer.deviceID.empty(); });
    for (std::size_t kept = 0; kept < printers.size(); ++kept) {
        const auto rest = printers.begin() + static_cast<std::ptrdiff_t>(kept) + 1;
        const auto repeated =
            std::remove_if(rest, printers.end(), [&](const USBPrinterInfo& other) {
                return other.deviceID.empty() || haveSameNames(other, printers[kept]);
            });
        printers.erase(repeated, printers.end());
    }
}

std::vector<USBPrinterInfo> printersOf(libusb_device* device) {
    LibusbPointer<libusb_device_handle> handle;
    const int result = openDevice(device, handle);
    if (result == LIBUSB_ERROR_ACCESS) reportUsbPermission(device);
    if (result != 0) return {};
    std::vector<USBPrinterInfo> printers = describeAll(device, handle.get());
    dropRepetitions(printers);
    return printers;
}

// libusb's order is another one each time something is plugged in.
void sortAndNumber(std::vector<USBPrinterInfo>& printers) {
    std::ranges::stable_sort(printers, {}, &USBPrinterInfo::locationID);
    std::int32_t index = 0;
    for (USBPrinterInfo& printer : printers) printer.index = index++;
}

}  // namespace

int USBPrinterBrowse(std::vector<USBPrinterInfo>& printers) {
    printers.clear();
    LibusbPointer<libusb_context> context;
    if (newContext(context) != 0) return 0;
    const UsbDeviceList list(context.get());
    for (libusb_device* device : list.devices()) {
        if (isPrinter(device)) std::ranges::copy(printersOf(device), std::back_inserter(printers));
    }
    sortAndNumber(printers);
    return static_cast<int>(printers.size());
}

}  // namespace tintoral
