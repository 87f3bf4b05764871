// From the bytes of an update to what is kept of it, and back.
//
// An inkDict is a dictionary with the level of each ink under its name (integers, percent), the
// names in display order under "Colors", the time under "Date" and, where the printer reports them,
// "#RRGGBB" texts under "rgbColors".
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ink/ink_quantities.h"
#include "records/printer_record.h"

namespace tintoral {

// Before a query: one entry for each name of `colors` (the first 20), with the ColorID of its name
// and level 100. Many replies hold levels alone; the colours then come from here.
void prefillQuantities(const std::vector<std::string>& colors, InkQuantities& record);

// The name of each entry in use; "none" for an entry without a colour.
std::vector<std::string> colorNames(const InkQuantities& record);

// An inkDict with the level of entry i under name i. A name beyond the record's 20 entries is 0; of
// two equal names the later level counts.
Dictionary makeInkDict(const std::vector<std::string>& colors, const InkQuantities& record,
                       Date date);

// Whether an inkDict's value under this key is a level.
bool isInkName(std::string_view key);

// The level that a value stands for: a number, cut to whole percents, or a text that begins with a
// whole number; nothing for any other.
std::optional<int> levelOf(const Value& value);

}  // namespace tintoral
