#include <array>
#include <memory>

#include "diagnostics/diagnostic_steps.h"
#include "support/clock.h"
#include "support/hex_dump.h"
#include "transport/net/riousb.h"
#include "transport/net/riousb_byte_stream.h"
#include "transport/net/riousb_ink_status.h"

namespace tintoral {
namespace {

constexpr std::chrono::seconds kDeviceIDTimeout{1};

// The printer at its base station, or nothing after the reason in the report.
std::unique_ptr<RiousbConnection> openedPrinter(const PrinterRecord& printer, BoundedText& report) {
    const std::string host = printer.text(keys::hostName);
    const auto port = portOf(printer);
    if (host.empty() || !port) {
        report.append("The record has no host name or no port of the base station.\n");
        return nullptr;
    }
    const std::string name = printer.text(keys::usbPrinterName);
    auto connection = riousbOpen(host, *port, name);
    if (!connection) reportText(report, "The base station does not open the printer", name);
    return connection;
}

void openPrinter(const PrinterRecord& printer, BoundedText& report) {
    const auto start = currentTime();
    auto connection = openedPrinter(printer, report);
    if (!connection) return;
    report.appendFormat("Opened in %lld ms, handle %08x\n", millisecondsSince(start),
                        connection->handle);
    riousbClose(std::move(connection));
}

void readDeviceID(const PrinterRecord& printer, BoundedText& report) {
    auto connection = openedPrinter(printer, report);
    if (!connection) return;
    FixedText<1025> deviceID;
    const int length = riousbGetDeviceID(*connection, deviceID, kDeviceIDTimeout);
    riousbClose(std::move(connection));
    report.appendFormat("Device ID response = %d\n", length);
    reportText(report, "Device ID", deviceID.view());
    sDumpPacket(report, asBytes(deviceID.view()));
}

// As an update asks; what it learns stays in a copy. It does not ask a printer that is not
// announced.
void askForLevels(const PrinterRecord& printer, BoundedText& report) {
    PrinterRecord copy = printer;
    copy.set(keys::active, kYes);
    StatusText status;
    InkQuantities inks;
    const int result = riousbGetInkStatus(copy, inks, status);
    reportLevels(report, result, status, inks);
}

void diagnose(const PrinterRecord& printer, BoundedText& report) {
    auto connection = openedPrinter(printer, report);
    if (!connection) return;
    RiousbByteStream stream(*connection);
    diagnoseMaker(BaseStation{stream}, printer, report);
    riousbClose(std::move(connection));
}

constexpr std::array kSteps{
    DiagnosticStep{"Opening the printer at the base station", "", openPrinter},
    DiagnosticStep{"Reading the device ID", "", readDeviceID},
    DiagnosticStep{"Asking for the levels", "", askForLevels},
    DiagnosticStep{"Running the maker's diagnosis", "", diagnose},
};

}  // namespace

DiagnosticSteps baseStationSteps() {
    return kSteps;
}

}  // namespace tintoral
