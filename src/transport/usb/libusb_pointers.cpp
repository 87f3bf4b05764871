#include "transport/usb/libusb_pointers.h"

#include <libusb.h>

namespace tintoral {

void LibusbRelease::operator()(libusb_config_descriptor* configuration) const {
    libusb_free_config_descriptor(configuration);
}

void LibusbRelease::operator()(libusb_context* context) const {
    libusb_exit(context);
}

void LibusbRelease::operator()(libusb_device_handle* handle) const {
    libusb_close(handle);
}

void LibusbRelease::operator()(libusb_transfer* transfer) const {
    libusb_free_transfer(transfer);
}

int newContext(LibusbPointer<libusb_context>& context) {
    libusb_context* opened = nullptr;
    const int result = libusb_init(&opened);
    if (result == 0) context.reset(opened);
    return result;
}

int openDevice(libusb_device* device, LibusbPointer<libusb_device_handle>& handle) {
    libusb_device_handle* opened = nullptr;
    const int result = libusb_open(device, &opened);
    if (result == 0) handle.reset(opened);
    return result;
}

UsbDeviceList::UsbDeviceList(libusb_context* context) {
    const ssize_t count = libusb_get_device_list(context, &list_);
    if (count > 0) count_ = static_cast<std::size_t>(count);
}

UsbDeviceList::~UsbDeviceList() {
    if (list_ != nullptr) libusb_free_device_list(list_, 1);
}

}  // namespace tintoral
