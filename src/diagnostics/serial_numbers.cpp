#include "diagnostics/serial_numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <vector>

#include "support/text.h"

namespace tintoral {
namespace {

constexpr char kMask = '*';
constexpr std::array<std::string_view, 3> kSerialKeys{"SERIALNUMBER:", "SERN:", "SN:"};
constexpr std::string_view kEndOfValue = ";\n\r\"'";
constexpr std::string_view kEndOfValueInBytes{";\n\r\0", 4};
constexpr std::size_t kShortestSerialNumber = 4;

// Where things stand in a line of a hex dump: "0010  53 4E 3A ...  SN:...".
constexpr std::size_t kBytesPerLine = 16;
constexpr std::size_t kHexDistance = 3;
constexpr std::size_t kGapBeforeText = 2;

bool isLetterOrDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

void hideFields(std::string& text, std::string_view key, std::string_view ends) {
    std::size_t from = 0;
    for (;;) {
        const std::size_t at = findIgnoringCase(std::string_view(text).substr(from), key);
        if (at == std::string_view::npos) return;
        const std::size_t value = from + at + key.size();
        const bool isWholeKey = from + at == 0 || !isLetterOrDigit(text[from + at - 1]);
        from = value;
        if (!isWholeKey) continue;
        const std::size_t end = std::min(text.find_first_of(ends, value), text.size());
        std::fill(text.begin() + static_cast<std::ptrdiff_t>(value),
                  text.begin() + static_cast<std::ptrdiff_t>(end), kMask);
    }
}

void hideIn(std::string& text, std::string_view serialNumber, std::string_view ends) {
    for (const std::string_view key : kSerialKeys) hideFields(text, key, ends);
    if (serialNumber.size() < kShortestSerialNumber) return;
    for (std::size_t at = text.find(serialNumber); at != std::string::npos;
         at = text.find(serialNumber, at + serialNumber.size())) {
        text.replace(at, serialNumber.size(), serialNumber.size(), kMask);
    }
}

std::optional<std::uint8_t> hexByte(std::string_view digits) {
    unsigned value = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    if (error != std::errc{} || end != digits.data() + digits.size()) return std::nullopt;
    return static_cast<std::uint8_t>(value);
}

// A line of a dump: where its bytes begin in the report, and what they are.
struct DumpLine {
    std::size_t offset = 0;
    std::size_t hexAt = 0;
    std::string bytes;

    std::size_t textAt() const { return hexAt + kBytesPerLine * kHexDistance - 1 + kGapBeforeText; }
};

// `line` begins at `at` in the report. Nothing for a line that is not of a dump.
std::optional<DumpLine> dumpLine(std::string_view line, std::size_t at) {
    const std::size_t digits = line.find("  ");
    if (digits == std::string_view::npos || digits < 4 || digits > 8) return std::nullopt;
    DumpLine found;
    const char* offsetEnd = line.data() + digits;
    const auto [end, error] = std::from_chars(line.data(), offsetEnd, found.offset, 16);
    if (error != std::errc{} || end != offsetEnd) return std::nullopt;
    found.hexAt = at + digits + 2;
    const std::size_t hexWidth = kBytesPerLine * kHexDistance - 1;
    const std::string_view hex = line.substr(digits + 2);
    for (std::size_t i = 0; i < hexWidth && hex.size() > hexWidth; i += kHexDistance) {
        const auto byte = hexByte(hex.substr(i, 2));
        if (!byte) break;
        found.bytes += static_cast<char>(*byte);
    }
    if (found.bytes.empty() || hex.size() != hexWidth + kGapBeforeText + found.bytes.size())
        return std::nullopt;
    return found;
}

void putBack(std::string& report, const DumpLine& line, std::string_view bytes) {
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (bytes[i] == line.bytes[i]) continue;
        report.replace(line.hexAt + i * kHexDistance, 2, "2A");  // the code of "*"
        report[line.textAt() + i] = kMask;
    }
}

void hideInDump(std::string& report, std::vector<DumpLine>& dump, std::string_view serialNumber) {
    std::string bytes;
    for (const DumpLine& line : dump) bytes += line.bytes;
    hideIn(bytes, serialNumber, kEndOfValueInBytes);
    std::string_view rest = bytes;
    for (const DumpLine& line : dump) {
        putBack(report, line, rest.substr(0, line.bytes.size()));
        rest.remove_prefix(line.bytes.size());
    }
    dump.clear();
}

// Lines follow each other in a dump; one of offset 0 begins a new one.
void hideInDumps(std::string& report, std::string_view serialNumber) {
    std::vector<DumpLine> dump;
    for (std::size_t at = 0; at < report.size();) {
        const std::size_t end = std::min(report.find('\n', at), report.size());
        auto line = dumpLine(std::string_view(report).substr(at, end - at), at);
        if (!line || line->offset == 0) hideInDump(report, dump, serialNumber);
        if (line) dump.push_back(std::move(*line));
        at = end + 1;
    }
    hideInDump(report, dump, serialNumber);
}

}  // namespace

void hideSerialNumbers(std::string& report, std::string_view serialNumber) {
    hideInDumps(report, serialNumber);
    hideIn(report, serialNumber, kEndOfValue);
}

}  // namespace tintoral
