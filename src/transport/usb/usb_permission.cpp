#include "transport/usb/usb_permission.h"

#include <libusb.h>

#include <set>

#include "support/report.h"
#include "transport/usb/libusb_pointers.h"
#include "transport/usb/usb_interfaces.h"

namespace tintoral {
namespace {

std::string sentenceAbout(libusb_device* device) {
    libusb_device_descriptor descriptor{};
    libusb_get_device_descriptor(device, &descriptor);
    FixedText<256> sentence;
    sentence.format(
        "the USB printer %04x:%04x cannot be opened: no permission for /dev/bus/usb/%03u/%03u; "
        "the udev rule 70-tintoral-usb-printers.rules gives it (see docs/usb-permissions.md)",
        descriptor.idVendor, descriptor.idProduct, libusb_get_bus_number(device),
        libusb_get_device_address(device));
    return std::string(sentence.view());
}

bool isMeant(libusb_device* device, const USBPrinterInfo& info) {
    if (info.vendorID == 0 && info.productID == 0) return isPrinter(device);
    libusb_device_descriptor descriptor{};
    return libusb_get_device_descriptor(device, &descriptor) == 0 &&
           descriptor.idVendor == info.vendorID && descriptor.idProduct == info.productID;
}

bool mayNotBeOpened(libusb_device* device) {
    LibusbPointer<libusb_device_handle> handle;
    return openDevice(device, handle) == LIBUSB_ERROR_ACCESS;
}

}  // namespace

void reportUsbPermission(libusb_device* device) {
    static std::set<std::string> reported;
    const std::string sentence = sentenceAbout(device);
    if (reported.insert(sentence).second) reportLine(sentence);
}

std::string usbPermissionHint(const USBPrinterInfo& info) {
    LibusbPointer<libusb_context> context;
    if (newContext(context) != 0) return {};
    const UsbDeviceList list(context.get());
    for (libusb_device* device : list.devices()) {
        if (isMeant(device, info) && mayNotBeOpened(device)) return sentenceAbout(device);
    }
    return {};
}

}  // namespace tintoral
