// Text of a fixed capacity in its owner's storage: status texts, dumps, names in a record.
//
// Always NUL-terminated, never longer than its capacity: what does not fit is cut off. Functions
// take a BoundedText&, so that they need not know the capacity; callers hold a FixedText<N>.
// Nothing here allocates.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <string_view>

namespace tintoral {

class BoundedText {
  public:
    BoundedText(const BoundedText&) = delete;
    BoundedText& operator=(const BoundedText&) = delete;

    void clear();
    void assign(std::string_view text);
    void append(std::string_view text);

    // As printf; `format` replaces the text, `appendFormat` adds to it. The result is the number of
    // characters that were added, which is fewer than the format yields when the text is full.
    std::size_t format(const char* pattern, ...) __attribute__((format(printf, 2, 3)));
    std::size_t appendFormat(const char* pattern, ...) __attribute__((format(printf, 2, 3)));

    std::string_view view() const { return {storage_, size_}; }
    const char* c_str() const { return storage_; }
    std::size_t size() const { return size_; }
    std::size_t capacity() const { return capacity_; }
    bool empty() const { return size_ == 0; }

  protected:
    // `storage` holds `bytes` bytes, one of them for the NUL, and lives as long as this object.
    BoundedText(char* storage, std::size_t bytes) : storage_(storage), capacity_(bytes - 1) {}
    ~BoundedText() = default;

  private:
    std::size_t appendArguments(const char* pattern, std::va_list arguments);

    char* storage_;
    std::size_t capacity_;
    std::size_t size_ = 0;
};

// N is the size in bytes, the closing NUL included, as buffers are sized on the wire and in
// records.
template <std::size_t N>
class FixedText final : public BoundedText {
    static_assert(N > 1);

  public:
    FixedText() : BoundedText(storage_, N) {}
    explicit FixedText(std::string_view text) : FixedText() { assign(text); }
    FixedText(const FixedText& other) : FixedText(other.view()) {}
    FixedText& operator=(const FixedText& other) {
        if (this != &other) assign(other.view());
        return *this;
    }

  private:
    char storage_[N] = {};
};

// The printer's state in words, as every status parser fills it.
using StatusText = FixedText<64>;

// A readable dump of an exchange for the diagnostics report.
using DumpText = FixedText<2048>;

}  // namespace tintoral
