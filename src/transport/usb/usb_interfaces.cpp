#include "transport/usb/usb_interfaces.h"

#include <libusb.h>

#include <algorithm>
#include <span>

namespace tintoral {
namespace {

constexpr std::uint8_t kIppOverUsb = 4;

using Settings = std::span<const libusb_interface_descriptor>;

Settings settingsOf(const libusb_interface& interface) {
    return {interface.altsetting, static_cast<std::size_t>(std::max(interface.num_altsetting, 0))};
}

std::span<const libusb_interface> interfacesOf(const libusb_config_descriptor& configuration) {
    return {configuration.interface, configuration.bNumInterfaces};
}

const libusb_endpoint_descriptor* findBulkPipe(const libusb_interface_descriptor& setting,
                                               std::uint8_t direction) {
    const std::span endpoints(setting.endpoint, setting.bNumEndpoints);
    const auto found = std::ranges::find_if(endpoints, [&](const auto& endpoint) {
        return (endpoint.bmAttributes & LIBUSB_TRANSFER_TYPE_MASK) == LIBUSB_TRANSFER_TYPE_BULK &&
               (endpoint.bEndpointAddress & LIBUSB_ENDPOINT_DIR_MASK) == direction;
    });
    return found == endpoints.end() ? nullptr : &*found;
}

bool suitsBest(const libusb_interface_descriptor& setting) {
    const BulkPipes pipes = findBulkPipes(setting);
    return setting.bInterfaceProtocol != kIppOverUsb && pipes.in != 0 && pipes.out != 0;
}

const libusb_interface_descriptor* printerSetting(Settings settings,
                                                  std::optional<std::uint8_t> subclass) {
    const libusb_interface_descriptor* found = nullptr;
    for (const libusb_interface_descriptor& setting : settings) {
        if (setting.bInterfaceClass != LIBUSB_CLASS_PRINTER) continue;
        if (subclass && setting.bInterfaceSubClass != *subclass) continue;
        if (suitsBest(setting)) return &setting;
        if (found == nullptr) found = &setting;
    }
    return found;
}

}  // namespace

std::vector<USBPrinterInterface> printerInterfaces(const libusb_config_descriptor& configuration,
                                                   libusb_device_handle* device,
                                                   std::optional<std::uint8_t> subclass) {
    std::vector<USBPrinterInterface> found;
    for (const libusb_interface& interface : interfacesOf(configuration)) {
        if (const auto* setting = printerSetting(settingsOf(interface), subclass)) {
            found.push_back({device, setting->bInterfaceNumber, setting->bAlternateSetting});
        }
    }
    return found;
}

LibusbPointer<libusb_config_descriptor> activeConfiguration(libusb_device* device) {
    libusb_config_descriptor* descriptor = nullptr;
    libusb_get_active_config_descriptor(device, &descriptor);
    return LibusbPointer<libusb_config_descriptor>(descriptor);
}

bool isPrinter(libusb_device* device) {
    const auto configuration = activeConfiguration(device);
    return configuration != nullptr &&
           !printerInterfaces(*configuration, nullptr, kPrinterSubclass).empty();
}

const libusb_interface_descriptor* findSetting(const libusb_config_descriptor& configuration,
                                               const USBPrinterInterface& wanted) {
    for (const libusb_interface& interface : interfacesOf(configuration)) {
        for (const libusb_interface_descriptor& setting : settingsOf(interface)) {
            if (setting.bInterfaceNumber == wanted.number &&
                setting.bAlternateSetting == wanted.alternateSetting)
                return &setting;
        }
    }
    return nullptr;
}

BulkPipes findBulkPipes(const libusb_interface_descriptor& setting) {
    const auto* in = findBulkPipe(setting, LIBUSB_ENDPOINT_IN);
    const auto* out = findBulkPipe(setting, LIBUSB_ENDPOINT_OUT);
    BulkPipes pipes;
    if (out != nullptr) pipes.out = out->bEndpointAddress;
    if (in != nullptr) pipes.in = in->bEndpointAddress;
    if (in != nullptr) pipes.inPacketSize = in->wMaxPacketSize;
    return pipes;
}

}  // namespace tintoral
