// Epson's status exchange over a raw TCP port (normally 9100).
#pragma once

#include <cstdint>
#include <string>

#include "ink/ink_quantities.h"
#include "support/fixed_text.h"

namespace tintoral {

// Asks once in remote mode. Drains what the printer has queued, sends the inquiry, waits 1 s
// (variant 2) or 2 s, receives once for up to 500 ms or 1600 ms, leaves remote mode and closes.
//
// `status` and `record` are the caller's; `dump` receives a hex dump of the reply and may be null.
// Result: the number of inks; 0 when the printer answered nothing that holds levels; -1 when it
// could not be reached or the send failed.
int tcpEpsonRCInquiry(const std::string& host, std::uint16_t port, int variant, BoundedText& status,
                      InkQuantities& record, BoundedText* dump);

}  // namespace tintoral
