// Canon's status language: requests as bytes, replies ("BST:", "CIR:"). Pure; the exchange is
// canon_exchange.h.
//
// Every request but the IVEC one is a frame of Canon's extended commands around a text of n bytes:
//
//   offset  size
//   0       3     1B 5B 4B (ESC "[K")
//   3       2     n + 4, low byte first
//   5       2     00 1E
//   7       2     n + 2, high byte first
//   9       n     the text: "SSR=" and the fields asked for, closed by ";"
//
// A builder whose buffer is too small writes part of the message at most and returns 0.
#pragma once

#include <cstddef>
#include <string_view>

#include "ink/ink_quantities.h"
#include "support/byte_reader.h"
#include "support/fixed_text.h"

namespace tintoral {

// What a printer with "IVEC" in its command set is asked instead: an XML document without line
// breaks.
inline constexpr std::string_view kCanonIvecStatusRequest =
    R"(<?xml version="1.0" encoding="utf-8" ?>)"
    R"(<cmd xmlns:ivec="http://www.canon.com/ns/cmd/2008/07/common/")"
    R"( xmlns:vcn="http://www.canon.com/ns/cmd/2008/07/canon/">)"
    R"(<ivec:contents><ivec:operation>VendorCmd</ivec:operation><ivec:param_set servicetype="print">)"
    R"(<vcn:ijoperation>ModeShift</vcn:ijoperation><vcn:ijmode>2</vcn:ijmode>)"
    R"(</ivec:param_set></ivec:contents></cmd>)";
static_assert(kCanonIvecStatusRequest.size() == 358);

// Whether a command set (the "CMD:" list of the device ID) names that document's language.
bool canonSpeaksIvec(std::string_view commandSet);

// The status request for a model (exact name); a model outside the table gets the default list of
// fields. For a command set with "IVEC" only the length of the XML document (358) is returned,
// whatever the buffer's size, and the buffer is left as it was, as meant: clear it before you send
// it.
std::size_t mkCanonStatusInquire(std::string_view model, MutableBytes buffer,
                                 std::string_view commandSet);

// The 16 bytes that end a status inquiry: the frame around "SSR=DF;".
std::size_t mkCanonExitCmd(MutableBytes buffer);

// A cleaning (option 1, 40 bytes) or nozzle-check (option 2, 48 bytes) job in BJL mode; 0 for
// another option. Clears the first 64 bytes first.
std::size_t mkCanonNozzleOption(MutableBytes buffer, int option);

// Status text ("BST:") and levels ("CIR:") of a reply, read as text up to its first NUL. The status
// is "Online" without a "BST:" field. A level of "UK" (unknown) is 0, any other number its low
// byte; an ink name outside the table has ColorID 0. Result: the number of inks written, at most
// 20; 0 without a complete "CIR:" field, and then the record is left as it was.
int parseCIR(Bytes reply, BoundedText& status, InkQuantities& record);

}  // namespace tintoral
