#include "transport/usb/usb_printer.h"

#include <gtest/gtest.h>
#include <libusb.h>

#include <thread>

#include "simulators/sim_usb_printer.h"
#include "simulators/virtual_d4_epson.h"
#include "support/hardships.h"
#include "support/test_clock.h"
#include "transport/channels/d4.h"
#include "transport/channels/d4_epson.h"
#include "transport/usb/usb_browse.h"
#include "transport/usb/usb_byte_stream.h"
#include "transport/usb/usb_permission.h"

namespace tintoral {
namespace {

using namespace test;
using namespace std::chrono_literals;
using Steady = std::chrono::steady_clock;

const std::string kID = "MFG:EPSON;MDL:Stylus ";
const SimUsbSetup kUsual;

SimUsbSetup withID(const std::string& rest) {
    SimUsbSetup setup;
    setup.deviceID = kID + rest;
    return setup;
}

SimUsbSetup withSettings(std::vector<SimUsbSetting> settings) {
    SimUsbSetup setup;
    setup.settings = std::move(settings);
    return setup;
}

SimUsbSetup with(const std::function<void(SimUsbSetup&)>& change) {
    SimUsbSetup setup;
    change(setup);
    return setup;
}

ByteVector bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

class UsbPrinterTest : public testing::Test {
  protected:
    SimUsbPrinter& attach(SimUsbSetup setup = {}) { return bus_.attach(std::move(setup)); }

    // Like attach(), with a product ID that no other printer has.
    SimUsbPrinter& attachAnother(SimUsbSetup setup) {
        setup.product = ++product_;
        return attach(std::move(setup));
    }

    bool open(std::uint16_t product, std::string_view model = "Stylus C84") {
        USBPrinterInfo info;
        info.vendorID = kUsual.vendor;
        info.productID = product;
        info.maker.assign("EPSON");
        info.model.assign(model);
        msg_.clear();
        handle_ = USBPrinterOpen(&info, msg_);
        return handle_ != nullptr;
    }
    bool openInterface(std::uint16_t product = kUsual.product) {
        return open(product) && USBPrinterInterfaceOpen(*handle_, msg_) == 0;
    }

    // What is received; an error line stays in the buffer.
    std::string reply(std::size_t capacity, int retries) {
        buffer_.assign(2560, 0);
        std::size_t length = capacity;
        result_ = USBGetReply(*handle_, buffer_, length, retries);
        return std::string(asText(buffer_).substr(0, length));
    }
    std::string replyTo(std::string_view command) {
        buffer_.assign(2560, 0);
        std::size_t length = buffer_.size();
        result_ = USBSendCmdAndGetReply(*handle_, asBytes(command), buffer_, length, 0);
        return std::string(asText(buffer_).substr(0, length));
    }
    std::string read(std::size_t size) {
        buffer_.assign(size, 0);
        std::size_t length = 0;
        result_ = USBRecv(*handle_, buffer_, length, 30ms);
        return std::string(asText(buffer_).substr(0, length));
    }
    std::string_view errorLine() const { return textBeforeNul(buffer_); }

    TestClock clock_;
    ScopedClock scope_{clock_};
    SimUsbBus bus_;
    std::uint16_t product_ = 0x100;
    std::unique_ptr<USBPrinterHandle> handle_;
    FixedText<1024> msg_;
    ByteVector buffer_;
    int result_ = 0;
};

TEST_F(UsbPrinterTest, IsFoundByMakeAndModelAmongTwoOfTheSameKind) {
    const SimUsbPrinter& first = attach();
    const SimUsbPrinter& second = attach(withID("C86;"));
    ASSERT_TRUE(open(kUsual.product, "Stylus C86"));
    FixedText<1025> deviceID;
    EXPECT_EQ(USBPrinterGetDeviceID(*handle_, deviceID), kID.size() + 4);
    EXPECT_EQ(deviceID.view(), kID + "C86;");
    ASSERT_EQ(USBPrinterInterfaceOpen(*handle_, msg_), 0);
    EXPECT_EQ(USBSendCmd(*handle_, asBytes("x")), 0);
    EXPECT_EQ(second.heard(), bytesOf("x"));
    EXPECT_EQ(first.owner(), "usblp");
    const std::vector<std::string> asked{"8006000100001200", "8006030303040202",
                                         "A100000000000002"};
    EXPECT_EQ(second.controls(), asked);
}

TEST_F(UsbPrinterTest, SaysWhyItDoesNotOpen) {
    const struct {
        SimUsbSetup setup;
        const char* message;
    } rows[] = {
        {withID("c84;"), "    dealWithInterface: name isn't matched 'EPSON''Stylus c84' \n"},
        {with([](auto& s) { s.refusesDeviceID = true; }),
         "    dealWithInterface: ControlRequestTO: error 0xfffffff7 \n"},
        {with([](auto& s) { s.configured = false; }),
         "   dealWithDevice: unable to obtain the number of configurations. err = 00000000 \n"},
        {with([](auto& s) { s.activeValue = 2; }),  // which usblp keeps
         "   dealWithDevice: unable to set the configuration\n"},
        {withSettings({{.interfaceClass = 8}}), ""},
    };
    for (const auto& row : rows) {
        attachAnother(row.setup);
        EXPECT_FALSE(open(product_));
        EXPECT_EQ(msg_.view(), row.message);
    }
    {
        const NoMoreFiles limit;
        EXPECT_FALSE(open(product_));
        EXPECT_TRUE(msg_.view().starts_with("USBPrinterOpen: could not create master port, err = "))
            << msg_.view();
    }
    EXPECT_EQ(USBPrinterOpen(nullptr, msg_), nullptr);
    EXPECT_EQ(msg_.view(), "USBPrinterOpen: Error no device 0\n");
    USBPrinterHandle unmatched;
    EXPECT_EQ(USBPrinterInterfaceOpen(unmatched, msg_), 1);
    EXPECT_EQ(msg_.view(), "    USBPrinterInterfaceOpen: err printerIntf is null\n");
}

TEST_F(UsbPrinterTest, SaysThatPermissionIsMissing) {
    attachAnother({}).refuseAccess();
    const WithoutPrivileges without;
    if (!without.active()) GTEST_SKIP() << "root cannot give up its privileges here";
    testing::internal::CaptureStderr();
    std::vector<USBPrinterInfo> printers;
    EXPECT_EQ(USBPrinterBrowse(printers), 0);
    EXPECT_FALSE(open(product_));
    EXPECT_EQ(msg_.view(), "   dealWithDevice: unable to open device. ret = fffffffd\n");
    USBPrinterInfo info;
    const std::string hint = usbPermissionHint(info);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Tintoral: " + hint + "\n");
    EXPECT_NE(hint.find("/dev/bus/usb/001/002"), std::string::npos) << hint;
    info.vendorID = kUsual.vendor;
    EXPECT_EQ(usbPermissionHint(info), "");
    info.productID = product_;
    EXPECT_EQ(usbPermissionHint(info), hint);
}

TEST_F(UsbPrinterTest, TheKernelGetsItsDriverBack) {
    const struct {
        const char* what;
        SimUsbSetup setup;
        int opens;
        int sends;
        std::string_view message;
    } rows[] = {
        {"after an exchange", {}, 0, 0, ""},
        {"no pipe", withSettings({{.bulkOut = false, .bulkIn = false}}), 1, LIBUSB_ERROR_NOT_FOUND,
         "      GetNumEndpoints 0 pipes 0\n"},
        {"no bulk pipe", withSettings({{.bulkOut = false, .bulkIn = false, .interruptIn = true}}),
         0, LIBUSB_ERROR_NOT_FOUND, ""},
        {"it had none", with([](auto& s) { s.driverIsBound = false; }), 0, 0, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const SimUsbPrinter& printer = attachAnother(row.setup);
        ASSERT_TRUE(open(product_));
        const std::string driver = printer.owner();
        EXPECT_EQ(driver, row.setup.driverIsBound ? "usblp" : "");
        EXPECT_EQ(USBPrinterInterfaceOpen(*handle_, msg_), row.opens);
        EXPECT_EQ(msg_.view(), row.message);
        EXPECT_EQ(printer.owner(), row.opens == 0 ? "usbfs" : driver);
        EXPECT_EQ(USBSendCmd(*handle_, asBytes("x")), row.sends);
        USBPrinterClose(std::move(handle_));  // the interface is still open
        EXPECT_EQ(printer.owner(), driver);
    }
}

TEST_F(UsbPrinterTest, AnotherProgramsInterfaceIsAskedForTwiceAndNotTaken) {
    SimUsbPrinter& printer = attach();
    printer.holdElsewhere(true);
    EXPECT_FALSE(openInterface());
    EXPECT_EQ(msg_.view(), "    USBPrinterInterfaceOpen: USBInterfaceOpen fffffffa \n");
    EXPECT_EQ(clock_.pauses(), std::vector<std::chrono::microseconds>{1s});
    EXPECT_EQ(printer.refusedClaims(), 2);
}

TEST_F(UsbPrinterTest, ASilentPrinterEndsEveryWait) {
    SimUsbPrinter& printer = attach();
    ASSERT_TRUE(openInterface());
    const auto start = Steady::now();
    EXPECT_EQ(read(64), "");
    EXPECT_EQ(USBWaitRecv(*handle_, buffer_, 300ms), 0);
    EXPECT_EQ(reply(512, 1), "");
    EXPECT_EQ(result_, 0);
    printer.takeNoWrites(true);
    EXPECT_EQ(USBSendCmd(*handle_, asBytes("x")), LIBUSB_ERROR_TIMEOUT);
    EXPECT_EQ(USBSendCmdAsync(*handle_, asBytes("x")), 0);
    EXPECT_EQ(printer.transfersInFlight(), 0);
    // 30 + (300 - 100) ms, 2 reads, 2 writes; the pauses are skipped.
    EXPECT_GT(Steady::now() - start, 6.1s);
    EXPECT_LT(Steady::now() - start, 10s);
    printer.takeNoWrites(false);
    EXPECT_EQ(USBSendCmdAsync(*handle_, asBytes("late")), 0);
    EXPECT_EQ(printer.heard(), bytesOf("late"));
}

TEST_F(UsbPrinterTest, AStallIsClearedForTheNextTransfer) {
    SimUsbPrinter& printer = attach();
    ASSERT_TRUE(openInterface());
    printer.say(bytesOf("ready"));
    printer.haltOut();
    printer.haltIn();
    EXPECT_EQ(replyTo("xyz"), "");
    EXPECT_EQ(result_, LIBUSB_ERROR_PIPE);
    EXPECT_EQ(errorLine(), "    USBSendCmdAndGetReply: WritePipe err fffffff7 3\n");
    EXPECT_EQ(reply(512, 5), "");
    EXPECT_EQ(errorLine(), "    USBGetReply: ReadPipe err fffffff7 0 \n");
    EXPECT_EQ(replyTo("again"), "ready");
    EXPECT_EQ(result_, 0);
}

TEST_F(UsbPrinterTest, UnpluggedInTheMiddle) {
    SimUsbPrinter& printer = attach();
    ASSERT_TRUE(openInterface());
    {
        const std::jthread hand([&] {
            std::this_thread::sleep_for(100ms);
            printer.unplug();
        });
        EXPECT_EQ(replyTo("x"), "");
    }
    EXPECT_EQ(errorLine(), "    USBSendCmdAndGetReply: ReadPipe err fffffffc 0 \n");
    EXPECT_EQ(USBWaitRecv(*handle_, buffer_, 500ms), -1);
    handle_.reset();
    EXPECT_FALSE(openInterface());
}

TEST_F(UsbPrinterTest, RepliesComeInPiecesUpToTheirCapacity) {
    SimUsbPrinter& printer = attach();
    const std::string all = std::string(600, 'a') + std::string(600, 'b');
    const struct {
        const char* what;
        std::vector<std::string> transfers;
        std::size_t capacity;
        int retries;
        std::string expected;
        std::size_t reads;
    } rows[] = {
        {"whole", {all.substr(0, 512), all.substr(512)}, 2048, 2, all, 3},
        {"cut at the capacity", {all}, 700, 5, all.substr(0, 700), 2},
        {"as many reads as retries and one", {"a", "b", "c", "d"}, 512, 2, "abc", 3},
        {"an empty packet uses up a read", {"a", "", "b", "c"}, 512, 2, "ab", 3},
        {"past a small capacity only the reads end it, as meant",
         {all},
         0,
         1,
         all.substr(0, 1024),
         2},
    };
    for (const auto& row : rows) {
        ASSERT_TRUE(openInterface());
        for (const std::string& transfer : row.transfers) printer.say(bytesOf(transfer));
        const std::size_t pauses = clock_.pauses().size();
        EXPECT_EQ(reply(row.capacity, row.retries), row.expected) << row.what;
        EXPECT_EQ(clock_.pauses().size() - pauses, row.reads) << row.what;
        while (!read(512).empty()) continue;
    }
    ASSERT_TRUE(openInterface());
    printer.say(bytesOf("no longer than this"));
    EXPECT_EQ(read(9), "no longer");
    EXPECT_EQ(read(512), " than this");
    printer.say(bytesOf("in"));
    printer.say(bytesOf(" two transfers"));
    buffer_.assign(10, 0);
    EXPECT_EQ(USBWaitRecv(*handle_, buffer_, 5s), 10);
    EXPECT_EQ(asText(buffer_), "in two tra");
}

TEST_F(UsbPrinterTest, PicksTheAlternateSetting) {
    SimUsbSetup setup = withSettings({{.alternate = 0, .protocol = 1, .bulkIn = false},
                                      {.alternate = 1, .protocol = 4},
                                      {.alternate = 2, .protocol = 2}});
    const std::vector<std::string> registers{"4004070800000000", "4004490700000000",
                                             "4004010900000000"};
    const struct {
        std::uint16_t product;
        bool bridge;
    } rows[] = {{2, true}, {3, false}, {4, true}, {6, true}};
    for (const auto& row : rows) {
        setup.product = row.product;
        const SimUsbPrinter& printer = attach(setup);
        ASSERT_TRUE(openInterface(row.product));
        auto first = printer.controls();
        first.resize(registers.size());
        EXPECT_EQ(first == registers, row.bridge);
        EXPECT_EQ(printer.alternate(), row.bridge ? 1 : 2);
    }
}

TEST_F(UsbPrinterTest, WhatBrowsingFindsCanBeOpened) {
    struct Row {
        std::string said;
        std::optional<std::uint16_t> length;
        ByteVector serialSaid;
        std::string model, deviceID, serial;
    };
    const std::string cut(56, 'W');
    const Row rows[] = {
        {kID + "A;", {}, kUsual.serialDescriptor, "Stylus A", kID + "A;", "AB1234"},
        {"", {}, {}, "", "", ""},
        {kID + "B;", 65535, {5, 3, 'A', 0, 'B'}, "Stylus B", kID + "B;", "A"},
        {kID + "C;", 0, {0, 3, 'A', 0}, "Stylus C", kID + "C;", ""},
        {kID + "\xE9\x1B[2J\n;" + std::string(1, '\0') + "MDL:Z;",
         {},
         {12, 3, 0xE9, 0, 0x3D, 0xD8, 0x00, 0xDE, 0x3D, 0xD8, '\n', 0},
         "Stylus \xC3\xA9[2J",
         kID + "\xC3\xA9[2J;",
         "\xC3\xA9\xF0\x9F\x98\x80\xEF\xBF\xBD"},
        {kID + cut + std::string(600, '\xFC'), {}, {2, 3}, "Stylus " + cut, kID + cut, ""},
    };
    for (const Row& row : rows) {
        SimUsbSetup setup = withID("");
        setup.deviceID = row.said;
        setup.deviceIDLength = row.length;
        setup.serialDescriptor = row.serialSaid;
        attach(setup);
    }
    // The interfaces of IPP over USB, of which one refuses the device ID; what is no printer.
    attach(withSettings({{},
                         {.interface = 1, .interfaceClass = 255},
                         {.interface = 1, .alternate = 1, .protocol = 4},
                         {.interface = 2}}));
    attach(withSettings({{.subclass = 2}}));
    std::vector<USBPrinterInfo> printers;
    ASSERT_EQ(USBPrinterBrowse(printers), static_cast<int>(std::size(rows)) + 1);
    std::uint32_t index = 0;
    for (const Row& row : rows) {
        const USBPrinterInfo& found = printers[index];
        EXPECT_EQ(found.index, static_cast<std::int32_t>(index));
        EXPECT_EQ(found.locationID, 0x01000000U | ++index << 20);
        EXPECT_EQ(found.model.view(), row.model);
        EXPECT_TRUE(found.deviceID.view().starts_with(row.deviceID)) << found.deviceID.view();
        EXPECT_EQ(found.serialNumber.view(), row.serial);
        handle_ = USBPrinterOpen(&found, msg_);
        ASSERT_NE(handle_, nullptr) << row.model;
        EXPECT_EQ(handle_->deviceID.view(), found.deviceID.view());
    }
}

TEST_F(UsbPrinterTest, SpeaksIeee12844) {
    VirtualD4Epson epson;
    attach().answerWith([&](Bytes heard) { return epson.transfersFor(heard); });
    ASSERT_TRUE(openInterface());
    UsbByteStream stream(*handle_);
    buffer_.assign(kD4PayloadRoom, 0);
    EXPECT_GT(d4GetEpsonInkStatus(UsbPrinter{stream}, buffer_, nullptr), 0);
    EXPECT_TRUE(asText(buffer_).starts_with("@BDC ST2"));
    EXPECT_FALSE(epson.inPacketMode());
}

}  // namespace
}  // namespace tintoral
