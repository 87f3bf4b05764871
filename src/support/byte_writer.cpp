#include "support/byte_writer.h"

#include <algorithm>
#include <array>

namespace tintoral {

ByteWriter& ByteWriter::bytes(Bytes source) {
    if (failed_ || source.size() > buffer_.size() - size_) {
        failed_ = true;
        return *this;
    }
    std::ranges::copy(source, buffer_.subspan(size_).begin());
    size_ += source.size();
    return *this;
}

ByteWriter& ByteWriter::u8(std::uint8_t value) {
    return bytes({&value, 1});
}

ByteWriter& ByteWriter::be16(std::uint16_t value) {
    const std::array b{static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
    return bytes(b);
}

ByteWriter& ByteWriter::le16(std::uint16_t value) {
    const std::array b{static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8)};
    return bytes(b);
}

ByteWriter& ByteWriter::be32(std::uint32_t value) {
    return be16(static_cast<std::uint16_t>(value >> 16)).be16(static_cast<std::uint16_t>(value));
}

}  // namespace tintoral
