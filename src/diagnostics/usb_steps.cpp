#include <array>
#include <memory>

#include "diagnostics/diagnostic_steps.h"
#include "transport/usb/usb_byte_stream.h"
#include "transport/usb/usb_ink_status.h"
#include "transport/usb/usb_permission.h"
#include "transport/usb/usb_printer.h"

namespace tintoral {
namespace {

using OpenPrinter = std::unique_ptr<USBPrinterHandle>;

// The reason why a step cannot go on, and what the person can do about it.
void reportFailure(const USBPrinterInfo& info, const BoundedText& message, BoundedText& report) {
    report.append("The printer cannot be opened: ");
    report.append(message.empty() ? "no such printer is attached" : message.view());
    report.append("\n");
    report.append(usbPermissionHint(info));
    report.append("\n");
}

// The printer with its interface claimed, or nothing after the reason in the report.
OpenPrinter openedPrinter(const USBPrinterInfo& info, BoundedText& report) {
    FixedText<1024> message;
    OpenPrinter printer = USBPrinterOpen(&info, message);
    if (printer && USBPrinterInterfaceOpen(*printer, message) == 0) return printer;
    reportFailure(info, message, report);
    return nullptr;
}

// The device ID can be read although another program has claimed the interface.
void readDeviceID(const PrinterRecord& printer, BoundedText& report) {
    const USBPrinterInfo info = usbPrinterOfRecord(printer);
    FixedText<1024> message;
    const OpenPrinter opened = USBPrinterOpen(&info, message);
    if (!opened || !opened->printerInterface) {
        reportFailure(info, message, report);
        return;
    }
    FixedText<1025> deviceID;
    USBPrinterGetDeviceID(*opened, deviceID);
    report.appendFormat("Vendor %04x, product %04x\n", opened->vendorID, opened->productID);
    reportText(report, "Device ID", deviceID.view());
    if (USBPrinterInterfaceOpen(*opened, message) == 0) {
        report.append("The interface could be claimed.\n");
    } else {
        reportFailure(info, message, report);
    }
}

void askOverD4(const PrinterRecord& printer, BoundedText& report) {
    StatusText status;
    InkQuantities inks;
    const int result =
        usbEpsonD4GetStatusAndInkQuantities(usbPrinterOfRecord(printer), status, inks);
    reportLevels(report, result, status, inks);
}

template <int variant>
void askInRemoteMode(const PrinterRecord& printer, BoundedText& report) {
    StatusText status;
    InkQuantities inks;
    const int result =
        usbEpsonRCGetStatusAndInkQuantities(usbPrinterOfRecord(printer), status, inks, variant);
    reportLevels(report, result, status, inks);
}

void askCanon(const PrinterRecord& printer, BoundedText& report) {
    StatusText status;
    InkQuantities inks;
    const int result = usbCanonGetStatusAndInkQuantities(usbPrinterOfRecord(printer), status, inks,
                                                         printer.text(keys::usbCmd));
    reportLevels(report, result, status, inks);
}

void askHP(const PrinterRecord& printer, BoundedText& report) {
    StatusText status;
    InkQuantities inks;
    const int result = usbHPGetStatusAndInkQuantities(usbPrinterOfRecord(printer), status, inks);
    reportLevels(report, result, status, inks);
}

void diagnose(const PrinterRecord& printer, BoundedText& report) {
    const OpenPrinter opened = openedPrinter(usbPrinterOfRecord(printer), report);
    if (!opened) return;
    UsbByteStream stream(*opened);
    diagnoseMaker(UsbPrinter{stream}, printer, report);
}

constexpr std::array kSteps{
    DiagnosticStep{"Opening the printer and reading its device ID", "", readDeviceID},
    DiagnosticStep{"Asking for the levels on the D4 channel", makers::epson, askOverD4},
    DiagnosticStep{"Asking for the levels in remote mode RC", makers::epson, askInRemoteMode<2>},
    DiagnosticStep{"Asking for the levels in remote mode RC1", makers::epson, askInRemoteMode<1>},
    DiagnosticStep{"Asking for the levels in remote mode RC0", makers::epson, askInRemoteMode<0>},
    DiagnosticStep{"Asking for the levels", makers::canon, askCanon},
    DiagnosticStep{"Reading the levels in the device ID", makers::hp, askHP},
    DiagnosticStep{"Running the maker's diagnosis", "", diagnose},
};

}  // namespace

DiagnosticSteps usbSteps() {
    return kSteps;
}

}  // namespace tintoral
