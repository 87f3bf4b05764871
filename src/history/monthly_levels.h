// An ink history as a table: the last level of each ink in each of the newest months.
//
// A history file may have been edited since it was written: an entry that is no dictionary or has
// no date is passed over, the order of the entries does not matter, and the table is bounded
// whatever the file holds. Months are months of UTC.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "support/property_list.h"

namespace tintoral {

inline constexpr int kMostMonths = 12;
inline constexpr int kFewestMonths = 4;
inline constexpr std::size_t kMostMonthlyInks = 16;

struct MonthlyLevels {
    std::vector<std::string> inks;  // the keys of the levels, as they stand in the entries
    std::vector<std::chrono::year_month> months;  // one after the other, the newest last

    // Percent, as reported, at [ink][month]: of the month's last reading that tells the ink's
    // level. None where there is no such reading.
    std::vector<std::vector<std::optional<int>>> levels;
};

// The table of `history`.
//
// Inks: those of the last entry's "Colors" in that order, then others that the shown months have
// levels of; at most 16, each once.
//
// Months: up to that of the newest reading, back to the first with readings, but at most 12 and at
// least 4; none without a dated reading. A reading dated after `now` was stored while the clock was
// wrong and would push all others out of sight: it counts only where there is no other. Dates
// outside the years 1 to 9999 do not count.
//
// Levels: a number, or a text that begins with one, cut to whole percent. Negative ones are markers
// that the printer knows no number, and do not count.
MonthlyLevels monthlyLevels(const Array& history, Date now = currentDate());

}  // namespace tintoral
