// Reading a file that may be anything: too large, a FIFO, a folder, a device.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <system_error>

namespace tintoral {

// The first `limit` bytes of a regular file; empty with `error` set when it cannot be opened or
// read. Anything but a regular file is refused (is_a_directory, not_supported) and never waited
// for.
std::string readFileStart(const std::filesystem::path& path, std::size_t limit,
                          std::error_code& error);

}  // namespace tintoral
