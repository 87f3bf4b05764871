#include "app/system_sources.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <vector>

#include "discovery/bonjour_browser.h"
#include "discovery/listing.h"
#include "monitor/ipp_probe.h"
#include "netproto/bjnp.h"
#include "transport/usb/usb_browse.h"

namespace tintoral {
namespace {

// What a scan found, as records.
template <typename Found, typename MakeRecord>
PrinterTable scan(int (*browse)(std::vector<Found>&), MakeRecord makeRecord) {
    std::vector<Found> found;
    browse(found);
    PrinterTable table;
    std::ranges::transform(found, std::back_inserter(table), makeRecord);
    return table;
}

}  // namespace

PrinterSources systemPrinterSources() {
    // Made when it is started, for the whole run.
    const auto browser = std::make_shared<std::unique_ptr<BonjourBrowser>>();
    return {
        .usb = [] { return scan(USBPrinterBrowse, recordOfUsbPrinter); },
        .bjnp = [] { return scan(bjnpDiscovery, recordOfBjnpPrinter); },
        .startBonjour = [browser] { *browser = std::make_unique<BonjourBrowser>(); },
        .bonjour = [browser] { return *browser ? (*browser)->printerTable() : PrinterTable(); },
        .probeIpp = [](PrinterRecord& printer) { return probeIppRecord(printer); },
    };
}

}  // namespace tintoral
