// The header lines of an HTTP message (RFC 9112 section 5) as a list of names and values.
//
// Names of received headers keep their trailing colon ("Content-Length:"), those of headers to send
// have none. Values are as the peer sent them, trimmed; clean them (cleanText) before they are
// shown.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "netproto/http_connection.h"

namespace tintoral {

struct Pair {
    std::string name;
    std::string value;
};

// In the order of the message.
using PairList = std::vector<Pair>;

// Appends at the end.
void NewPair(PairList& list, std::string_view name, std::string_view value);

// The value of the first pair whose name begins with `name`, without regard to case. Result: the
// value's length; 0 and an empty `value` when there is none.
std::size_t GetPairValue(const PairList& list, std::string_view name, std::string& value);

// Compares `value`, by case, with that of the first pair whose whole name is `name` without regard
// to case. Result: 0 when they are equal, -1 when there is no such pair, else another number.
int CmpPair(const PairList& list, std::string_view name, std::string_view value);

// Reads header lines up to the empty one and appends their pairs. A line without a colon says
// nothing and is dropped. Result: 0; http_errors::timedOut; http_errors::malformed for more than
// 128 lines or one that is too long.
int readHeaders(HttpReader& reader, HttpConnection& connection, PairList& list);

// The text without blanks, tabs, carriage returns and line feeds at both ends.
std::string_view trimmed(std::string_view text);

// "name: value" CR LF for each pair, then the empty line. Control characters in names and values
// are left out, so that no value can begin a line of its own.
std::string headerLines(const PairList& list);

// The text without control characters (00-1F, 7F).
std::string withoutControls(std::string_view text);

}  // namespace tintoral
