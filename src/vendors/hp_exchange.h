// HP's cleaning over a raw TCP port, and the exchanges of its diagnosis: what the printer says
// about its model and its supplies, by PML inside PJL or on an MLC channel.
//
//   command set begins with   asked for                                      takes
//   "PJL,PML"                 model name, supplies 1, supplies 2 (hp.h)      3 s at the most
//   "MLC,PCL,PML"             objects 1.1.3.2 and 2.11.1.1.6.1.1 (PML)       see mlc.h
//
// On a TCP connection each send may take up to 2 s more when the peer stops reading.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "support/fixed_text.h"
#include "vendors/transport_io.h"

namespace tintoral {

// Sends the cleaning command of "PJL,PML" on a connection of its own. Result: 0, also when the
// printer cannot be reached or the send failed ("tcpSend: send " on standard error).
int tcpHPNozzleCleaning(const std::string& host, std::uint16_t port);

// Asks on an open connection and appends to the report, for each answer, a line that says what was
// asked and the hex dump of the answer: "PJL/PML Modelname = NNN" and "PJL/PML SUPPLIES DESCRIPTION
// = NNN" with the bytes received (one receive of up to 1000 ms, 2048 bytes), or "MLC/PML Modelname"
// and "MLC/PML SUPPLIES DESCRIPTION "; "MLC open error" when the channel cannot be opened. Result:
// the length of the report; 0 for another command set.
int hpDiagnose1(const IoHandle& handle, BoundedText& report, std::string_view commandSet);

// The "PJL,PML" diagnosis on a connection of its own. Result: 0, also when the printer cannot be
// reached (the report is then left as it was).
int tcpHPDiagnose(const std::string& host, std::uint16_t port, BoundedText& report);

}  // namespace tintoral
