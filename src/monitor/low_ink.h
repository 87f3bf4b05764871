// When a person is told that ink runs low: once for each ink when it has come down to 20 percent,
// and once more at 10. An ink that is above 20 again has been refilled and starts anew.
//
// What was announced is kept with the printer (keys::announcedInks): under each ink's name the
// threshold, 20 or 10, that was announced last.
#pragma once

#include <string>
#include <vector>

#include "support/property_list.h"

namespace tintoral {

// In percent; the level itself counts as low.
inline constexpr int kLowLevel = 20;
inline constexpr int kVeryLowLevel = 10;

struct LowInk {
    std::string name;  // fit to show
    int level;         // percent, 0 to 20

    friend bool operator==(const LowInk&, const LowInk&) = default;
};

struct LowInkNews {
    Dictionary announced;      // what to keep; empty: no ink is low, what is still shown is wrong
    std::vector<LowInk> inks;  // all that are low now, in display order
    bool isNew = false;        // one of them has come down to a threshold
};

// Judges a reading. An ink without a level, or with a negative one (not known exactly), is not
// listed and keeps its state. Boxes that fill up instead of running dry are no inks. An ink that is
// not in the reading any more loses its state.
LowInkNews judgeReading(const Dictionary& announced, const Dictionary& inkDict);

}  // namespace tintoral
