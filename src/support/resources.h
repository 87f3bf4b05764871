// Where the program finds what it ships, relative to its own executable: the same layout in the
// build tree and under an installation's prefix.
//
//   bin/tintoral   share/tintoral/printers.xml   lib/tintoral/libtintoral-window.so
#pragma once

#include <filesystem>

namespace tintoral {

// The folder of the shipped files.
std::filesystem::path resourceFolder();

// The folder of modules that are loaded on demand.
std::filesystem::path moduleFolder();

}  // namespace tintoral
