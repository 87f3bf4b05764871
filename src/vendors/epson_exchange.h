// Epson's status exchange over a raw TCP port (normally 9100), and over whatever a handle stands
// for.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "ink/ink_quantities.h"
#include "support/fixed_text.h"
#include "vendors/transport_io.h"

namespace tintoral {

// Asks once in remote mode. Drains what the printer has queued, sends the inquiry, waits 1 s
// (variant 2) or 2 s, receives once for up to 500 ms or 1600 ms, leaves remote mode and closes.
//
// `status` and `record` are the caller's; `dump` receives a hex dump of the reply and may be null.
// Result: the number of inks; 0 when the printer answered nothing that holds levels; -1 when it
// could not be reached or the send failed.
int tcpEpsonRCInquiry(const std::string& host, std::uint16_t port, int variant, BoundedText& status,
                      InkQuantities& record, BoundedText* dump);

// Asks once on the D4 control channel (d4_epson.h), after draining what the printer has queued for
// up to 200 ms. `dump` gets the length of the reply and its hex dump appended; it may be null.
// Result: the number of inks; -1 when the printer could not be reached or gave no reply that holds
// a known status; without a channel `status` keeps what it held.
int tcpEpsonD4Inquiry(const std::string& host, std::uint16_t port, BoundedText& status,
                      InkQuantities& record, BoundedText* dump);

// Runs a maintenance job (an option of epson.h) on the D4 control channel. Result: that of
// d4EpsonNozzleOption(); -1 when the printer could not be reached.
int tcpEpsonD4NozzleOption(const std::string& host, std::uint16_t port, int option);

// One inquiry on an open connection for the diagnostics report, on the D4 control channel or in
// remote mode as `commandType` says (with the drain, the pauses and the waits of
// tcpEpsonRCInquiry(): 3.8 s at the most, 5.8 s at a base station; each of its two sends may add
// the time-out of its transport).
// Appends "Epson D4 response = NNN" with the command type and the bytes received; when there are
// any, their hex dump, the status text and the levels. Result: the bytes received, 0 when none
// came.
int epsonDiagnose0(const IoHandle& handle, std::string_view commandType, BoundedText& report);

}  // namespace tintoral
