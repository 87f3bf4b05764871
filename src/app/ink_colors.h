// The colours in which inks are drawn: from the "#RRGGBB" that a printer reported, else from the
// ColorID.
#pragma once

#include <QtGui/QColor>
#include <string_view>

#include "ink/ink_quantities.h"

namespace tintoral {

// The two pictures of the last levels. They share every colour but those for "no ink" and for an
// unknown ink.
enum class Picture { LevelView, DockIcon };

struct InkColor {
    QColor color;  // invalid: the ink is not drawn
    bool isWhite =
        false;  // made from one white value (a named grey); such a colour is shaded in another way
};

// A grey made from its white value, 0 to 1.
InkColor whiteInk(float white);

// The colour of a ColorID. The composite cartridges (2, 3, 12 to 15) are cyan and all grey shades
// light grey, as meant. 0 is no colour in the level view and white in the Dock icon; an unknown ID
// is green in the level view and blue in the Dock icon.
InkColor nscolorByColorID(int id, Picture picture);

// The colour of a "#RRGGBB" text, each component divided by 256: "#FFFFFF" is just below white, as
// meant. A missing digit counts as 0. A grey made in this way is shaded like any other RGB colour.
InkColor colorByRGBColor(std::string_view code);

// The colour of an ink's line in a chart on white, by its whole name, in which case counts; blue
// for any other name. White inks are light grey, as meant: their line stays visible.
QColor nscolorByColorName(std::string_view name);

// The same for an ink of which a printer may have reported a "#RRGGBB" text: that, where it is one
// (some report words such as "none"), else the name.
QColor chartColor(std::string_view name, std::string_view rgbColor);

}  // namespace tintoral
