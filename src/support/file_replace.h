// Writing a file so that a reader, a crash or a full disk never meets half of it.
#pragma once

#include <filesystem>
#include <string_view>
#include <system_error>

namespace tintoral {

// Replaces the file at `path` by `content`: writes a temporary file, flushes it to disk and renames
// it over the old one. On any failure the old file stays whole, the temporary one is removed, and
// the reason is returned.
//
// `temporaryFolder` takes the temporary file (".tintoral-" and six characters); it must lie on the
// same file system. Empty: the folder of `path`. Temporary files in it that a killed program left
// behind are removed first: their room may be what is missing. A symbolic link at `path` is
// followed. An existing file keeps its permissions; a new one is readable by its owner alone. No
// folder is made.
std::error_code replaceFile(const std::filesystem::path& path, std::string_view content,
                            const std::filesystem::path& temporaryFolder = {});

}  // namespace tintoral
