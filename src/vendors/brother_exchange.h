// Brother printers on a raw port tell their status unasked: they are only listened to. Each call
// receives once, up to 2048 bytes.
#pragma once

#include <cstdint>
#include <string>

#include "support/fixed_text.h"
#include "vendors/transport_io.h"

namespace tintoral {

// Listens for up to 1000 ms on an open connection and appends "Brother status = NNN" with the bytes
// received, and their hex dump, to the report. `ignored` is not used. Result: the bytes received, 0
// when none came.
int brotherDiagnose0(const IoHandle& handle, int ignored, BoundedText& report);

// Listens for up to 2000 ms on a connection of its own and appends the hex dump of what came to
// `dump`, which may be null. Result: 0, also when the printer cannot be reached.
int tcpBrotherDiagnose(const std::string& host, std::uint16_t port, BoundedText* dump);

}  // namespace tintoral
