#include <array>

#include "diagnostics/diagnostic_steps.h"
#include "support/clock.h"
#include "transport/net/sockets.h"
#include "vendors/brother_exchange.h"
#include "vendors/canon_exchange.h"
#include "vendors/epson_exchange.h"
#include "vendors/hp.h"
#include "vendors/hp_exchange.h"

namespace tintoral {
namespace {

constexpr std::uint16_t kUsualPort = 9100;

std::string hostOf(const PrinterRecord& printer) {
    return printer.text(keys::ipAdrs);
}

std::uint16_t rawPortOf(const PrinterRecord& printer) {
    return portOf(printer).value_or(kUsualPort);
}

// A connection, or an invalid descriptor after words about it in the report.
UniqueFd connected(const PrinterRecord& printer, std::uint16_t port, BoundedText& report) {
    const auto start = currentTime();
    UniqueFd socket = TcpOpenConnection(hostOf(printer), port);
    report.appendFormat(socket.valid() ? "Port %d: connected in %lld ms\n"
                                       : "Port %d: no connection after %lld ms\n",
                        int{port}, millisecondsSince(start));
    return socket;
}

void connectToPort(const PrinterRecord& printer, BoundedText& report) {
    connected(printer, rawPortOf(printer), report);
}

void connectToUsualPort(const PrinterRecord& printer, BoundedText& report) {
    connected(printer, kUsualPort, report);
}

void askOverD4(const PrinterRecord& printer, BoundedText& report) {
    StatusText status;
    InkQuantities inks;
    const int result =
        tcpEpsonD4Inquiry(hostOf(printer), rawPortOf(printer), status, inks, &report);
    reportLevels(report, result, status, inks);
}

void askEpson(const PrinterRecord& printer, std::uint16_t port, int variant, BoundedText& report) {
    StatusText status;
    InkQuantities inks;
    const int result = tcpEpsonRCInquiry(hostOf(printer), port, variant, status, inks, &report);
    reportLevels(report, result, status, inks);
}

template <int variant>
void askInRemoteMode(const PrinterRecord& printer, BoundedText& report) {
    askEpson(printer, rawPortOf(printer), variant, report);
}

template <int variant>
void askOnUsualPort(const PrinterRecord& printer, BoundedText& report) {
    askEpson(printer, kUsualPort, variant, report);
}

void askCanon(const PrinterRecord& printer, BoundedText& report) {
    StatusText status;
    InkQuantities inks;
    const int result =
        tcpCanonInquiry(hostOf(printer), rawPortOf(printer), printer.text(keys::modelName),
                        printer.text(keys::usbCmd), status, inks, &report);
    reportLevels(report, result, status, inks);
}

// Behind a base station an HP printer's status comes with its announcement.
void readAnnouncedStatus(const PrinterRecord& printer, BoundedText& report) {
    StatusText status;
    InkQuantities inks;
    const std::string vStatus = printer.text(keys::usbVStatus);
    const std::string sStatus = printer.text(keys::usbS);
    if (vStatus.empty() && sStatus.empty()) {
        report.append("None was announced.\n");
        return;
    }
    const int result =
        vStatus.empty() ? parseSStatus(sStatus, inks, status) : parseVStatus(vStatus, inks, status);
    reportLevels(report, result, status, inks);
}

void diagnose(const PrinterRecord& printer, BoundedText& report) {
    const UniqueFd socket = connected(printer, rawPortOf(printer), report);
    if (socket.valid()) diagnoseMaker(TcpSocket{socket.get()}, printer, report);
}

void diagnoseHP(const PrinterRecord& printer, BoundedText& report) {
    tcpHPDiagnose(hostOf(printer), rawPortOf(printer), report);
}

void listenToBrother(const PrinterRecord& printer, BoundedText& report) {
    tcpBrotherDiagnose(hostOf(printer), rawPortOf(printer), &report);
}

constexpr std::array kSteps{
    DiagnosticStep{"Connecting to the raw port", "", connectToPort},
    DiagnosticStep{"Asking for the levels on the D4 channel", makers::epson, askOverD4},
    DiagnosticStep{"Asking for the levels in remote mode RC", makers::epson, askInRemoteMode<2>},
    DiagnosticStep{"Asking for the levels in remote mode RC1", makers::epson, askInRemoteMode<1>},
    DiagnosticStep{"Asking for the levels in remote mode RC0", makers::epson, askInRemoteMode<0>},
    DiagnosticStep{"Running the maker's diagnosis", makers::epson, diagnose},
    DiagnosticStep{"Asking for the levels", makers::canon, askCanon},
    DiagnosticStep{"Running the maker's diagnosis", makers::canon, diagnose},
    DiagnosticStep{"Reading the announced status", makers::hp, readAnnouncedStatus},
    DiagnosticStep{"Running the maker's diagnosis", makers::hp, diagnoseHP},
    DiagnosticStep{"Listening to what the printer says unasked", "Brother", listenToBrother},
};

constexpr std::array kEpsonRemoteSteps{
    DiagnosticStep{"Connecting to the raw port", makers::epson, connectToUsualPort},
    DiagnosticStep{"Asking for the levels in remote mode RC", makers::epson, askOnUsualPort<2>},
    DiagnosticStep{"Asking for the levels in remote mode RC1", makers::epson, askOnUsualPort<1>},
    DiagnosticStep{"Asking for the levels in remote mode RC0", makers::epson, askOnUsualPort<0>},
};

}  // namespace

DiagnosticSteps rawPortSteps() {
    return kSteps;
}

DiagnosticSteps epsonRemoteSteps() {
    return kEpsonRemoteSteps;
}

}  // namespace tintoral
