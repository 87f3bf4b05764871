#include <gtest/gtest.h>

#include "diagnostics/diagnosis.h"
#include "simulators/sim_usb_printer.h"
#include "simulators/virtual_d4_epson.h"
#include "simulators/virtual_epson.h"
#include "simulators/virtual_mlc_hp.h"
#include "support/hardships.h"
#include "support/test_clock.h"

namespace tintoral {
namespace {

using namespace test;

class UsbDiagnosisTest : public testing::Test {
  protected:
    // With further fields of its device ID.
    SimUsbPrinter& attach(const std::string& maker = "EPSON", const std::string& fields = "") {
        SimUsbSetup setup;
        setup.deviceID = "MFG:" + maker + ";CMD:ESCPL2;MDL:X1;CLS:PRINTER;" + fields;
        record_ = {{"serverType", "USB"},
                   {"kind", "USB"},
                   {"makerName", maker},
                   {"modelName", "X1"},
                   {"commandType", "RC"},
                   {"vendorID", int{setup.vendor}},
                   {"productID", int{setup.product}}};
        return bus_.attach(setup);
    }

    // The phase of that number, from 1.
    std::string run(std::size_t number) {
        std::string report;
        diagnosticPhases(record_).at(number - 1).run(report);
        return report;
    }

    static bool holds(std::string_view text, std::string_view part) {
        return text.find(part) != std::string_view::npos;
    }

    TestClock clock_;
    ScopedClock scope_{clock_};
    SimUsbBus bus_;
    PrinterRecord record_;
};

TEST_F(UsbDiagnosisTest, EpsonIsReadInEachWayAndGivenBack) {
    VirtualEpson epson;
    SimUsbPrinter& usb = attach();
    usb.answerWith([&](Bytes heard) -> std::vector<ByteVector> {
        ByteVector answer = epson.onReceive(heard);
        if (answer.empty()) return {};
        return {std::move(answer)};
    });
    const std::string opening = run(1);
    EXPECT_TRUE(holds(opening, "Device ID = MFG:EPSON;CMD:ESCPL2")) << opening;
    EXPECT_TRUE(holds(opening, "could be claimed"));
    EXPECT_TRUE(holds(run(3), "Result = 4\nStatus = Idle\n"));
    const std::string diagnosis = run(6);
    EXPECT_TRUE(holds(diagnosis, "Epson RC response = ")) << diagnosis;
    EXPECT_TRUE(holds(diagnosis, "Number of Ink levels = 4"));
    EXPECT_TRUE(epson.jobs().empty());
    EXPECT_EQ(usb.owner(), "usblp");
}

TEST_F(UsbDiagnosisTest, EpsonIsReadOnTheD4Channel) {
    VirtualD4Epson epson;
    attach().answerWith([&](Bytes heard) { return epson.transfersFor(heard); });
    record_.set(keys::commandType, "D4");
    const std::string levels = run(2);
    EXPECT_TRUE(holds(levels, "Result = 4\nStatus = Idle\n")) << levels;
    const std::string diagnosis = run(6);
    EXPECT_TRUE(holds(diagnosis, "Epson D4 response = ")) << diagnosis;
    EXPECT_TRUE(holds(diagnosis, "Number of Ink levels = 4"));
    EXPECT_EQ(epson.commands(), (std::vector<std::string>{"st", "st"}));
    EXPECT_FALSE(epson.inPacketMode());
}

TEST_F(UsbDiagnosisTest, HPIsReadInItsDeviceIDAndOnTheMlcChannel) {
    VirtualMlcHp hp;
    SimUsbPrinter& usb = attach("HP", "VSTATUS:$HB0$NC0,ff,DN,IDLE,CUT,K0,KP037,C0,CP064;");
    usb.answerWith([&](Bytes heard) { return hp.transfersFor(heard); });
    record_.set(keys::usbCmd, "MLC,PCL,PML");
    EXPECT_TRUE(holds(run(2), "Result = 2\nStatus = Idle\n"));
    const std::string diagnosis = run(3);
    EXPECT_TRUE(holds(diagnosis, "MLC/PML Modelname\n0000  80 00 00 04")) << diagnosis;
    EXPECT_TRUE(holds(diagnosis, "ck (45)\n"));
    EXPECT_EQ(hp.requests().size(), 2U);
    EXPECT_EQ(usb.owner(), "usblp");
}

TEST_F(UsbDiagnosisTest, BrotherIsListenedTo) {
    SimUsbPrinter& usb = attach("Brother");
    usb.say({'R', 'E', 'A', 'D', 'Y'});
    const std::string report = run(2);
    EXPECT_TRUE(holds(report, "Brother status = 005\n0000  52 45 41 44 59")) << report;
    EXPECT_TRUE(usb.heard().empty());
}

TEST_F(UsbDiagnosisTest, DeviceIDIsReadWhileAnotherProgramHasThePrinter) {
    attach().holdElsewhere(true);
    const std::string report = run(1);
    EXPECT_TRUE(holds(report, "Device ID = MFG:EPSON")) << report;
    EXPECT_TRUE(holds(report, "USBInterfaceOpen fffffffa"));
}

TEST_F(UsbDiagnosisTest, MissingPermissionIsExplained) {
    attach().refuseAccess();
    const WithoutPrivileges without;
    if (!without.active()) GTEST_SKIP() << "root cannot give up its privileges here";
    const std::string report = run(1);
    EXPECT_TRUE(holds(report, "no permission for /dev/bus/usb/001/002")) << report;
}

}  // namespace
}  // namespace tintoral
