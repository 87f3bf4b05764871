#include "monitor/update_cycle.h"

#include <array>
#include <string>

#include "netproto/record_bjnp.h"
#include "netproto/record_ipp.h"
#include "netproto/record_supplies.h"
#include "records/ink_dict.h"
#include "support/text.h"
#include "transport/net/raw_port.h"
#include "transport/net/riousb_ink_status.h"
#include "transport/usb/usb_ink_status.h"
#include "vendors/hp.h"

namespace tintoral {
namespace {

constexpr int kUnreachable = -1;

int askPrinterMib(PrinterRecord& printer, InkQuantities& inks, BoundedText& status) {
    return inkStatusOfRecordByPMib(printer, printer.text(keys::ipAdrs), inks, status);
}

// Behind a base station an HP printer's status comes with its announcement.
int readAnnouncedHPStatus(PrinterRecord& printer, InkQuantities& inks, BoundedText& status) {
    const std::string vStatus = printer.text(keys::usbVStatus);
    if (!vStatus.empty()) return parseVStatus(vStatus, inks, status);
    const std::string sStatus = printer.text(keys::usbS);
    return sStatus.empty() ? 0 : parseSStatus(sStatus, inks, status);
}

int askAirPortRawPort(PrinterRecord& printer, InkQuantities& inks, BoundedText& status) {
    const bool isHP = printer.text(keys::makerName) == makers::hp;
    return isHP ? readAnnouncedHPStatus(printer, inks, status)
                : port9100GetInkStatus(printer, inks, status);
}

int askAirPortLpd(PrinterRecord& printer, InkQuantities& inks, BoundedText& status) {
    return printer.text(keys::makerName) == makers::epson
               ? port9100GetEpsonRemoteInkStatus(printer, inks, status)
               : 0;
}

int askNetworkRawPort(PrinterRecord& printer, InkQuantities& inks, BoundedText& status) {
    const bool isHP = printer.text(keys::makerName) == makers::hp;
    return isHP ? askPrinterMib(printer, inks, status)
                : port9100GetInkStatus(printer, inks, status);
}

constexpr std::array kDispatchTable{
    DispatchRow{server_types::usb, "", false, USBGetInkStatus},
    DispatchRow{server_types::airPort, "rio", true, riousbGetInkStatus},
    DispatchRow{server_types::airPort, "por", true, askAirPortRawPort},
    DispatchRow{server_types::airPort, "lpd", true, askAirPortLpd},
    DispatchRow{server_types::airPort, "", true,
                [](PrinterRecord&, InkQuantities&, BoundedText&) { return 0; }},
    DispatchRow{server_types::network, "rio", false, riousbGetInkStatus},
    DispatchRow{server_types::network, "por", false, askNetworkRawPort},
    DispatchRow{server_types::network, "bjn", false, inkStatusOfRecordByBjnp},
    DispatchRow{server_types::network, "lpd", false, askPrinterMib},
    DispatchRow{server_types::network, "ipp", false, askPrinterMib},
    DispatchRow{server_types::macCups14, "", true, inkStatusOfRecordByIpp},
    DispatchRow{server_types::macCups15, "", true, inkStatusOfRecordByIpp},
};

void keepReading(PrinterRecord& printer, const InkQuantities& inks, const BoundedText& status) {
    const Date now = currentDate();
    if (!printer.array(keys::colors)) printer.set(keys::colors, colorNames(inks));
    Dictionary inkDict = makeInkDict(*printer.texts(keys::colors), inks, now);
    if (const Value* rgbColors = printer.find(keys::rgbColors))
        inkDict.set(keys::rgbColors, *rgbColors);
    printer.set(keys::inkDict, std::move(inkDict));
    printer.set(keys::printerStatus, cleanText(status.view()));
    printer.set(keys::date, now);
}

}  // namespace

std::span<const DispatchRow> dispatchTable() {
    return kDispatchTable;
}

int queryPrinter(PrinterRecord& printer, InkQuantities& inks, BoundedText& status,
                 std::span<const DispatchRow> table) {
    const std::string serverType = printer.text(keys::serverType);
    const std::string kind = printer.text(keys::kind);
    for (const DispatchRow& row : table) {
        if (row.serverType != serverType || !kind.starts_with(row.kindPrefix)) continue;
        if (row.needsActive && printer.text(keys::active) != kYes) return kUnreachable;
        return row.query(printer, inks, status);
    }
    return 0;
}

UpdateOutcome updatePrinter(PrinterRecord& printer, std::span<const DispatchRow> table) {
    InkQuantities inks;
    StatusText status;
    if (const auto colors = printer.texts(keys::colors)) prefillQuantities(*colors, inks);
    const int result = queryPrinter(printer, inks, status, table);
    if (result > 0) {
        keepReading(printer, inks, status);
        return UpdateOutcome::Levels;
    }
    printer.set(keys::printerStatus, result < 0 ? "Offline" : "Online but can't get ink levels");
    return result < 0 ? UpdateOutcome::Unreachable : UpdateOutcome::NoLevels;
}

}  // namespace tintoral
