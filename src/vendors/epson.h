// Epson's remote-mode status language: the commands as bytes, and the three forms of reply. Pure:
// nothing here opens a connection (see epson_exchange.h).
//
//   variant   command type   status request                    reply
//   0         "RC0"          ink quantity ("IQ")               "@BDC ST\r..." text
//   1         "RC1"          reply interval on, status 01      "@BDC ST2\r\n..." binary, or text
//   2         any other      reply interval on, status 11      "@BDC ST2\r\n..." binary, or text
//
// Laser printers answer "@EJL STATUS CODE=" followed by hex text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "ink/ink_quantities.h"
#include "support/byte_reader.h"
#include "support/fixed_text.h"

namespace tintoral {

// The command types, as a record's "commandType" names them.
namespace epson_commands {
inline constexpr std::string_view d4 = "D4";
inline constexpr std::string_view rc = "RC";
inline constexpr std::string_view rc1 = "RC1";
inline constexpr std::string_view rc0 = "RC0";
}  // namespace epson_commands

// 0 for "RC0", 1 for "RC1", 2 for anything else.
int epsonVariant(std::string_view commandType);

// Whether a command set (the "CMD:" list of the device ID) names the D4 control channel.
bool epsonSpeaksD4(std::string_view commandSet);

// Maintenance options, as the menus number them.
inline constexpr int kOptionCleaning = 1;
inline constexpr int kOptionNozzleCheck = 2;
inline constexpr int kOptionCleaningAndTestPrint = 3;

// The status request of a variant: 58 bytes for variant 0, 65 for 1 and 2, 0 for another. All
// builders write to a buffer that the caller owns (128 bytes suffice) and return the bytes built, 0
// when the buffer is too small.
std::size_t mkEpsonStatusInquire(MutableBytes buffer, int variant);

// What leaves remote mode again: 6, 12 or 18 bytes for variant 0, 1, 2 or more.
std::size_t mkEpsonExitCmd(MutableBytes buffer, int variant);

// A cleaning (68 bytes) or nozzle-check (120 bytes) job; 0 for another option. Clears the first 32
// bytes first.
std::size_t mkEpsonNozzleOption(MutableBytes buffer, std::string_view model, int option);

// The same as a 5-byte packet for the D4 control channel; 0 for another option. Clears the first 32
// bytes first.
std::size_t mkEpsonD4NozzleOption(MutableBytes buffer, int ignored, int option);

// The 5-byte packet that ends a D4 session.
std::size_t mkEpsonD4ExitCmd(MutableBytes buffer);

// The binary reply "@BDC ST2\r\n": status text and ink levels. Result: the number of inks; 0 when
// the reply does not begin as a status reply (the status text is then left alone), lacks the marker
// or holds no ink field; that of biInkStatusToIQ() otherwise.
//
//   10  marker "@BDC ST2" CR LF
//    2  payload length, low byte first, signed
//       fields: code, length (signed), data     01 status value; 0F ink levels; others are skipped
//
// A field of negative length, or one that the reply does not hold as a whole, ends the walk.
int parseST2(Bytes reply, BoundedText& status, InkQuantities& record);

// The text reply "@BDC ST\r": two-character values after a tag, ended by ";"
// ("ST:04;ER:00;IQ:3C2A1F50;"). A count that the record already holds is kept. Of the texts,
// `status` is always set; the others are left alone when the reply does not mention them or has no
// known value. `revision` receives the 18 characters after "RV:" as they stand. Result: the number
// of inks of this reply (at most 20), 0 without an "IQ:" field.
int parseBDCST(Bytes reply, BoundedText& status, BoundedText& error, InkQuantities& record,
               BoundedText& warning, BoundedText& revision);

// The panel-status reply "@BDC PS\r": its status byte, the first character's code times 10 plus the
// second one's, cut to 8 bits and not reduced by the code of "0". "SM:" goes before "ST:"; 0 when
// neither is there.
std::uint8_t parseBDCPS(Bytes reply);

// The laser reply "@EJL STATUS CODE=". Clears status, record and `extra` first; `extra` receives
// the format's 32-bit word unchanged. Result: the number of supplies; 0 for an unknown format, a
// reply without the marker or one that ends before its black level. A supply at level 255 is
// absent, except the black one, which is then -1.
int parseEJLStatusCode(Bytes reply, BoundedText& status, InkQuantities& record,
                       std::uint32_t& extra);

// The status words of field 01 of "@BDC ST2"; "Unknown" for another value.
void biStatusValueToString(std::uint8_t value, BoundedText& text);

// The laser status words; "Unknown status" for another code. Result: the length of the text.
std::size_t statusCodeToString(int code, BoundedText& text);

// Gives the reply to the parser whose marker it holds: "@BDC ST2", "@EJL STATUS CODE" or "@BDC
// ST\r". Result: the parser's, or `whenUnknown`.
int parseEpsonReply(Bytes reply, BoundedText& status, InkQuantities& record, int whenUnknown);

}  // namespace tintoral
