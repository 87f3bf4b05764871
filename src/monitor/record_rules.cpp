#include "monitor/record_rules.h"

#include <array>

#include "records/maintenance_items.h"
#include "transport/net/raw_port.h"
#include "transport/net/riousb_ink_status.h"
#include "transport/usb/usb_ink_status.h"

namespace tintoral {
namespace {

constexpr std::array kAddressKeys{keys::ipAdrs, keys::ippURL};
constexpr std::array kSelectedKeys{keys::devModelName, keys::serialID};
constexpr std::array kFoundKeys{keys::port, keys::usbVStatus, keys::usbS, keys::serialID};

// A base station may give a printer another port, host or queue at any time.
constexpr std::array kAirPortKeys{keys::kind, keys::serviceType, keys::port, keys::hostName,
                                  keys::usbPrinterName};

// The same printer may be added again with another connection.
constexpr std::array kTypedInKeys{keys::kind, keys::serviceType, keys::usbCmd};

template <typename Keys>
void copyPresent(const PrinterRecord& from, PrinterRecord& to, const Keys& names) {
    for (const std::string_view key : names) {
        if (const Value* value = from.find(key)) to.set(key, *value);
    }
}

void copyEvenAbsent(const PrinterRecord& from, PrinterRecord& to, std::string_view key) {
    if (const Value* value = from.find(key)) {
        to.set(key, *value);
    } else {
        to.remove(key);
    }
}

bool isLocal(std::string_view kind) {
    return kind.starts_with("USB") || kind.starts_with("bjn");
}

}  // namespace

void prepareAtStart(PrinterRecord& printer) {
    const bool addedByAddress = printer.text(keys::addedByAddress) == kYes;
    const bool isNeverAnnounced = isLocal(printer.text(keys::kind)) || addedByAddress;
    if (isNeverAnnounced) printer.set(keys::printerStatus, "unknown");
    if (!isLocal(printer.text(keys::kind))) printer.set(keys::active, addedByAddress ? kYes : kNo);
}

void copySelectedValues(const PrinterRecord& chosen, PrinterRecord& known) {
    copyPresent(chosen, known, kAddressKeys);
    copyPresent(chosen, known, kSelectedKeys);
    const bool keepsItsPort = known.text(keys::kind).starts_with("riousb");
    if (!keepsItsPort) copyPresent(chosen, known, std::array{keys::port});
    if (chosen.text(keys::addedByAddress) == kYes) copyPresent(chosen, known, kTypedInKeys);
    if (chosen.text(keys::serverType) != server_types::airPort) return;
    for (const std::string_view key : kAirPortKeys) copyEvenAbsent(chosen, known, key);
}

void copyFoundValues(const PrinterRecord& found, PrinterRecord& known) {
    known.set(keys::active, kYes);
    copyPresent(found, known, kAddressKeys);
    copyPresent(found, known, kFoundKeys);
    if (found.text(keys::serverType) == server_types::airPort)
        copyPresent(found, known, kAirPortKeys);
}

std::string refusalToSelect(const PrinterRecord& printer) {
    if (printer.text(keys::printerId).empty())
        return "The address of this printer is not known yet; it is being asked for.";
    if (printer.text(keys::serverType) == server_types::mac && !printer.contains(keys::inkDict)) {
        return "A queue shared by another computer that has reported no ink levels. Refresh asks "
               "it again.";
    }
    return {};
}

bool maySelectByItself(const PrinterRecord& printer) {
    return refusalToSelect(printer).empty() && printer.integer(keys::port) != 0;
}

StatusLine statusLine(const PrinterRecord* printer) {
    if (!printer) return {"Printer is not selected", false};
    const std::string status = printer->text(keys::printerStatus);
    if (status == "Offline") return {status, false};
    if (status == "Online but can't get ink levels") return {status, true};
    if (printer->text(keys::active) == kNo) return {"Offline", false};
    return {status.empty() ? "Unknown" : status, true};
}

bool levelsAreStale(const PrinterRecord& printer, Date now) {
    constexpr int kMinutes = 10;
    const Dictionary* inkDict = printer.dictionary(keys::inkDict);
    const auto date = inkDict ? inkDict->date(keys::date) : std::nullopt;
    return date && now - *date > std::chrono::minutes(kMinutes);  // as meant: not if in the future
}

void sendMaintenance(const PrinterRecord& printer, int option) {
    if (!carriesMaintenance(printer)) return;
    if (printer.text(keys::serverType) == server_types::usb)
        return usbNozzleOptions(printer, option);
    if (printer.text(keys::kind).starts_with("rio")) return riousbNozzleOptions(printer, option);
    port9100NozzleOptions(printer, option);
}

}  // namespace tintoral
