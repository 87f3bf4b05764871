#include "support/folders.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace tintoral {
namespace {

std::filesystem::path namedHome() {
    const char* variable = std::getenv("HOME");
    if (variable && *variable == '/') return variable;
    const passwd* user = ::getpwuid(::getuid());
    return user && user->pw_dir ? user->pw_dir : "";
}

bool isFolder(const std::filesystem::path& path) {
    std::error_code ignored;
    return std::filesystem::is_directory(path, ignored);
}

}  // namespace

std::filesystem::path homeFolder() {
    auto home = namedHome();
    return isFolder(home) ? home : std::filesystem::path();
}

std::error_code makeFolders(const std::filesystem::path& folder) {
    int reason = ENOTDIR;
    std::filesystem::path partial;
    for (const auto& part : folder) {
        partial /= part;
        if (::mkdir(partial.c_str(), 0700) != 0 && errno != EEXIST) reason = errno;
    }
    return isFolder(folder) ? std::error_code() : std::error_code(reason, std::generic_category());
}

}  // namespace tintoral
