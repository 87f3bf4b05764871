#include "support/resources.h"

namespace tintoral {
namespace {

// The folder above the executable's; links (as in the print system's filter folder) are followed.
std::filesystem::path prefix() {
    std::error_code ignored;
    return std::filesystem::read_symlink("/proc/self/exe", ignored).parent_path().parent_path();
}

}  // namespace

std::filesystem::path resourceFolder() {
    return prefix() / "share" / "tintoral";
}

std::filesystem::path moduleFolder() {
    return prefix() / "lib" / "tintoral";
}

}  // namespace tintoral
