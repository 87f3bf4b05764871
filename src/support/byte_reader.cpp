#include "support/byte_reader.h"

namespace tintoral {

Bytes ByteReader::take(std::size_t count) {
    if (count > rest_.size()) {
        failed_ = true;
        rest_ = {};
        return {};
    }
    const Bytes taken = rest_.first(count);
    rest_ = rest_.subspan(count);
    return taken;
}

std::uint8_t ByteReader::u8() {
    const Bytes b = take(1);
    return b.empty() ? std::uint8_t{0} : b[0];
}

std::uint16_t ByteReader::be16() {
    const Bytes b = take(2);
    return b.empty() ? std::uint16_t{0} : static_cast<std::uint16_t>(b[0] << 8 | b[1]);
}

std::uint16_t ByteReader::le16() {
    const Bytes b = take(2);
    return b.empty() ? std::uint16_t{0} : static_cast<std::uint16_t>(b[1] << 8 | b[0]);
}

std::uint32_t ByteReader::be32() {
    const Bytes b = take(4);
    if (b.empty()) return 0;
    return std::uint32_t{b[0]} << 24 | std::uint32_t{b[1]} << 16 | std::uint32_t{b[2]} << 8 | b[3];
}

std::string_view asText(Bytes bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::string_view textBeforeNul(Bytes bytes) {
    const std::string_view text = asText(bytes);
    return text.substr(0, text.find('\0'));
}

Bytes asBytes(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::optional<std::string_view> textAfter(std::string_view text, std::string_view tag) {
    const auto at = text.find(tag);
    if (at == std::string_view::npos) return std::nullopt;
    return text.substr(at + tag.size());
}

std::optional<std::string_view> textBetween(std::string_view text, std::string_view tag, char end) {
    const auto after = textAfter(text, tag);
    if (!after) return std::nullopt;
    const auto stop = after->find(end);
    if (stop == std::string_view::npos) return std::nullopt;
    return after->substr(0, stop);
}

}  // namespace tintoral
