// `tintoral-virtual-usb COMMAND [ARGUMENT...]`: runs the command with virtual printers plugged into
// its USB, and ends with its status. A program in it sees them when its LD_PRELOAD is what this
// tool leaves in TINTORAL_USB_PRELOAD; for all others nothing changes.
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>

#include "simulators/sim_usb_printer.h"
#include "simulators/virtual_canon.h"
#include "simulators/virtual_d4_epson.h"
#include "simulators/virtual_epson.h"
#include "simulators/virtual_mlc_hp.h"
#include "support/fixed_text.h"
#include "vendors/hp.h"

namespace tintoral::test {
namespace {

SimUsbAnswer epson() {
    EpsonSetup setup;
    setup.inks = {{0, 66}, {1, 48}, {2, 14}, {3, 59}};
    setup.cleaningUsesInk = true;
    auto printer = std::make_shared<VirtualEpson>(std::move(setup));
    return
        [printer](Bytes heard) -> std::vector<ByteVector> { return {printer->onReceive(heard)}; };
}

SimUsbAnswer d4Epson() {
    D4EpsonSetup setup;
    setup.inks = {{0, 88}, {1, 71}, {2, 53}, {3, 36}, {4, 19}, {5, 62}};
    auto printer = std::make_shared<VirtualD4Epson>(std::move(setup));
    return [printer](Bytes heard) { return printer->transfersFor(heard); };
}

SimUsbAnswer canon() {
    CanonSetup setup{.inks = {{"BK", 57}, {"M", 83}, {"C", 26}, {"Y", 41}},
                     .cleaningUsesInk = true};
    auto printer = std::make_shared<VirtualCanon>(std::move(setup));
    return
        [printer](Bytes heard) -> std::vector<ByteVector> { return {printer->onReceive(heard)}; };
}

ByteVector cleaningRequest() {
    std::array<std::uint8_t, 128> command{};
    const std::size_t size = mkHPCleaningCmd("MLC,PCL,PML", command);
    return {command.begin(), command.begin() + static_cast<std::ptrdiff_t>(size)};
}

// Empty answers would be packets of length 0 that the printer never sends.
SimUsbAnswer withoutEmptyTransfers(SimUsbAnswer answer) {
    return [answer = std::move(answer)](Bytes heard) {
        auto transfers = answer(heard);
        std::erase_if(transfers, [](const ByteVector& transfer) { return transfer.empty(); });
        return transfers;
    };
}

SimUsbPrinter& plugIn(SimUsbBus& bus, std::uint16_t vendor, std::uint16_t product,
                      std::string deviceID) {
    SimUsbSetup setup;
    setup.vendor = vendor;
    setup.product = product;
    setup.deviceID = std::move(deviceID);
    return bus.attach(std::move(setup));
}

// HP's levels are in its device ID; each cleaning takes 2 percent.
std::string hpDeviceID(int cleanings) {
    FixedText<256> deviceID;
    deviceID.format(
        "MFG:HP;MDL:Deskjet 940c;CMD:MLC,PCL,PML;CLS:PRINTER;SN:MY31A0;"
        "VSTATUS:$HB0$NC0,ff,DN,IDLE,CUT,K0,KP%03d,C0,CP%03d;",
        std::max(37 - 2 * cleanings, 0), std::max(64 - 2 * cleanings, 0));
    return std::string(deviceID.view());
}

void plugInHP(SimUsbBus& bus) {
    SimUsbPrinter& usb = plugIn(bus, 0x03F0, 0x1204, hpDeviceID(0));
    auto printer = std::make_shared<VirtualMlcHp>();
    usb.answerWith([printer, &usb](Bytes heard) {
        auto transfers = printer->transfersFor(heard);
        const auto cleanings = std::ranges::count(printer->requests(), cleaningRequest());
        usb.changeDeviceID(hpDeviceID(static_cast<int>(cleanings)));
        return transfers;
    });
}

void plugInAll(SimUsbBus& bus) {
    plugIn(bus, 0x04B8, 0x0005, "MFG:EPSON;CMD:ESCPL2,BDC;MDL:Stylus C84;CLS:PRINTER;SERN:F1A001;")
        .answerWith(withoutEmptyTransfers(epson()));
    plugIn(bus, 0x04B8, 0x0801,
           "MFG:EPSON;CMD:ESCPL2,BDC,D4;MDL:Stylus Photo R200;CLS:PRINTER;SERN:F1A002;")
        .answerWith(withoutEmptyTransfers(d4Epson()));
    plugIn(bus, 0x04A9, 0x10B6, "MFG:Canon;CMD:BJL,BJRaster3,BSCCe;MDL:iP4200;CLS:PRINTER;")
        .answerWith(withoutEmptyTransfers(canon()));
    plugInHP(bus);
}

// Result: the status of the command, 127 when it cannot be started.
int runCommand(char** command) {
    pid_t child = 0;
    if (posix_spawnp(&child, command[0], nullptr, nullptr, command, environ) != 0) {
        std::perror(command[0]);
        return 127;
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

}  // namespace
}  // namespace tintoral::test

int main(int argc, char** argv) {
    using namespace tintoral::test;
    if (argc < 2) {
        std::fputs("usage: tintoral-virtual-usb COMMAND [ARGUMENT...]\n", stderr);
        return 2;
    }
    SimUsbBus bus;
    plugInAll(bus);
    setenv("TINTORAL_USB_PRELOAD", TINTORAL_USB_PRELOAD, 1);
    return runCommand(argv + 1);
}
