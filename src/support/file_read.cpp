#include "support/file_read.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "support/unique_fd.h"

namespace tintoral {
namespace {

std::error_code lastError() {
    return {errno, std::generic_category()};
}

std::error_code sizeOfRegularFile(int fd, std::size_t& size) {
    struct stat info {};
    if (::fstat(fd, &info) != 0) return lastError();
    if (S_ISDIR(info.st_mode)) return std::make_error_code(std::errc::is_a_directory);
    if (!S_ISREG(info.st_mode)) return std::make_error_code(std::errc::not_supported);
    size = static_cast<std::size_t>(info.st_size);
    return {};
}

std::error_code readAll(int fd, std::string& content) {
    std::size_t filled = 0;
    while (filled < content.size()) {
        const ssize_t count = ::read(fd, content.data() + filled, content.size() - filled);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return lastError();
        if (count == 0) break;
        filled += static_cast<std::size_t>(count);
    }
    content.resize(filled);
    return {};
}

}  // namespace

std::string readFileStart(const std::filesystem::path& path, std::size_t limit,
                          std::error_code& error) {
    const UniqueFd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    std::size_t size = 0;
    error = fd.valid() ? sizeOfRegularFile(fd.get(), size) : lastError();
    if (error) return {};
    std::string content(std::min(size, limit), '\0');
    error = readAll(fd.get(), content);
    return error ? std::string() : content;
}

}  // namespace tintoral
