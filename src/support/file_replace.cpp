#include "support/file_replace.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>

#include "support/unique_fd.h"

namespace tintoral {
namespace {

std::error_code lastError() {
    return {errno, std::generic_category()};
}

std::filesystem::path followLinks(const std::filesystem::path& path) {
    std::error_code ignored;
    const auto target = std::filesystem::canonical(path, ignored);
    return ignored ? path : target;
}

std::error_code writeAll(int fd, std::string_view content) {
    while (!content.empty()) {
        const ssize_t count = ::write(fd, content.data(), content.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return lastError();
        content.remove_prefix(static_cast<std::size_t>(count));
    }
    return {};
}

std::error_code copyPermissions(const std::filesystem::path& from, int fd) {
    struct stat existing {};
    if (::stat(from.c_str(), &existing) != 0) return {};
    return ::fchmod(fd, existing.st_mode & 07777) == 0 ? std::error_code{} : lastError();
}

std::error_code fillAndFlush(int fd, std::string_view content) {
    if (const auto error = writeAll(fd, content)) return error;
    return ::fsync(fd) == 0 ? std::error_code{} : lastError();
}

}  // namespace

std::error_code replaceFile(const std::filesystem::path& path, std::string_view content,
                            const std::filesystem::path& temporaryFolder) {
    const auto target = followLinks(path);
    const auto folder = temporaryFolder.empty() ? target.parent_path() : temporaryFolder;
    std::string temporary = (folder / ".tintoral-XXXXXX").string();
    UniqueFd fd(::mkostemp(temporary.data(), O_CLOEXEC));
    if (!fd.valid()) return lastError();
    auto error = copyPermissions(target, fd.get());
    if (!error) error = fillAndFlush(fd.get(), content);
    if (!error && ::rename(temporary.c_str(), target.c_str()) != 0) error = lastError();
    if (error) ::unlink(temporary.c_str());
    return error;
}

}  // namespace tintoral
