// One line at the lower edge of the main window while something is wrong with the settings file.
#pragma once

#include "records/user_defaults.h"

class QMainWindow;

namespace tintoral {

// Says why what the person sees will be gone after a restart, as in "Levels and settings cannot be
// saved: No space left on device"; or else where the settings are that could not be read at start.
// The window grows by the line's height. When all is well the line goes away again.
void showSaveNotice(QMainWindow& window, const UserDefaults& defaults);

}  // namespace tintoral
