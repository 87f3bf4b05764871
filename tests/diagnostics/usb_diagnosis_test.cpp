#include <gtest/gtest.h>

#include "diagnostics/diagnosis.h"
#include "support/hardships.h"
#include "support/sim_usb_printer.h"
#include "support/test_clock.h"
#include "support/virtual_epson.h"

namespace tintoral {
namespace {

using namespace test;

class UsbDiagnosisTest : public testing::Test {
  protected:
    SimUsbPrinter& attach() {
        const SimUsbSetup setup;
        record_ = {{"serverType", "USB"},
                   {"kind", "USB"},
                   {"makerName", "EPSON"},
                   {"modelName", "Stylus C84"},
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
