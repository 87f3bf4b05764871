#include "records/icon_path_table.h"

#include <algorithm>

#include "support/byte_reader.h"
#include "support/file_read.h"
#include "support/text.h"

namespace tintoral {
namespace {

constexpr int kLinesExamined = 100;
constexpr std::size_t kBytesExamined = 32 << 10;
constexpr std::size_t kMaximumFiles = 1000;

struct Keyword {
    std::string_view text;
    std::optional<std::string> IconPathEntry::*value;
};

constexpr Keyword kKeywords[] = {
    {"*ModelName:", &IconPathEntry::modelname},
    {"*APPrinterIconPath:", &IconPathEntry::iconPath},
};

void readPpdLine(std::string_view line, IconPathEntry& entry) {
    for (const auto& [keyword, value] : kKeywords) {
        const auto rest = textAfter(line, keyword);
        if (!rest) continue;
        const auto quoted = stripDoubleQuotes(*rest);
        entry.*value = quoted ? std::optional(cleanText(*quoted)) : std::nullopt;
    }
}

IconPathEntry entryForFile(const std::filesystem::path& path) {
    IconPathEntry entry{path.filename().string(), std::nullopt, std::nullopt, path.string()};
    std::error_code ignored;
    readPpdLines(readFileStart(path, kBytesExamined, ignored), entry);
    return entry;
}

}  // namespace

std::optional<std::string> stripDoubleQuotes(std::string_view text) {
    const auto quoted = textBetween(text, "\"", '"');
    return quoted ? std::optional<std::string>(*quoted) : std::nullopt;
}

void readPpdLines(std::string_view ppd, IconPathEntry& entry) {
    for (int line = 0; line < kLinesExamined && !ppd.empty(); ++line) {
        const std::size_t end = std::min(ppd.find('\n'), ppd.size());
        readPpdLine(ppd.substr(0, end), entry);
        ppd.remove_prefix(std::min(end + 1, ppd.size()));
    }
}

std::vector<IconPathEntry> makeIconPathTable(const std::filesystem::path& folder) {
    std::vector<IconPathEntry> table;
    std::error_code error;
    std::filesystem::directory_iterator at(folder, error);
    for (; !error && at != std::filesystem::directory_iterator() && table.size() < kMaximumFiles;
         at.increment(error)) {
        table.push_back(entryForFile(at->path()));
    }
    return table;
}

}  // namespace tintoral
