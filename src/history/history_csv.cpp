#include "history/history_csv.h"

#include <array>
#include <cstdio>

#include "history/chart_geometry.h"
#include "records/ink_dict.h"
#include "records/printer_record.h"

namespace tintoral {
namespace {

constexpr std::string_view kLineEnd = "\r\n";

std::string quoted(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string field = "\"";
    for (const char c : text) field.append(c == '"' ? 2 : 1, c);
    return field + '"';
}

std::string fieldOf(const std::string& text) {
    const bool isFormula = text.find_first_of("=+-@") == 0;
    return quoted(isFormula ? "'" + text : text);
}

std::string dateField(Date date) {
    const auto day = std::chrono::floor<std::chrono::days>(date);
    const std::chrono::year_month_day ymd(day);
    const std::chrono::hh_mm_ss time(date - day);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u %02d:%02d:%02d",
                  static_cast<int>(ymd.year()), static_cast<unsigned>(ymd.month()),
                  static_cast<unsigned>(ymd.day()), static_cast<int>(time.hours().count()),
                  static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return text.data();
}

std::string levelField(const Dictionary& entry, const std::string& ink) {
    const Value* value = entry.find(ink);
    const auto level = value ? levelOf(*value) : std::nullopt;
    return level ? std::to_string(*level) : std::string();
}

}  // namespace

std::string historyCsv(const Array& history) {
    const auto inks = chartSeries(history);
    std::string csv = "Date (UTC)";
    for (const ChartSeries& ink : inks) csv += "," + fieldOf(ink.name);
    csv += kLineEnd;
    for (const Value& value : history) {
        const auto* entry = value.as<Dictionary>();
        const auto date = entry ? entry->date(keys::date) : std::nullopt;
        if (!date) continue;
        csv += dateField(*date);
        for (const ChartSeries& ink : inks) csv += "," + levelField(*entry, ink.key);
        csv += kLineEnd;
    }
    return csv;
}

}  // namespace tintoral
