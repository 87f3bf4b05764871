#include "history/ink_history_store.h"

#include <algorithm>
#include <cmath>

#include "records/ink_dict.h"
#include "support/folders.h"
#include "support/report.h"

namespace tintoral {
namespace {

constexpr std::string_view kSupportFolder = "library/Application Support";
constexpr std::string_view kHistoryFolder = "Tintoral";
constexpr std::string_view kNoHistory = ".DS_Store";
constexpr std::string_view kDamagedFolder = "Tintoral damaged";

std::filesystem::path supportFolder() {
    const auto home = homeFolder();
    return home.empty() ? home : home / kSupportFolder;
}

bool isPlainFileName(std::string_view name) {
    constexpr std::size_t kLongestFileName = 255;
    constexpr std::string_view kNotInNames("/\0", 2);
    return !name.empty() && name != "." && name != ".." && name.size() <= kLongestFileName &&
           name.find_first_of(kNotInNames) == std::string_view::npos;
}

// Empty when the printer can have no history.
std::filesystem::path historyFile(std::string_view printerId) {
    const auto folder = historyFolder();
    return folder.empty() || !isPlainFileName(printerId) ? std::filesystem::path()
                                                         : folder / printerId;
}

bool isHistoryOrAbsent(const PropertyListFile& file) {
    return file.state == FileState::Absent || file.root.as<Array>() != nullptr;
}

Array takeEntries(PropertyListFile& file) {
    auto* entries = file.root.as<Array>();
    return entries ? std::move(*entries) : Array();
}

bool keepHistoryAside(const std::filesystem::path& path, const PropertyListFile& file) {
    if (file.state == FileState::OutOfReach) return false;
    const auto aside = keepAside(path, supportFolder() / kDamagedFolder);
    if (aside.empty()) return false;
    const auto reason = file.reason.empty() ? path.string() + ": not an array" : file.reason;
    reportLine("the ink history cannot be read: " + reason + "; kept as " + aside.string());
    return true;
}

bool writeHistory(const std::filesystem::path& path, Array history) {
    const Value root(std::move(history));
    const auto write = [&](const std::filesystem::path& temporaryFolder) {
        return writePropertyListFile(path, root, temporaryFolder, PropertyListFormat::Binary);
    };
    auto error = write(supportFolder());
    if (error == std::errc::cross_device_link) error = write({});
    return !error;
}

// An absent value equals nothing.
bool sameUnder(std::string_view key, const Dictionary& a, const Dictionary& b) {
    const Value* value = a.find(key);
    const Value* other = b.find(key);
    return value && other && *value == *other;
}

// The entry that stands for the end of a run of readings like this one, or null. The last two
// entries are compared under every key of the reading, "Date" among them, as meant: only entries of
// the same second begin a run.
Dictionary* endOfEqualRun(Array& history, const Dictionary& reading) {
    if (history.size() < 2) return nullptr;
    const auto* previous = history[history.size() - 2].as<Dictionary>();
    auto* last = history.back().as<Dictionary>();
    if (!previous || !last) return nullptr;
    const bool same = std::ranges::all_of(reading, [&](const Dictionary::Entry& entry) {
        return sameUnder(entry.first, *previous, *last) &&
               (!isInkName(entry.first) || sameUnder(entry.first, *last, reading));
    });
    return same ? last : nullptr;
}

struct IntegerValue {
    std::uint64_t operator()(std::int64_t number) const {
        return static_cast<std::uint64_t>(number);
    }
    std::uint64_t operator()(double number) const {
        constexpr double kLimit = 9e18;  // within 64 bits
        if (std::isnan(number)) return 0;
        return static_cast<std::uint64_t>(
            static_cast<std::int64_t>(std::clamp(number, -kLimit, kLimit)));
    }
    template <typename T>
    std::uint64_t operator()(const T&) const {
        return 0;
    }
};

// The values of one entry under the keys of another, summed modulo 2^64; absent ones and those that
// are no numbers count 0. The key left out is "Data", as meant, and not "Date".
std::uint64_t sumOfValues(const Dictionary& keysOf, const Dictionary& valuesOf) {
    std::uint64_t sum = 0;
    for (const auto& [key, unused] : keysOf) {
        const Value* value = key == "Data" || key == keys::colors ? nullptr : valuesOf.find(key);
        if (value) sum += std::visit(IntegerValue(), value->storage());
    }
    return sum;
}

// The third sum takes the values of the middle entry under the keys of the last, as meant: what the
// last one reads does not count.
bool isMiddleRedundant(const Value& first, const Value& middle, const Value& last) {
    const auto* a = first.as<Dictionary>();
    const auto* b = middle.as<Dictionary>();
    const auto* c = last.as<Dictionary>();
    if (!a || !b || !c) return false;
    const std::uint64_t sum = sumOfValues(*a, *a);
    return sum == sumOfValues(*b, *b) && sum == sumOfValues(*c, *b);
}

// One pass over the entries: `kept` ends before the middle of the triple that is looked at.
void compact(Array& history) {
    if (history.size() < 3) return;
    std::size_t kept = 1;
    for (std::size_t next = 2; next < history.size(); ++next) {
        if (!isMiddleRedundant(history[kept - 1], history[kept], history[next])) ++kept;
        if (kept != next) history[kept] = std::move(history[next]);
    }
    history.resize(kept + 1);
}

}  // namespace

std::filesystem::path historyFolder() {
    const auto folder = supportFolder();
    return folder.empty() ? folder : folder / kHistoryFolder;
}

void prepareHistoryFolder() {
    const auto folder = historyFolder();
    if (!folder.empty()) makeFolders(folder);
}

std::vector<std::string> printersWithHistory() {
    std::vector<std::string> names;
    std::error_code error;
    std::filesystem::directory_iterator entry(historyFolder(), error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        names.push_back(entry->path().filename().string());
    }
    std::erase(names, kNoHistory);
    return names;
}

std::shared_ptr<const Array> inkHistory(std::string_view printerId) {
    const auto path = historyFile(printerId);
    PropertyListFile file = path.empty() ? PropertyListFile() : readPropertyListFile(path);
    auto* entries = file.root.as<Array>();
    return entries ? std::make_shared<const Array>(std::move(*entries)) : nullptr;
}

void addReading(Array& history, Dictionary inkDict, Date now) {
    if (Dictionary* last = endOfEqualRun(history, inkDict)) {
        last->set(keys::date, now);
        return;
    }
    inkDict.set(keys::date, now);
    history.emplace_back(std::move(inkDict));
}

void addReadingCompacted(Array& history, const Dictionary& inkDict) {
    history.emplace_back(inkDict);
    compact(history);
}

bool saveInkReadingsForPrinterId(Dictionary inkDict, std::string_view printerId) {
    const auto path = historyFile(printerId);
    if (path.empty()) return false;
    PropertyListFile file = readPropertyListFile(path);
    if (!isHistoryOrAbsent(file) && !keepHistoryAside(path, file)) return false;
    Array history = takeEntries(file);
    addReading(history, std::move(inkDict), currentDate());
    return writeHistory(path, std::move(history));
}

std::optional<Dictionary> lastLevelForPrinterId(std::string_view printerId) {
    const auto path = historyFile(printerId);
    const auto last = path.empty() ? std::nullopt : readLastItemOfFile(path);
    const auto* entry = last ? last->as<Dictionary>() : nullptr;
    return entry ? std::optional(*entry) : std::nullopt;
}

void saveInkReadings(const Dictionary& inkDict, std::string_view printerId) {
    const auto path = historyFile(printerId);
    PropertyListFile file = path.empty() ? PropertyListFile() : readPropertyListFile(path);
    if (!file.root.as<Array>()) return;
    Array history = takeEntries(file);
    addReadingCompacted(history, inkDict);
    writeHistory(path, std::move(history));
}

}  // namespace tintoral
