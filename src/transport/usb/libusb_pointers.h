// libusb's objects, released by their owners.
#pragma once

#include <memory>
#include <span>

struct libusb_config_descriptor;
struct libusb_context;
struct libusb_device;
struct libusb_device_handle;
struct libusb_transfer;

namespace tintoral {

struct LibusbRelease {
    void operator()(libusb_config_descriptor* configuration) const;
    void operator()(libusb_context* context) const;
    void operator()(libusb_device_handle* handle) const;
    void operator()(libusb_transfer* transfer) const;
};

template <class T>
using LibusbPointer = std::unique_ptr<T, LibusbRelease>;

// Both give libusb's result and fill the pointer on success.
int newContext(LibusbPointer<libusb_context>& context);
int openDevice(libusb_device* device, LibusbPointer<libusb_device_handle>& handle);

// The devices that are attached now, for as long as the list lives; the context outlives it.
class UsbDeviceList {
  public:
    explicit UsbDeviceList(libusb_context* context);
    ~UsbDeviceList();
    UsbDeviceList(const UsbDeviceList&) = delete;
    UsbDeviceList& operator=(const UsbDeviceList&) = delete;

    // False when the devices could not be listed; there are none then.
    bool valid() const { return list_ != nullptr; }
    std::span<libusb_device* const> devices() const { return {list_, count_}; }

  private:
    libusb_device** list_ = nullptr;
    std::size_t count_ = 0;
};

}  // namespace tintoral
