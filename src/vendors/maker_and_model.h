// A printer's free-form name ("EPSON Stylus Photo R800", "Canon PIXMA iP4300 - Gutenprint") split
// into the maker and the model under which the model table and the vendor modules know it. Pure.
#pragma once

#include <string_view>

#include "support/fixed_text.h"

namespace tintoral {

// Fills `maker` ("Canon", "EPSON", "HP" or empty) and `model`, each cut to its capacity.
//
// The maker's own name decides first ("Canon ", "Epson ", "hp ", "Hewlett-Packard "), and the model
// is what follows it; a name without one keeps the whole name as model and gets its maker from a
// product line ("Deskjet", "Stylus", "Pixma" ...), if any. The model is then freed of a driver's
// suffix and of "PIXMA ", and series letters are joined to their number ("PM A820" becomes
// "PM-A820"). Result: always 0.
int identifyMakerAndModelName(std::string_view name, BoundedText& maker, BoundedText& model);

}  // namespace tintoral
