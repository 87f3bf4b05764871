// A folder of the test's own, removed with all that is in it.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tintoral::test {

class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

  private:
    std::filesystem::path path_;
};

void writeFile(const std::filesystem::path& path, std::string_view content);
std::string readFile(const std::filesystem::path& path);

// While it lives, an environment variable has another value.
class ScopedEnvironment {
  public:
    ScopedEnvironment(std::string name, const std::string& value);
    ~ScopedEnvironment();
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

  private:
    std::string name_;
    std::string previous_;
    bool wasSet_;
};

}  // namespace tintoral::test
