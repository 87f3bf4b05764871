#include "support/file_replace.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>

#include "support/unique_fd.h"

namespace tintoral {
namespace {

constexpr std::string_view kTemporaryName = ".tintoral-XXXXXX";

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

// A writer holds a lock on its file; the lock of one that was killed died with it. The file is
// removed under the lock: a writer that has just made it sees that when it gets the lock.
void removeIfAbandoned(const std::filesystem::path& file) {
    const UniqueFd fd(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
    struct stat info {};
    if (fd.valid() && ::fstat(fd.get(), &info) == 0 && S_ISREG(info.st_mode) &&
        info.st_uid == ::geteuid() && ::flock(fd.get(), LOCK_EX | LOCK_NB) == 0)
        ::unlink(file.c_str());
}

bool isTemporaryName(std::string_view name) {
    const auto prefix = kTemporaryName.substr(0, kTemporaryName.find('X'));
    return name.size() == kTemporaryName.size() && name.starts_with(prefix);
}

void removeAbandoned(const std::filesystem::path& folder) {
    std::error_code error;
    std::filesystem::directory_iterator entry(folder, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const auto& file = entry->path();
        if (isTemporaryName(file.filename().native())) removeIfAbandoned(file);
    }
}

// A locked temporary file; not valid, with errno set, when none can be made. Where the file system
// has no locks it stays unlocked, and abandoned ones stay too.
UniqueFd makeTemporary(std::string& name) {
    constexpr int kAttempts = 10;
    const std::string pattern = name;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        name = pattern;
        UniqueFd fd(::mkostemp(name.data(), O_CLOEXEC));
        if (!fd.valid()) return fd;
        const bool taken = ::flock(fd.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
        struct stat info {};
        if (!taken && ::fstat(fd.get(), &info) == 0 && info.st_nlink > 0) return fd;
    }  // another process took it for abandoned before it was locked
    errno = EBUSY;
    return {};
}

}  // namespace

std::error_code replaceFile(const std::filesystem::path& path, std::string_view content,
                            const std::filesystem::path& temporaryFolder) {
    const auto target = followLinks(path);
    const auto folder = temporaryFolder.empty() ? target.parent_path() : temporaryFolder;
    removeAbandoned(folder);
    std::string temporary = (folder / kTemporaryName).string();
    const UniqueFd fd = makeTemporary(temporary);
    if (!fd.valid()) return lastError();
    auto error = copyPermissions(target, fd.get());
    if (!error) error = fillAndFlush(fd.get(), content);
    if (!error && ::rename(temporary.c_str(), target.c_str()) != 0) error = lastError();
    if (error) ::unlink(temporary.c_str());
    return error;
}

}  // namespace tintoral
