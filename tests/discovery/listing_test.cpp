#include "discovery/listing.h"

#include <gtest/gtest.h>

#include "support/test_clock.h"

namespace tintoral {
namespace {

TEST(Listing, FieldsOfTheDeviceIDKeepTheirSemicolonAndShortKeysLoseTwoCharacters) {
    struct Row {
        std::string deviceID;
        std::string commandSet;
        std::string serial;
    };
    const std::string long200(200, 'x');
    const Row rows[] = {
        {"MFG:EPSON;CMD:ESCPL2,BDC;SERN:AB1234;SN:99;", "ESCPL2,BDC;", "AB1234;"},
        {"SN:AB1234;", "", "1234;"},
        {"SN:A;CMD:;", ";", ""},
        {"SN:AB;", "", ";"},
        {"CMD:BJL", "", "own"},
        {"SERN:1234", "", ""},
        {"CMD:" + long200 + ";SN:" + long200 + ";", std::string(128, 'x'), std::string(128, 'x')},
        {"CMD:" + std::string(127, 'x') + "\xC3\xA9;", std::string(127, 'x'), "own"},
    };
    for (const Row& row : rows) {
        USBPrinterInfo printer;
        printer.deviceID.assign(row.deviceID);
        printer.serialNumber.assign("own");
        const PrinterRecordPtr record = recordOfUsbPrinter(printer);
        EXPECT_EQ(record->text("usb_CMD"), row.commandSet) << row.deviceID;
        EXPECT_EQ(record->text("serialID"), row.serial) << row.deviceID;
    }
}

TEST(Listing, RecordsOfBothKinds) {
    test::TestClock clock;
    const ScopedClock scoped(clock);
    USBPrinterInfo usb;
    usb.maker.assign("EPSON");
    usb.model.assign("epson Stylus C84");
    usb.vendorID = 0x04B8;
    usb.productID = 0xFFFF;
    usb.locationID = 0xFA120000;
    EXPECT_EQ(*recordOfUsbPrinter(usb), (PrinterRecord{{"printerName", "EPSON Stylus C84"},
                                                       {"makerAndModelName", "EPSON Stylus C84"},
                                                       {"makerName", "EPSON"},
                                                       {"modelName", "Stylus C84"},
                                                       {"devModelName", "epson Stylus C84"},
                                                       {"vendorID", 0x04B8},
                                                       {"productID", 0xFFFF},
                                                       {"location", std::int64_t{0xFA120000}},
                                                       {"serialID", ""},
                                                       {"usb_CMD", ""},
                                                       {"printerId", "USB:EPSON Stylus C84"},
                                                       {"kind", "USB"},
                                                       {"serverType", "USB"},
                                                       {"Date", currentDate()}}));
    BjnpPrinter bjnp;
    bjnp.address = {10, 77, 0, 255};
    bjnp.model.assign("MP560");
    bjnp.commandSet.assign("BJL");
    EXPECT_EQ(*recordOfBjnpPrinter(bjnp), (PrinterRecord{{"printerName", "Canon MP560"},
                                                         {"makerAndModelName", "Canon MP560"},
                                                         {"makerName", "Canon"},
                                                         {"modelName", "MP560"},
                                                         {"ipAdrs", "10.77.0.255"},
                                                         {"usb_CMD", "BJL"},
                                                         {"printerId", "BJNP:Canon MP560"},
                                                         {"kind", "bjnp:10.77.0.255"},
                                                         {"serverType", "Network"},
                                                         {"serviceType", "_bjnp._udp."},
                                                         {"Date", currentDate()}}));
}

}  // namespace
}  // namespace tintoral
