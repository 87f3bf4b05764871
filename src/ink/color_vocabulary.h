// The vocabulary of ink colours: codes, names, #RRGGBB codes and RGB triples, in one table.
//
// The look-ups by name differ in their order and in how they treat case; those differences are
// meant, and histories and records written earlier depend on them.
#pragma once

#include <array>
#include <string_view>

#include "ink/ink_quantities.h"

namespace tintoral {

// Red, green and blue, 0 to 1 each.
using RgbTriple = std::array<float, 3>;

// The code of the first vocabulary word that occurs anywhere in `name`, without regard to case;
// longer words are tried before those they contain ("Photo Black" before "Black"). A name without
// any of them is 11 ("Blue"), so that every reported colour can be drawn.
ColorID colorIDByColorName(std::string_view name);

// The name of a code; "None" for a code outside the vocabulary. The text is constant.
std::string_view colorNameByColorID(ColorID id);

// The "#RRGGBB" code of a whole colour name; "#0000FF" when there is no such name. Case counts only
// for "Black" and "Green", as meant.
std::string_view hexColorCodeByColorName(std::string_view name);

// The triple of a whole colour name, by the same rules; 0, 0, 1 when there is no such name.
RgbTriple rgbColorByColorName(std::string_view name);

// The triple of a "#RRGGBB" text: the hex digits at positions 1-2, 3-4 and 5-6, each value divided
// by 256 (so white is 0.99609375). A missing digit counts as 0.
RgbTriple rgbColorByColor(std::string_view code);

// The ColorID of an Epson colour code as it stands in the ink field of a status reply; 0 for an
// unknown code.
ColorID chgColorCode(std::uint8_t epsonCode);

}  // namespace tintoral
