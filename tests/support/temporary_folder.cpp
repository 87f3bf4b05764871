#include "support/temporary_folder.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace tintoral::test {

TemporaryFolder::TemporaryFolder() {
    std::string pattern =
        (std::filesystem::temp_directory_path() / "tintoral-test-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp failed");
    path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

void writeFile(const std::filesystem::path& path, std::string_view content) {
    std::ofstream(path, std::ios::binary) << content;
}

std::string readFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

ScopedEnvironment::ScopedEnvironment(std::string name, const std::string& value)
    : name_(std::move(name)) {
    const char* previous = std::getenv(name_.c_str());
    wasSet_ = previous != nullptr;
    if (wasSet_) previous_ = previous;
    ::setenv(name_.c_str(), value.c_str(), 1);
}

ScopedEnvironment::~ScopedEnvironment() {
    if (wasSet_) {
        ::setenv(name_.c_str(), previous_.c_str(), 1);
    } else {
        ::unsetenv(name_.c_str());
    }
}

}  // namespace tintoral::test
