#include <algorithm>
#include <array>
#include <memory>

#include "diagnostics/diagnostic_steps.h"
#include "netproto/bjnp.h"
#include "netproto/ipp.h"
#include "netproto/printer_mib.h"
#include "support/hex_dump.h"
#include "vendors/canon_reply.h"

namespace tintoral {
namespace {

std::string hostOf(const PrinterRecord& printer) {
    return printer.text(keys::ipAdrs);
}

// ---- Printer MIB ----

void readDescription(const PrinterRecord& printer, BoundedText& report) {
    FixedText<512> description;
    const int received = pmibGetDeviceDescription(hostOf(printer), description);
    report.appendFormat("Response = %d\n", received);
    reportText(report, "Description", description.view());
}

void readStatus(const PrinterRecord& printer, BoundedText& report) {
    StatusText status;
    StepDump dump;
    const int received = pmibGetPrinterStatus(hostOf(printer), status, &dump);
    report.appendFormat("Response = %d\n", received);
    reportText(report, "Status", status.view());
    report.append(dump.view());
}

void reportRows(const SupplyRows& rows, int count, BoundedText& report) {
    const std::size_t used = std::min(rows.size(), static_cast<std::size_t>(std::max(count, 0)));
    for (std::size_t i = 0; i < used; ++i) {
        reportText(report, std::to_string(i), rows.at(i).view());
    }
}

void readSupplies(const PrinterRecord& printer, BoundedText& report) {
    SupplyRows descriptions;
    InkQuantities inks;
    StepDump dump;
    const int count = pmibGetSupplies(hostOf(printer), descriptions, inks, &dump);
    sdumpInkQuantities(report, count, inks);
    reportRows(descriptions, count, report);
    report.append(dump.view());
}

void readColorants(const PrinterRecord& printer, BoundedText& report) {
    SupplyRows names;
    StepDump dump;
    const int count = pmibGetColorant(hostOf(printer), names, &dump);
    report.appendFormat("Colorants = %d\n", count);
    reportRows(names, count, report);
    report.append(dump.view());
}

void readHPDeviceID(const PrinterRecord& printer, BoundedText& report) {
    FixedText<1025> deviceID;
    StepDump dump;
    const int received = pmibGetHPDeviceID(hostOf(printer), deviceID, &dump);
    report.appendFormat("Response = %d\n", received);
    reportText(report, "Device ID", deviceID.view());
    report.append(dump.view());
}

void readVendorObjects1(const PrinterRecord& printer, BoundedText& report) {
    pmibGetBrotherMib1(hostOf(printer), report);
}

void readVendorObjects2(const PrinterRecord& printer, BoundedText& report) {
    pmibGetBrotherMib2(hostOf(printer), report);
}

constexpr std::array kPrinterMibSteps{
    DiagnosticStep{"Reading the description over SNMP", "", readDescription},
    DiagnosticStep{"Reading the status over SNMP", "", readStatus},
    DiagnosticStep{"Reading the supplies over SNMP", "", readSupplies},
    DiagnosticStep{"Reading the colorants over SNMP", "", readColorants},
    DiagnosticStep{"Reading the device ID over SNMP", makers::hp, readHPDeviceID},
    DiagnosticStep{"Reading the first vendor objects over SNMP", "", readVendorObjects1},
    DiagnosticStep{"Reading the second vendor objects over SNMP", "", readVendorObjects2},
};

// ---- BJNP ----

// What came has the two bytes of its length in front.
void reportBjnpText(BoundedText& report, std::string_view name, int received,
                    const BoundedText& text) {
    report.appendFormat("Response = %d\n", received);
    if (text.size() > 2) reportText(report, name, text.view().substr(2));
    sDumpPacket(report, asBytes(text.view()));
}

void readBjnpDeviceID(const PrinterRecord& printer, BoundedText& report) {
    const auto address = ipv4FromDotted(hostOf(printer));
    if (!address) {
        reportText(report, "Not asked: no dotted address", hostOf(printer));
        return;
    }
    constexpr int kIgnored = 0;
    BjnpText deviceID;
    const int received = bjnpGetDeviceID(*address, kIgnored, deviceID);
    reportBjnpText(report, "Device ID", received, deviceID);
}

void readBjnpStatus(const PrinterRecord& printer, BoundedText& report) {
    const std::string address = hostOf(printer);
    std::uint16_t session = 0;
    const int opened = bjnpSetJobInfo(address, session, "Vantrel Software", "Tintoral");
    report.appendFormat("Session response = %d, session %d\n", opened, int{session});
    BjnpText reply;
    const int received = bjnpGetStatus(address, session, reply);
    reportBjnpText(report, "Status text", received, reply);
    if (opened > 0) bjnpUdpClose(address, session);
    if (reply.empty()) return;
    StatusText status;
    InkQuantities inks;
    const int result = parseCanonReply(asBytes(reply.view()), status, inks);
    reportLevels(report, result, status, inks);
}

constexpr std::array kBjnpSteps{
    DiagnosticStep{"Reading the device ID over BJNP", "", readBjnpDeviceID},
    DiagnosticStep{"Asking for the status over BJNP", "", readBjnpStatus},
};

// ---- IPP ----

void readIppMarkers(const PrinterRecord& printer, BoundedText& report) {
    const std::string url = printer.text(keys::ippURL);
    if (url.empty()) {
        report.append("Not asked: the record has no IPP address.\n");
        return;
    }
    StatusText status;
    InkQuantities inks;
    const auto names = std::make_unique<SupplyNames>();
    const auto colors = std::make_unique<SupplyNames>();
    StepDump dump;
    const int result = ippGetPrinterStatusAndQuantities(url, status, inks, *names, *colors, &dump);
    report.append(dump.view());
    reportLevels(report, result, status, inks);
}

constexpr std::array kIppSteps{
    DiagnosticStep{"Asking for state and markers over IPP", "", readIppMarkers}};

}  // namespace

DiagnosticSteps printerMibSteps() {
    return kPrinterMibSteps;
}

DiagnosticSteps bjnpSteps() {
    return kBjnpSteps;
}

DiagnosticSteps ippSteps() {
    return kIppSteps;
}

}  // namespace tintoral
