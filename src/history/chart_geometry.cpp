#include "history/chart_geometry.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <unordered_map>

#include "records/ink_dict.h"
#include "support/text.h"

namespace tintoral {
namespace {

using std::chrono::months;
using std::chrono::sys_days;
using std::chrono::year;
using std::chrono::year_month;
using std::chrono::year_month_day;

constexpr int kMonthsPerStep = 3;
constexpr year_month kFirstMonth = year{2006} / 1;
constexpr double kPointsPerDay = 12;  // in a period of one month
constexpr int kPointsPerPercent = 2;
constexpr int kFullLevel = 100;
constexpr int kDaysPerMonth = 30;
constexpr int kMostMonthsWithLabels = 8;
constexpr double kNearestMonthLine = 2;  // nearer to the frame's edge none is drawn
constexpr double kSquareReach = 3;       // of the square at a line's end
constexpr double kReach = 8;             // of the pointer
constexpr std::size_t kMostSeries = 100;

year_month monthOf(sys_days day) {
    const year_month_day date(day);
    return date.year() / date.month();
}

year_month monthAt(Date now) {
    return monthOf(std::chrono::floor<std::chrono::days>(now));
}

sys_days firstDay(year_month month) {
    return month / 1;
}

std::string twoDigits(int number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
}

year yearOfTwoDigits(int number) {
    constexpr int kFirstOfLastCentury = 69;
    return year{number + (number >= kFirstOfLastCentury ? 1900 : 2000)};
}

// The whole number that `text` begins with.
std::optional<int> leadingNumber(std::string_view text) {
    int number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    return result.ec == std::errc() ? std::optional(number) : std::nullopt;
}

// The number that `text` holds in digits and nothing else.
std::optional<int> wholeNumber(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789";
    return text.find_first_not_of(kDigits) == std::string_view::npos ? leadingNumber(text)
                                                                     : std::nullopt;
}

// Collects the readings of a history under the names of their inks.
class SeriesBuilder {
  public:
    void add(const Dictionary& entry) {
        const auto date = entry.date(keys::date);
        if (!date) return;
        const sys_days day = chartDay(*date);
        for (const auto& [key, value] : entry) {
            const auto level = isInkName(key) ? levelOf(value) : std::nullopt;
            if (level) addTo(key, {day, *level});
        }
    }

    // Ends the collection.
    std::vector<ChartSeries> take(const Value& last) {
        const auto* entry = last.as<Dictionary>();
        const auto texts = [&](std::string_view key) {
            return (entry ? entry->texts(key) : std::nullopt).value_or(std::vector<std::string>());
        };
        const auto names = texts(keys::colors);
        const auto colors = texts(keys::rgbColors);
        const auto rank = [&](const ChartSeries& series) {
            return std::ranges::find(names, series.key) - names.begin();
        };
        std::ranges::sort(series_, {}, &ChartSeries::key);
        std::ranges::stable_sort(series_, {}, rank);
        for (ChartSeries& series : series_) {
            const auto index = static_cast<std::size_t>(rank(series));
            if (index < std::min(names.size(), colors.size())) series.rgbColor = colors[index];
            series.name = cleanText(series.key);
        }
        return std::move(series_);
    }

  private:
    void addTo(std::string_view name, ChartReading reading) {
        auto found = indexes_.find(name);
        if (found == indexes_.end()) {
            if (series_.size() == kMostSeries) return;
            series_.push_back({std::string(name), {}, {}, {}});
            found = indexes_.emplace(name, series_.size() - 1).first;
        }
        series_[found->second].readings.push_back(reading);
    }

    std::vector<ChartSeries> series_;
    std::unordered_map<std::string_view, std::size_t> indexes_;  // views into the history's keys
};

// Draws the line of one ink, joining the points of a day.
class LineBuilder {
  public:
    explicit LineBuilder(const ChartScale& scale) : scale_(scale) {}

    void add(int days, int level) {
        if (days != days_) endDay();
        if (!first_) first_ = lowest_ = highest_ = level;
        days_ = days;
        lowest_ = std::min(lowest_, level);
        highest_ = std::max(highest_, level);
        last_ = level;
    }

    double x() const { return scale_.x(days_); }

    std::vector<ChartPoint> take() {
        endDay();
        return std::move(points_);
    }

  private:
    void endDay() {
        if (!first_) return;
        for (const int level : {*first_, lowest_, highest_, last_}) addPoint({x(), levelY(level)});
        first_.reset();
    }

    void addPoint(ChartPoint point) {
        const bool isRepeated =
            !points_.empty() && points_.back().x == point.x && points_.back().y == point.y;
        if (!isRepeated) points_.push_back(point);
    }

    ChartScale scale_;
    std::vector<ChartPoint> points_;
    int days_ = 0;
    std::optional<int> first_;  // of the day that is being joined
    int lowest_ = 0;
    int highest_ = 0;
    int last_ = 0;
};

}  // namespace

int periodMonths(int periodSteps) {
    return periodSteps * kMonthsPerStep + 1;
}

int monthIndexAt(Date now) {
    return static_cast<int>((monthAt(now) - kFirstMonth).count());
}

std::string monthLabel(int monthIndex) {
    const year_month month = kFirstMonth + months(monthIndex);
    return twoDigits(static_cast<int>(static_cast<unsigned>(month.month()))) + "/" +
           std::to_string(static_cast<int>(month.year()));
}

std::optional<int> monthIndexOfLabel(std::string_view label) {
    constexpr std::size_t kLength = 7;
    constexpr std::size_t kSlash = 2;
    if (label.size() != kLength || label[kSlash] != '/') return std::nullopt;
    const auto month = wholeNumber(label.substr(0, kSlash));
    const auto year = wholeNumber(label.substr(kSlash + 1));
    if (!month || !year || *month < 1 || *month > 12) return std::nullopt;
    const int index = (*year - static_cast<int>(kFirstMonth.year())) * 12 + *month - 1;
    return index >= 0 ? std::optional(index) : std::nullopt;
}

sys_days startAtLaunch(Date now, int periodLength) {
    return firstDay(monthAt(now) - months(periodLength));
}

sys_days startForMonth(int monthIndex, int periodLength) {
    return firstDay(kFirstMonth + months(monthIndex + 1 - periodLength));
}

sys_days chartDay(Date date) {
    const year_month_day day(std::chrono::floor<std::chrono::days>(date));
    return yearOfTwoDigits(static_cast<int>(day.year()) % 100) / day.month() / day.day();
}

int ChartScale::days(sys_days day) const {
    return static_cast<int>((day - startDate).count());
}

double ChartScale::offset(int days) const {
    return days * kPointsPerDay / xScale;
}

double levelY(int level) {
    return kPointsPerPercent * std::clamp(level, 0, kFullLevel) + kChartBottom;
}

std::vector<MonthMark> monthMarks(const ChartScale& scale, int width) {
    const double monthWidth = scale.offset(kDaysPerMonth);
    const bool isCrowded = (width - kChartLeft) / monthWidth >= kMostMonthsWithLabels + 1;
    std::vector<MonthMark> marks;
    for (year_month month = monthOf(scale.startDate);; month += months(1)) {
        const double offset = scale.offset(scale.days(firstDay(month)));
        if (offset >= width) return marks;
        const bool isEven = static_cast<unsigned>(month.month()) % 2 == 0;
        marks.push_back({month, offset, offset > kNearestMonthLine, isEven || !isCrowded});
    }
}

std::vector<ChartSeries> chartSeries(const Array& history) {
    if (history.empty()) return {};
    SeriesBuilder builder;
    for (const Value& entry : history) {
        if (const auto* dictionary = entry.as<Dictionary>()) builder.add(*dictionary);
    }
    return builder.take(history.back());
}

ChartPoint chartEnd(const ChartSeries& series, const ChartScale& scale) {
    const ChartReading& last = series.readings.back();
    return {scale.x(std::max(0, scale.days(last.day))), levelY(last.level)};
}

std::vector<ChartPoint> chartLine(const ChartSeries& series, const ChartScale& scale,
                                  double right) {
    const auto daysOf = [&](const ChartReading& reading) { return scale.days(reading.day); };
    const auto& readings = series.readings;
    auto next = std::ranges::find_if(
        readings, [](int days) { return days >= 0; }, daysOf);
    LineBuilder line(scale);
    if (next != readings.begin()) line.add(0, std::prev(next)->level);
    int days = 0;
    for (; next != readings.end() && line.x() <= right + kSquareReach; ++next) {
        days = std::max(days, daysOf(*next));
        line.add(days, next->level);
    }
    return line.take();
}

std::optional<ChartHit> readingNear(const std::vector<ChartSeries>& series, const ChartScale& scale,
                                    ChartPoint point) {
    double nearest = kReach;
    std::optional<ChartHit> hit;
    for (const ChartSeries& ink : series) {
        for (const ChartReading& reading : ink.readings) {
            const int days = scale.days(reading.day);
            const double distance =
                std::hypot(scale.x(days) - point.x, levelY(reading.level) - point.y);
            if (days < 0 || distance > nearest) continue;
            nearest = distance;
            hit = {static_cast<std::size_t>(&ink - series.data()), reading};
        }
    }
    return hit;
}

}  // namespace tintoral
