#include "transport/usb/usb_byte_stream.h"

#include <libusb.h>

namespace tintoral {

void UsbByteStream::send(Bytes bytes) {
    USBSendCmd(handle_, bytes);
}

int UsbByteStream::receive(MutableBytes buffer, std::chrono::milliseconds timeout) {
    std::size_t length = 0;
    const int result = USBRecv(handle_, buffer, length, timeout);
    const bool received = result == 0 || result == LIBUSB_ERROR_OVERFLOW;
    return received ? static_cast<int>(length) : -1;
}

int UsbByteStream::waitReceive(MutableBytes buffer, std::chrono::milliseconds timeout) {
    return USBWaitRecv(handle_, buffer, timeout);
}

}  // namespace tintoral
