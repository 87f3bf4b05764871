#include "transport/usb/usb_printer.h"

#include <libusb.h>

#include <algorithm>
#include <array>

#include "support/clock.h"
#include "transport/usb/usb_permission.h"
#include "transport/usb/usb_requests.h"

namespace tintoral {
namespace {

using namespace std::chrono_literals;

constexpr auto kPauseBeforeSecondClaim = 1s;
constexpr std::uint16_t kBridgeVendor = 0x04B8;
constexpr std::array<std::uint16_t, 3> kBridgeProducts{2, 4, 6};
constexpr std::uint8_t kBridgeSetting = 1;

using Configuration = LibusbPointer<libusb_config_descriptor>;

// The configuration of index 0.
Configuration firstConfiguration(libusb_device* device) {
    libusb_config_descriptor* descriptor = nullptr;
    libusb_get_config_descriptor(device, 0, &descriptor);
    return Configuration(descriptor);
}

std::unique_ptr<USBPrinterHandle> newHandle(const USBPrinterInfo& info) {
    auto handle = std::make_unique<USBPrinterHandle>();
    handle->model = info.model;
    handle->maker = info.maker;
    handle->serialNumber.assign(info.serialNumber.view());
    handle->vendorID = info.vendorID;
    handle->productID = info.productID;
    return handle;
}

bool isBridge(const USBPrinterHandle& handle) {
    return handle.vendorID == kBridgeVendor &&
           std::ranges::find(kBridgeProducts, handle.productID) != kBridgeProducts.end();
}

// The kernel resets an interface that is released to setting 0, so a setting is only noted here and
// made when the interface is claimed.
void prepareBridge(USBPrinterInterface& printerInterface,
                   const libusb_config_descriptor& configuration) {
    USBPrinterInterface wanted = printerInterface;
    wanted.alternateSetting = kBridgeSetting;
    if (findSetting(configuration, wanted) != nullptr) printerInterface = wanted;
    USS725Initialize(printerInterface);
}

bool dealWithInterface(USBPrinterHandle& handle, const USBPrinterInterface& printerInterface,
                       BoundedText& msg) {
    readSerialNumber(printerInterface);  // asked for and not used, as meant
    const int result = readDeviceID(printerInterface, handle.deviceID);
    if (result < 0) {
        msg.format("    dealWithInterface: ControlRequestTO: error %#x \n",
                   static_cast<unsigned>(result));
        return false;
    }
    const PrinterNames names(handle.deviceID.view());
    if (names.make.view() == handle.maker.view() && names.model.view() == handle.model.view()) {
        handle.printerInterface = printerInterface;
        return true;
    }
    handle.deviceID.clear();
    msg.format("    dealWithInterface: name isn't matched '%s''%s' \n", names.make.c_str(),
               names.model.c_str());
    return false;
}

bool setConfiguration(libusb_device_handle* device, int value) {
    int active = 0;
    return libusb_get_configuration(device, &active) == 0 &&
           (active == value || libusb_set_configuration(device, value) == 0);
}

// Null on failure.
Configuration configure(libusb_device_handle* handle, libusb_device* device, BoundedText& msg) {
    libusb_device_descriptor descriptor{};
    const int result = libusb_get_device_descriptor(device, &descriptor);
    if (result != 0 || descriptor.bNumConfigurations == 0) {
        msg.format(
            "   dealWithDevice: unable to obtain the number of configurations. err = %08x \n",
            static_cast<unsigned>(result));
        return nullptr;
    }
    Configuration configuration = firstConfiguration(device);
    if (configuration == nullptr) {
        msg.assign("   dealWithDevice:unable to get config descriptor for index 0\n");
        return nullptr;
    }
    if (!setConfiguration(handle, configuration->bConfigurationValue)) {
        msg.assign("   dealWithDevice: unable to set the configuration\n");
        return nullptr;
    }
    return configuration;
}

bool dealWithInterfaces(USBPrinterHandle& handle, libusb_device* device, BoundedText& msg) {
    libusb_device_handle* const opened = handle.deviceInterface.get();
    const Configuration configuration = configure(opened, device, msg);
    if (configuration == nullptr) return false;
    for (USBPrinterInterface& printerInterface : printerInterfaces(*configuration, opened)) {
        if (isBridge(handle)) prepareBridge(printerInterface, *configuration);
        if (dealWithInterface(handle, printerInterface, msg)) return true;
    }
    return false;
}

bool dealWithDevice(USBPrinterHandle& handle, libusb_device* device, BoundedText& msg) {
    const int result = openDevice(device, handle.deviceInterface);
    if (result != 0) {
        msg.format("   dealWithDevice: unable to open device. ret = %08x\n",
                   static_cast<unsigned>(result));
        if (result == LIBUSB_ERROR_ACCESS) reportUsbPermission(device);
        return false;
    }
    if (dealWithInterfaces(handle, device, msg)) return true;
    handle.deviceInterface.reset();
    return false;
}

bool hasIDs(libusb_device* device, const USBPrinterHandle& handle) {
    libusb_device_descriptor descriptor{};
    return libusb_get_device_descriptor(device, &descriptor) == 0 &&
           descriptor.idVendor == handle.vendorID && descriptor.idProduct == handle.productID;
}

// libusb detaches and claims in one step in which the kernel spares other programs, and gives back
// whatever was detached when the claim ends. It is told to only where there is a driver.
int claim(const USBPrinterInterface& printerInterface) {
    libusb_device_handle* const device = printerInterface.device;
    const bool hasDriver = libusb_kernel_driver_active(device, printerInterface.number) == 1;
    libusb_set_auto_detach_kernel_driver(device, hasDriver ? 1 : 0);
    const int result = libusb_claim_interface(device, printerInterface.number);
    if (result != 0 && hasDriver) libusb_attach_kernel_driver(device, printerInterface.number);
    return result;
}

int claimOrWait(const USBPrinterInterface& printerInterface) {
    const int result = claim(printerInterface);
    if (result != LIBUSB_ERROR_BUSY) return result;
    pauseFor(kPauseBeforeSecondClaim);
    return claim(printerInterface);
}

void useSetting(USBPrinterInterface& printerInterface) {
    if (printerInterface.alternateSetting != 0 &&
        libusb_set_interface_alt_setting(printerInterface.device, printerInterface.number,
                                         printerInterface.alternateSetting) != 0)
        printerInterface.alternateSetting = 0;
}

// Result: the number of endpoints.
int findPipes(USBPrinterHandle& handle) {
    const auto configuration = firstConfiguration(libusb_get_device(handle.deviceInterface.get()));
    if (configuration == nullptr) return 0;
    const auto* setting = findSetting(*configuration, *handle.printerInterface);
    if (setting == nullptr) return 0;
    handle.pipes = findBulkPipes(*setting);
    return setting->bNumEndpoints;
}

}  // namespace

USBPrinterHandle::~USBPrinterHandle() {
    USBPrinterInterfaceClose(*this);
}

std::unique_ptr<USBPrinterHandle> USBPrinterOpen(const USBPrinterInfo* info, BoundedText& msg) {
    if (info == nullptr) {
        msg.format("USBPrinterOpen: Error no device %d\n", 0);
        return nullptr;
    }
    auto handle = newHandle(*info);
    if (const int result = newContext(handle->masterPort); result != 0) {
        msg.format("USBPrinterOpen: could not create master port, err = %08x\n",
                   static_cast<unsigned>(result));
        return nullptr;
    }
    const UsbDeviceList list(handle->masterPort.get());
    if (!list.valid()) return handle;
    for (libusb_device* device : list.devices()) {
        if (hasIDs(device, *handle) && dealWithDevice(*handle, device, msg)) return handle;
    }
    return nullptr;
}

void USBPrinterClose(std::unique_ptr<USBPrinterHandle> handle) {
    handle.reset();
}

int USBPrinterInterfaceOpen(USBPrinterHandle& handle, BoundedText& msg) {
    if (!handle.printerInterface) {
        msg.assign("    USBPrinterInterfaceOpen: err printerIntf is null\n");
        return 1;
    }
    handle.pipes = {};
    handle.unread.clear();
    const int result = claimOrWait(*handle.printerInterface);
    if (result != 0) {
        msg.format("    USBPrinterInterfaceOpen: USBInterfaceOpen %x \n",
                   static_cast<unsigned>(result));
        return 1;
    }
    handle.interfaceOpen = true;
    useSetting(*handle.printerInterface);
    if (const int endpoints = findPipes(handle); endpoints == 0) {
        msg.format("      GetNumEndpoints %d pipes %x\n", endpoints, 0U);
        USBPrinterInterfaceClose(handle);
        return 1;
    }
    return 0;
}

int USBPrinterInterfaceClose(USBPrinterHandle& handle) {
    if (!handle.interfaceOpen) return LIBUSB_ERROR_NOT_FOUND;
    handle.interfaceOpen = false;
    return libusb_release_interface(handle.deviceInterface.get(), handle.printerInterface->number);
}

std::size_t USBPrinterGetDeviceID(const USBPrinterHandle& handle, BoundedText& out) {
    out.assign(handle.deviceID.view());
    return out.size();
}

int USBGetCentronicsStatus() {
    return 0;
}

}  // namespace tintoral
