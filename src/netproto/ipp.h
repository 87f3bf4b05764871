// A printer's state and marker levels over IPP: one Get-Printer-Attributes request to an IPP
// printer or a queue of a CUPS server, POSTed over the HTTP client of http.h. The messages are in
// ipp_message.h, what they say in ipp_printer.h.
//
// Waits: as in http.h, and 50 s for the answer to begin (10 s for the challenge, when
// authentication is on). An answer may be 1 MiB long.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "ink/ink_quantities.h"
#include "ink/supply_names.h"
#include "netproto/http.h"
#include "netproto/ipp_message.h"
#include "netproto/ipp_printer.h"
#include "support/fixed_text.h"

namespace tintoral {

inline constexpr std::size_t kLargestIppAnswer = std::size_t{1024} * 1024;

// One query: what to ask and, after IppGetPrinterAttrReq(), what came.
struct IppContext {
    std::string printerUri;
    std::string host;
    int port = 0;
    std::string path;
    std::uint8_t minorVersion = 1;
    std::string userName;  // also the user of an authentication
    std::string password;
    bool authentication = false;
    std::string userAgent;

    IppPrinter printer;
};

// A context for the printer at `printerUri` ("http://HOST:631/PATH"), which fills in host, port and
// path (Url2host_port_location). User and user agent are "Tintoral", authentication is off.
IppContext makeIppContext(std::string_view printerUri);

// Sends the request and leaves the answer to the caller: the requester on its open connection, or
// null when nobody answers at the host, a send failed, or the server wants an authentication that
// is not "Basic" or "Digest".
//
// A request of known length is followed by an extra CR LF, as meant: nHttpSendContent() with no
// bytes, which is left to the caller, since a CUPS server breaks its answer off when the CR LF
// comes before the answer is out.
//
// With authentication on, the server is first sent a head alone, and the request then goes, in
// chunks and with an answer to the challenge if there was one, over a second connection.
std::unique_ptr<NHttpRequester> ippSend(const IppContext& context, Bytes request);

// Sends the request and decodes the attributes of the answer; texts in them are as the printer sent
// them. Result: 0; -1 when ippSend() failed or the answer is not 200, lacks the message's end, is
// damaged, or is longer than kLargestIppAnswer (`attributes` are then empty).
int ippSendAndRecv(const IppContext& context, Bytes request, IppTuples& attributes);

// Asks for "status-only" (state, reasons and message), "all", or the one attribute of that name and
// keeps the answer in the context. Result: the size of the request; 0 when it could not be built or
// was not answered, and then nothing is kept.
std::size_t IppGetPrinterAttrReq(IppContext& context, std::string_view requested);

// State and markers of the printer at `printerUri`, with readStatusAndMarkers() for what is
// written. `dump` may be null and is begun anew. Result: the number of markers; 0 when there are
// none, and when the printer could not be asked: then only `dump` is written.
int ippGetPrinterStatusAndQuantities(std::string_view printerUri, BoundedText& status,
                                     InkQuantities& inks, SupplyNames& names, SupplyNames& colors,
                                     BoundedText* dump);

}  // namespace tintoral
