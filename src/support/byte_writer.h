// The one way in which a message to a printer is built: bytes appended to a buffer that the caller
// owns.
//
// A write that does not fit writes nothing and sets failed(); what was written before stays.
// Builders return finish(), so a buffer that is too small yields 0 and never half a command.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "support/byte_reader.h"

namespace tintoral {

class ByteWriter {
  public:
    explicit ByteWriter(MutableBytes buffer) : buffer_(buffer) {}

    ByteWriter& u8(std::uint8_t value);
    ByteWriter& be16(std::uint16_t value);
    ByteWriter& le16(std::uint16_t value);
    ByteWriter& be32(std::uint32_t value);
    ByteWriter& bytes(Bytes source);
    ByteWriter& text(std::string_view source) { return bytes(asBytes(source)); }

    // For a message of which a part could not be built.
    void fail() { failed_ = true; }

    std::size_t size() const { return size_; }
    Bytes written() const { return buffer_.first(size_); }
    bool failed() const { return failed_; }

    // The number of bytes built, or 0 when something did not fit.
    std::size_t finish() const { return failed_ ? 0 : size_; }

  private:
    MutableBytes buffer_;
    std::size_t size_ = 0;
    bool failed_ = false;
};

}  // namespace tintoral
