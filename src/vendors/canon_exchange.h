// Canon's status exchange, over a raw TCP port (normally 9100) or whatever else a handle stands
// for.
//
//   command set    sent                          reply
//   plain          the "SSR=..." frame, and      2 bytes with the total length (high byte first,
//                  "SSR=DF;" after the reply     these two included), then the fields as text
//   with "IVEC"    358 NULs, as meant (canon.h)  an XML document, up to "</cmd>"
//
// Levels are those of "CIR:", or else the warnings of "DWS:" (hp.h). "CIR:" is looked for from the
// first byte of the reply, as meant: a plain reply whose length has a zero byte, as every one
// shorter than 256 bytes has, counts as empty text there ("Online"), and only its warnings are
// seen.
//
// The reply has 500 ms before anyone looks and is then received in at most nine waits of 500 ms
// each, of which one that yields nothing ends it; 2048 bytes of it are kept. An exchange so takes 5
// s at the most; a TCP connection up to 2 s before it, and each of its two sends up to 2 s more
// when the peer stops reading.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "ink/ink_quantities.h"
#include "support/fixed_text.h"
#include "vendors/transport_io.h"

namespace tintoral {

// Asks once over a TCP connection of its own. `status` and `record` are the caller's and left alone
// when nothing came; `dump` gets the hex dump of the reply appended and may be null. For a command
// set with "IVEC" an answer that does not begin as XML within its first receive (512 bytes) counts
// as none.
//
// Result: the number of inks; 0 when nothing that holds levels came; -1 when the printer could not
// be reached or, after "tcpCanonInquiry: send " on standard error, the send failed.
int tcpCanonInquiry(const std::string& host, std::uint16_t port, std::string_view model,
                    std::string_view commandSet, BoundedText& status, InkQuantities& record,
                    BoundedText* dump);

// The same exchange on an open connection, for the diagnostics report: appends "Canon response =
// NNN" with the bytes received and, when they are a reply, the levels as sdumpInkQuantities() puts
// them. Result: the bytes received, 0 when none came.
int canonDiagnose0(const IoHandle& handle, std::string_view model, std::string_view commandSet,
                   BoundedText& report);

}  // namespace tintoral
