#include "support/hex_dump.h"

#include <algorithm>

namespace tintoral {
namespace {

constexpr std::size_t kBytesPerLine = 16;
using Line = FixedText<96>;

char printable(std::uint8_t byte) {
    return byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.';
}

void formatLine(Line& line, std::size_t offset, Bytes bytes) {
    constexpr std::string_view kNoByte = "   ";
    line.format("%04zX ", offset);
    for (const std::uint8_t byte : bytes) line.appendFormat(" %02X", static_cast<unsigned>(byte));
    for (std::size_t i = bytes.size(); i < kBytesPerLine; ++i) line.append(kNoByte);
    line.append("  ");
    for (const std::uint8_t byte : bytes) line.appendFormat("%c", printable(byte));
    line.append("\n");
}

}  // namespace

std::size_t sDumpPacket(BoundedText& text, Bytes packet) {
    const std::size_t before = text.size();
    ByteReader reader(packet);
    Line line;
    while (!reader.atEnd()) {
        const std::size_t offset = packet.size() - reader.remaining();
        formatLine(line, offset, reader.take(std::min(kBytesPerLine, reader.remaining())));
        if (line.size() > text.capacity() - text.size()) break;
        text.append(line.view());
    }
    return text.size() - before;
}

}  // namespace tintoral
