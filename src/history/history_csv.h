// A history as a table for spreadsheets: comma-separated values as in RFC 4180, in UTF-8.
#pragma once

#include <string>

#include "support/property_list.h"

namespace tintoral {

// One line for each entry with a "Date" (UTC, "2026-03-14 09:26:53"), one column for each ink in
// the order of chartSeries(), empty where an entry has no level; markers of printers that know no
// level stay negative numbers. Names that a spreadsheet would take for a formula (= + - @) begin
// with an apostrophe.
std::string historyCsv(const Array& history);

}  // namespace tintoral
