#include "netproto/http_headers.h"

#include <algorithm>

#include "support/text.h"

namespace tintoral {
namespace {

bool isControl(char c) {
    const auto code = static_cast<unsigned char>(c);
    return code < ' ' || code == 0x7F;
}

constexpr int kMostHeaderLines = 128;

void addHeaderLine(PairList& list, std::string_view line) {
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) return;
    NewPair(list, trimmed(line.substr(0, colon + 1)), trimmed(line.substr(colon + 1)));
}

}  // namespace

void NewPair(PairList& list, std::string_view name, std::string_view value) {
    list.push_back({std::string(name), std::string(value)});
}

std::size_t GetPairValue(const PairList& list, std::string_view name, std::string& value) {
    const auto found = std::ranges::find_if(
        list, [&](const Pair& pair) { return startsWithIgnoringCase(pair.name, name); });
    value = found == list.end() ? std::string() : found->value;
    return value.size();
}

int CmpPair(const PairList& list, std::string_view name, std::string_view value) {
    const auto found = std::ranges::find_if(
        list, [&](const Pair& pair) { return equalsIgnoringCase(pair.name, name); });
    if (found == list.end()) return -1;
    return found->value == value ? 0 : 1;
}

int readHeaders(HttpReader& reader, HttpConnection& connection, PairList& list) {
    std::string line;
    for (int i = 0; i < kMostHeaderLines; ++i) {
        if (const int failed = reader.readLine(connection, line)) return failed;
        if (line == "\r\n" || line == "\n") return 0;
        addHeaderLine(list, line);
    }
    return http_errors::malformed;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string withoutControls(std::string_view text) {
    std::string clean(text);
    std::erase_if(clean, isControl);
    return clean;
}

std::string headerLines(const PairList& list) {
    std::string lines;
    for (const Pair& pair : list) {
        lines += withoutControls(pair.name) + ": " + withoutControls(pair.value) + "\r\n";
    }
    return lines + "\r\n";
}

}  // namespace tintoral
