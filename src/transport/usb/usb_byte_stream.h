// A USB printer as the stream of transport-neutral I/O.
#pragma once

#include "transport/usb/usb_printer.h"
#include "vendors/transport_io.h"

namespace tintoral {

class UsbByteStream final : public ByteStream {
  public:
    // The handle's interface is open and stays so for as long as the stream is used.
    explicit UsbByteStream(USBPrinterHandle& handle) : handle_(handle) {}

    void send(Bytes bytes) override;
    int receive(MutableBytes buffer, std::chrono::milliseconds timeout) override;
    int waitReceive(MutableBytes buffer, std::chrono::milliseconds timeout) override;

  private:
    USBPrinterHandle& handle_;
};

}  // namespace tintoral
