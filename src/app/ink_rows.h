// What both pictures draw of a reading: its inks in their order, each with its name, level and
// colour.
#pragma once

#include <QtCore/QString>
#include <string>
#include <vector>

#include "app/ink_colors.h"
#include "records/printer_record.h"

namespace tintoral {

struct InkRow {
    std::string name;  // fit to show
    int level;         // percent, or a negative marker
    InkColor color;
};

// The rows of `inkDict`, at most 20 (a record holds no more inks), none when it has no "Colors". An
// ink without a level (ink_dict.h) has the level 0. `rgbColors` goes by position; where it
// has no "#..." text the ink's name gives the colour.
std::vector<InkRow> inkRows(const Dictionary& inkDict, const std::vector<std::string>& rgbColors,
                            Picture picture);

// The rows of a record's last reading; none when it has no reading.
std::vector<InkRow> inkRowsOf(const PrinterRecord& printer, Picture picture);

// A level in words: "42 %", "not empty" (kLevelSomeRemaining) or, for other markers, "unknown".
QString levelText(int level);

}  // namespace tintoral
