#include "transport/usb/usb_printer.h"

#include <gtest/gtest.h>
#include <libusb.h>

#include "support/sim_usb_printer.h"

namespace tintoral {
namespace {

using namespace test;

TEST(Smoke, Opens) {
    SimUsbBus bus;
    SimUsbPrinter& printer = bus.attach();
    USBPrinterInfo info;
    info.vendorID = 0x04B8;
    info.productID = 5;
    info.maker.assign("EPSON");
    info.model.assign("Stylus C84");
    FixedText<1024> msg;
    auto handle = USBPrinterOpen(&info, msg);
    ASSERT_NE(handle, nullptr) << msg.view();
    EXPECT_EQ(printer.owner(), "usblp");
    EXPECT_EQ(USBPrinterInterfaceOpen(*handle, msg), 0) << msg.view();
    EXPECT_EQ(printer.owner(), "usbfs");
    EXPECT_EQ(USBPrinterInterfaceClose(*handle), 0);
    EXPECT_EQ(printer.owner(), "usblp");
}

}  // namespace
}  // namespace tintoral
