// Streams in memory, where the filter has the printer and the print server.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace tintoral {

class CapturedStream {
  public:
    CapturedStream() : file_(::open_memstream(&text_, &size_)) {}
    ~CapturedStream() {
        std::fclose(file_);
        std::free(text_);
    }
    CapturedStream(const CapturedStream&) = delete;
    CapturedStream& operator=(const CapturedStream&) = delete;

    std::FILE* file() { return file_; }

    // What has been written and flushed since the last call.
    std::string take() {
        const std::string_view flushed(text_ ? text_ : "", size_);
        std::string fresh(flushed.substr(taken_));
        taken_ = flushed.size();
        return fresh;
    }

  private:
    char* text_ = nullptr;
    std::size_t size_ = 0;
    std::size_t taken_ = 0;
    std::FILE* file_;
};

}  // namespace tintoral
