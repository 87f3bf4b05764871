// The line in which a filter tells CUPS the levels of a printer's supplies (the "ATTR:" message of
// filter(7), with the marker attributes of the PWG's printer state extensions):
//
//   ATTR: marker-colors=#000000,#0000FF marker-levels=40,75 marker-names="Black","CMY Color"
//   marker-types=ink,ink
//
// The print server takes the line apart at blanks, commas, quotes and backslashes, and pairs the
// four lists up by position. A name is therefore written without the characters that would split it
// or end the line, and the four lists are always of equal length.
#pragma once

#include <array>
#include <cstdio>
#include <string_view>

#include "support/fixed_text.h"

namespace tintoral {

class MarkerLine {
  public:
    MarkerLine();

    // Adds a supply by its colour name and its level (percent, or a negative marker). Each
    // attribute holds at most 127 characters: false, and nothing is added, when a part of this
    // supply does not fit into its attribute.
    bool add(std::string_view colorName, int level);

    // Writes the line in one piece. Result: that of fprintf, the characters written or a negative
    // number.
    int write(std::FILE* out) const;

  private:
    using Attribute = FixedText<128>;

    std::array<Attribute, 4> attributes_;
    bool empty_ = true;
};

}  // namespace tintoral
