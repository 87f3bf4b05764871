// What the program has to say to the person without a window: one line on standard error.
#pragma once

#include <string_view>

namespace tintoral {

// What stands before each line from now on, instead of "Tintoral: ". A CUPS filter takes "ERROR: ",
// without which the server does not log a line. `prefix` outlives the program's last report.
void setReportPrefix(const char* prefix);

// Writes "Tintoral: " and the line. Control characters are dropped (cleanText), so that the name of
// a file or of a printer cannot begin a line of its own.
void reportLine(std::string_view line);

}  // namespace tintoral
