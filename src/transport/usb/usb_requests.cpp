#include "transport/usb/usb_requests.h"

#include <libusb.h>

#include <algorithm>
#include <array>
#include <vector>

#include "support/byte_reader.h"
#include "support/text.h"
#include "transport/usb/device_id.h"

namespace tintoral {
namespace {

using std::chrono::milliseconds;

constexpr std::size_t kNameSize = 64;
constexpr std::size_t kLengthPrefix = 2;
constexpr std::size_t kLongestSerialNumber = 127;
constexpr std::size_t kSerialNumberIndexAt = 16;   // in the device descriptor
constexpr std::uint16_t kSerialLanguage = 0x0403;  // no known language, as meant
constexpr std::size_t kLongestRequest = 0xFFFF;
constexpr milliseconds kDeviceIDTimeout{60000};
constexpr milliseconds kSerialTimeout{2000};
constexpr milliseconds kBridgeTimeout{2000};

struct ControlRequest {
    std::uint8_t requestType;
    std::uint8_t request;
    std::uint16_t value = 0;
    std::uint16_t index = 0;
};

constexpr ControlRequest kGetDescriptor{0x80, LIBUSB_REQUEST_GET_DESCRIPTOR};
constexpr ControlRequest kGetDeviceID{0xA1, 0};
constexpr ControlRequest kSetBridgeRegister{0x40, 4};

constexpr ControlRequest withValue(ControlRequest request, int high, int low) {
    request.value = static_cast<std::uint16_t>(high << 8 | low);
    return request;
}

constexpr ControlRequest withIndex(ControlRequest request, int index) {
    request.index = static_cast<std::uint16_t>(index);
    return request;
}

// Result: bytes transferred, or the error.
int ask(libusb_device_handle* device, ControlRequest request, MutableBytes answer,
        milliseconds timeout) {
    return libusb_control_transfer(
        device, request.requestType, request.request, request.value, request.index, answer.data(),
        static_cast<std::uint16_t>(answer.size()), static_cast<unsigned>(timeout.count()));
}

// Result: the index of the serial number's string, 0 for none, or the error.
int serialNumberIndex(libusb_device_handle* device, milliseconds timeout) {
    std::array<std::uint8_t, LIBUSB_DT_DEVICE_SIZE> descriptor{};
    const int result =
        ask(device, withValue(kGetDescriptor, LIBUSB_DT_DEVICE, 0), descriptor, timeout);
    return result < 0 ? result : descriptor[kSerialNumberIndexAt];
}

void decodeUnits(Bytes bytes, std::span<char16_t> units) {
    ByteReader reader(bytes);
    for (char16_t& unit : units) {
        if (reader.remaining() < sizeof unit) return;
        unit = reader.le16();
    }
}

}  // namespace

PrinterNames::PrinterNames(std::string_view deviceID) {
    backendGetMakeModel(deviceID, make, model, kNameSize);
    // What was cut to size may end inside a character.
    make.assign(cleanText(make.view()));
    model.assign(cleanText(model.view()));
}

int readDeviceID(const USBPrinterInterface& printerInterface, FixedText<1025>& deviceID) {
    std::array<std::uint8_t, 512> answer{};
    const int result =
        ask(printerInterface.device, withIndex(kGetDeviceID, printerInterface.number << 8), answer,
            kDeviceIDTimeout);
    const auto transferred = static_cast<std::size_t>(std::max(result, 0));
    ByteReader reader(Bytes(answer).first(transferred));
    reader.skip(kLengthPrefix);
    deviceID.assign(cleanText(textBeforeNul(reader.rest())));
    return result;
}

int USBDeviceRequest(const USBPrinterInterface* printerInterface, std::span<char16_t> buffer,
                     std::size_t& length, milliseconds timeout) {
    length = 0;
    if (printerInterface == nullptr) return -1;
    const int index = serialNumberIndex(printerInterface->device, timeout);
    if (index <= 0) return index;
    std::vector<std::uint8_t> descriptor(std::min(buffer.size_bytes(), kLongestRequest));
    const auto request =
        withIndex(withValue(kGetDescriptor, LIBUSB_DT_STRING, index), kSerialLanguage);
    const int result = ask(printerInterface->device, request, descriptor, timeout);
    if (result < 1) return result;
    if (descriptor[0] == 0 || descriptor[0] > descriptor.size()) return 0;
    length = static_cast<std::size_t>(result);
    decodeUnits(Bytes(descriptor).first(length), buffer);
    return 0;
}

std::string readSerialNumber(const USBPrinterInterface& printerInterface) {
    std::array<char16_t, 257> descriptor{};
    std::size_t length = 0;
    USBDeviceRequest(&printerInterface, descriptor, length, kSerialTimeout);
    const std::u16string_view units(descriptor.data(), length / sizeof(char16_t));
    if (units.empty()) return {};
    return cleanText(utf8FromUtf16(units.substr(1)).substr(0, kLongestSerialNumber));
}

int USS725SetRegister(const USBPrinterInterface& printerInterface, std::uint8_t reg,
                      std::uint8_t value) {
    return ask(printerInterface.device, withValue(kSetBridgeRegister, reg, value), {},
               kBridgeTimeout);
}

int USS725Initialize(const USBPrinterInterface& printerInterface) {
    constexpr struct {
        std::uint8_t reg;
        std::uint8_t value;
    } kWrites[] = {{8, 0x07}, {7, 0x49}, {9, 0x01}};
    int result = 0;
    for (const auto& write : kWrites) {
        result = USS725SetRegister(printerInterface, write.reg, write.value);
        if (result != 0) break;
    }
    return result;
}

}  // namespace tintoral
