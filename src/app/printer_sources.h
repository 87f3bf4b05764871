// Where the selection window's printers come from. A source that is not set finds nothing.
#pragma once

#include <functional>

#include "records/printer_table.h"

namespace tintoral {

struct PrinterSources {
    // Scans: each call lists what is there now, in new records, and takes as long as the bus or
    // the answers take.
    std::function<PrinterTable()> usb;
    std::function<PrinterTable()> bjnp;

    // Announced services, known without waiting; every call yields the same records, and more as
    // they come. Before startBonjour was called there are none.
    std::function<void()> startBonjour;
    std::function<PrinterTable()> bonjour;

    // Asks an IPP queue for its supplies and keeps what it answers in the record, as
    // probeIppRecord(). Takes at most the time-outs of the protocol.
    std::function<int(PrinterRecord&)> probeIpp;
};

}  // namespace tintoral
