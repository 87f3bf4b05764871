#include "history/monthly_levels.h"

#include <algorithm>

#include "records/ink_dict.h"

namespace tintoral {
namespace {

using std::chrono::year_month;

struct Reading {
    Date date;
    const Dictionary* entry;
};

constexpr Date kEarliest = std::chrono::sys_days{std::chrono::year{1} / 1 / 1};
constexpr Date kLatest = std::chrono::sys_days{std::chrono::year{9999} / 12 / 31};

year_month monthOf(Date date) {
    const std::chrono::year_month_day day{std::chrono::floor<std::chrono::days>(date)};
    return day.year() / day.month();
}

// Oldest first; readings of the same second in the order of the history.
std::vector<Reading> datedReadings(const Array& history) {
    std::vector<Reading> readings;
    for (const Value& value : history) {
        const auto* entry = value.as<Dictionary>();
        const auto date = entry ? entry->date(keys::date) : std::nullopt;
        if (date && *date >= kEarliest && *date <= kLatest) readings.push_back({*date, entry});
    }
    std::ranges::stable_sort(readings, {}, &Reading::date);
    return readings;
}

void dropReadingsAfter(Date now, std::vector<Reading>& readings) {
    const auto later = std::ranges::upper_bound(readings, now, {}, &Reading::date);
    if (later != readings.begin()) readings.erase(later, readings.end());
}

void dropReadingsBefore(year_month month, std::vector<Reading>& readings) {
    const auto first = std::ranges::find_if(
        readings, [&](const Reading& reading) { return monthOf(reading.date) >= month; });
    readings.erase(readings.begin(), first);
}

std::vector<year_month> shownMonths(const std::vector<Reading>& readings) {
    std::vector<year_month> months;
    if (readings.empty()) return months;
    const year_month newest = monthOf(readings.back().date);
    const auto fewest = newest - std::chrono::months(kFewestMonths - 1);
    for (year_month month = std::min(monthOf(readings.front().date), fewest); month <= newest;
         month += std::chrono::months(1)) {
        months.push_back(month);
    }
    return months;
}

// Markers in place of a level are none here.
std::optional<int> shownLevelOf(const Value& value) {
    const auto level = levelOf(value);
    return level && *level >= 0 ? level : std::nullopt;
}

void addInk(std::string_view name, std::vector<std::string>& inks) {
    if (name.empty() || !isInkName(name) || inks.size() == kMostMonthlyInks) return;
    if (std::ranges::find(inks, name) == inks.end()) inks.emplace_back(name);
}

std::vector<std::string> namesOfLastEntry(const Array& history) {
    const auto* last = history.empty() ? nullptr : history.back().as<Dictionary>();
    const auto names = last ? last->texts(keys::colors) : std::nullopt;
    return names.value_or(std::vector<std::string>());
}

std::vector<std::string> shownInks(const Array& history, const std::vector<Reading>& readings) {
    std::vector<std::string> inks;
    for (const std::string& name : namesOfLastEntry(history)) addInk(name, inks);
    for (const Reading& reading : readings) {
        if (inks.size() == kMostMonthlyInks) break;
        for (const auto& [key, value] : *reading.entry) {
            if (shownLevelOf(value)) addInk(key, inks);
        }
    }
    return inks;
}

std::size_t monthsBetween(year_month first, year_month second) {
    return static_cast<std::size_t>((second - first).count());
}

std::vector<std::optional<int>> levelsOfInk(const std::string& ink,
                                            const std::vector<Reading>& readings,
                                            const std::vector<year_month>& months) {
    std::vector<std::optional<int>> levels(months.size());
    for (const Reading& reading : readings) {
        const Value* value = reading.entry->find(ink);
        const auto level = value ? shownLevelOf(*value) : std::nullopt;
        if (level) levels[monthsBetween(months.front(), monthOf(reading.date))] = level;
    }
    return levels;
}

}  // namespace

MonthlyLevels monthlyLevels(const Array& history, Date now) {
    std::vector<Reading> readings = datedReadings(history);
    dropReadingsAfter(now, readings);
    if (!readings.empty()) {
        const auto span = std::chrono::months(kMostMonths - 1);
        dropReadingsBefore(monthOf(readings.back().date) - span, readings);
    }
    MonthlyLevels table;
    table.months = shownMonths(readings);
    table.inks = shownInks(history, readings);
    for (const std::string& ink : table.inks) {
        table.levels.push_back(levelsOfInk(ink, readings, table.months));
    }
    return table;
}

}  // namespace tintoral
