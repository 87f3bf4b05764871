// The person's home folder, and the making of folders that the program keeps files in.
#pragma once

#include <filesystem>
#include <system_error>

namespace tintoral {

// $HOME; where that is unset, empty or relative, the home folder of the user database. Empty when
// neither names a folder that exists: then nothing can be kept.
std::filesystem::path homeFolder();

// Makes the folder and those above it that are missing, each for its owner alone (0700). A folder
// that exists is no error; otherwise the reason of the last failure.
std::error_code makeFolders(const std::filesystem::path& folder);

}  // namespace tintoral
