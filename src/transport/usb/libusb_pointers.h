// libusb's objects, released by their owners.
#pragma once

#include <memory>

struct libusb_config_descriptor;
struct libusb_context;
struct libusb_device;
struct libusb_device_handle;

namespace tintoral {

struct LibusbRelease {
    void operator()(libusb_config_descriptor* configuration) const;
    void operator()(libusb_context* context) const;
    void operator()(libusb_device* device) const;
    void operator()(libusb_device_handle* handle) const;
};

template <class T>
using LibusbPointer = std::unique_ptr<T, LibusbRelease>;

}  // namespace tintoral
