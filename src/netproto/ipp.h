// A printer's state and marker levels over IPP: one Get-Printer-Attributes request to an IPP
// printer or a queue of a CUPS server, POSTed over the HTTP client of http.h. The messages are in
// ipp_message.h.
//
// CUPS reports supplies as the marker attributes of its queues ("marker-levels" and so on, see the
// CUPS implementation of IPP); of each attribute only the first value is used, as meant.
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
#include "support/fixed_text.h"

namespace tintoral {

inline constexpr std::size_t kLargestIppAnswer = 1024 * 1024;

// An answer that was decoded. Texts in it are as the printer sent them.
struct IppAnswer {
    std::array<std::uint8_t, 8> head{};  // version, status code, request id
    IppTuples attributes;
};

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

    int printerState = 0;  // RFC 8011 5.4.11; 0 when the printer named none
    std::string printerStateMessage;
    bool printerIsShared = false;
    std::string printerLocation;
    std::string cupsVersion;
    IppTuples attributes;
};

// A context for the printer at `printerUri` ("http://HOST:631/PATH"), which fills in host, port and
// path (Url2host_port_location). Both user names are "Tintoral", authentication is off.
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

// Sends the request and decodes the answer. Result: 0; -1 when ippSend() failed or the answer is
// not 200, is cut off or damaged, or is longer than kLargestIppAnswer (`answer` is then empty).
int ippSendAndRecv(const IppContext& context, Bytes request, IppAnswer& answer);

// Asks for "status-only" (state, reasons and message), "all", or the one attribute of that name and
// keeps the answer in the context. Result: the size of the request; 0 when it could not be built or
// was not answered, and then nothing is kept.
std::size_t IppGetPrinterAttrReq(IppContext& context, std::string_view requested);

// The printer's state in words ("Idle", "Printing", "Unknown", "None") and its marker level, with
// name and colour ("#RRGGBB") in the first rows. Only a CUPS above 1.3 is believed to know markers.
// A level is a percentage, or -1 to -128 as reported (CUPS: -1 other, -2 unknown, -3 some
// remaining; -2 also when there is none); the entry's ColorID becomes 0, the record's count is not
// touched. Names, colours and what goes to `dump` (which may be null and is begun anew) are clean.
//
// Result: the number of markers, in practice 1; 0 when there are none, and when the printer could
// not be asked: then the status text is left as it was.
int ippGetPrinterStatusAndQuantities(std::string_view printerUri, BoundedText& status,
                                     InkQuantities& inks, SupplyNames& names, SupplyNames& colors,
                                     BoundedText* dump);

}  // namespace tintoral
