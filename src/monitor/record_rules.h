// What happens to a printer record when it is loaded, selected, found or lost, and how its state is
// put into words. Pure rules over records; the windows and the printer table use them.
#pragma once

#include <string>

#include "records/printer_record.h"

namespace tintoral {

// At start: USB and BJNP printers become "unknown"; every other printer counts as absent ("Active"
// = "NO") until discovery sees it again, but for one that the person added by its address: nothing
// will ever announce that one.
void prepareAtStart(PrinterRecord& printer);

// A printer was chosen that is known already: its fresh addresses are copied into the known record.
void copySelectedValues(const PrinterRecord& chosen, PrinterRecord& known);

// Discovery sees a known printer (again): it becomes active, fresh addresses and status texts are
// copied.
void copyFoundValues(const PrinterRecord& found, PrinterRecord& known);

// Why the person cannot choose this printer, in a sentence; empty when they can. A queue shared by
// another computer can be watched only once it has reported levels; a service whose address is not
// known yet has no identity.
std::string refusalToSelect(const PrinterRecord& printer);

// True for a printer that may be selected without the person choosing it: one that can be chosen,
// and whose service did not announce port 0, which says that nothing listens there (RFC 6763).
bool maySelectByItself(const PrinterRecord& printer);

// What the main window says about the selected printer.
struct StatusLine {
    std::string text;
    bool canUpdate;  // the update button
};

// The status of a record, or of no record (null).
StatusLine statusLine(const PrinterRecord* printer);

// True when the record has levels that are more than ten minutes old.
bool levelsAreStale(const PrinterRecord& printer, Date now);

// Sends a maintenance command to the printer by its server type and kind; nothing where none is
// carried (records/maintenance_items.h).
void sendMaintenance(const PrinterRecord& printer, int option);

}  // namespace tintoral
