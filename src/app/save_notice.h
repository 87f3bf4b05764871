// One line at the lower edge of the main window while the settings cannot be saved.
#pragma once

#include <string>

class QMainWindow;

namespace tintoral {

// Shows why what the person sees will be gone after a restart, as in "Levels and settings cannot be
// saved: No space left on device". The window grows by the line's height; an empty reason takes the
// line away again.
void showSaveFailure(QMainWindow& window, const std::string& reason);

}  // namespace tintoral
