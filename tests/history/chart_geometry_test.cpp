#include "history/chart_geometry.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tintoral {
namespace {

using std::chrono::days;
using std::chrono::hours;
using std::chrono::sys_days;
using std::chrono::year;

Date at(int y, int month, int day, int hour = 0) {
    return sys_days{year{y} / month / day} + hours(hour);
}

// clang-format off
TEST(ChartStart, LiesAMonthApartAtLaunchAndAfterAPickAsMeant) {
    const struct {
        int year;
        int month;
        int steps;
        Date atLaunch, picked;
    } cases[] = {
        {2026, 3, 1, at(2025, 11, 1), at(2025, 12, 1)}, {2026, 5, 1, at(2026, 1, 1), at(2026, 2, 1)},
        {2026, 1, 0, at(2025, 12, 1), at(2026, 1, 1)},  {2026, 12, 4, at(2025, 11, 1), at(2025, 12, 1)},
        {2006, 1, 6, at(2004, 6, 1), at(2004, 7, 1)},
    };
    for (const auto& c : cases) {
        const Date now = at(c.year, c.month, 17, 23);
        const int months = periodMonths(c.steps);
        EXPECT_EQ(Date(startAtLaunch(now, months)), c.atLaunch) << c.year << '-' << c.month;
        EXPECT_EQ(Date(startForMonth(monthIndexAt(now), months)), c.picked);
    }
    EXPECT_EQ(monthLabel(monthIndexAt(at(2006, 1, 1))), "01/2006");
    EXPECT_EQ(monthLabel(monthIndexAt(at(2025, 12, 31, 23))), "12/2025");
}

// clang-format on

TEST(ChartDay, LosesTheTimeAndTheCenturyAsMeant) {
    EXPECT_EQ(chartDay(at(2026, 3, 14, 23)), at(2026, 3, 14));
    EXPECT_EQ(chartDay(at(1904, 2, 29)), at(2004, 2, 29));
    EXPECT_EQ(chartDay(at(2199, 12, 31)), at(1999, 12, 31));
    EXPECT_EQ(chartDay(at(2068, 1, 1)), at(2068, 1, 1));
}

TEST(MonthMarks, StandOnTheFirstDaysAndThinOutWhenMoreThanEightFit) {
    const ChartScale four{sys_days{year{2025} / 11 / 1}, 4};
    const auto marks = monthMarks(four, 400);
    ASSERT_EQ(marks.size(), 5U);
    EXPECT_FALSE(marks[0].hasLine);
    EXPECT_TRUE(marks[0].hasLabel);
    EXPECT_EQ(marks[1].offset, 30 * 3);
    EXPECT_TRUE(marks[1].hasLine);
    EXPECT_EQ(marks[4].offset, (30 + 31 + 31 + 28) * 3);
    EXPECT_EQ(monthMarks(four, 360).size(), 4U) << "a month at W itself is none";
    EXPECT_EQ(ChartScale({four.startDate, 7}).offset(1), 12.0 / 7);
    for (const auto& [width, labelled] : {std::pair(30 + 9 * 90 - 1, true), {30 + 9 * 90, false}})
        EXPECT_EQ(monthMarks(four, width)[0].hasLabel, labelled) << width;
}

struct Line {
    Dictionary entry(int day, Value level) const {
        return {{"Black", std::move(level)}, {"Date", Date(start) + days(day) + hours(13)}};
    }
    std::string of(const std::vector<std::pair<int, Value>>& readings, double right = 500) const {
        Array history;
        for (const auto& [day, level] : readings) history.emplace_back(entry(day, level));
        const auto series = chartSeries(history);
        std::string text;
        if (series.empty()) return text;
        for (const ChartPoint& point : chartLine(series[0], {start, 4}, right)) {
            text += std::to_string(std::lround(point.x)) + "," +
                    std::to_string(std::lround(point.y)) + " ";
        }
        return text;
    }
    sys_days start = sys_days{year{2026} / 1 / 1};
};

// clang-format off
TEST(ChartLine, FollowsTheReadings) {
    const Line line;
    const struct {
        const char* what;
        std::vector<std::pair<int, Value>> readings;
        const char* points;
    } cases[] = {
        {"levels within 0 to 100", {{0, 120}, {1, -3}, {2, 50}}, "30,220 33,20 36,120 "},
        {"starts at the last level before the window", {{-40, 90}, {-1, 80}, {2, 50}}, "30,180 36,120 "},
        {"all before", {{-40, 90}, {-1, 80}}, "30,180 "},
        {"never to the left", {{4, 90}, {2, 80}, {-9, 70}, {5, 60}}, "42,200 42,160 42,200 42,160 45,140 "},
        {"one day", {{1, 50}, {1, 90}, {1, 10}, {1, 40}, {2, 40}}, "33,120 33,40 33,200 33,100 36,100 "},
        {"values of other types", {{1, "80"}, {2, "x"}, {3, 20.9}, {4, true}, {5, std::nan("")}}, "33,180 39,60 "},
        {"no numbers", {{1, "much"}, {2, Array{5}}}, ""},
        {"one point beyond the edge", {{1, 50}, {400, 40}, {500, 30}}, "33,120 1230,100 "},
    };
    for (const auto& c : cases) EXPECT_EQ(line.of(c.readings), c.points) << c.what;
}
// clang-format on

TEST(ChartLine, TheSquareStandsOnTheDayOfTheLastReading) {
    const ChartScale scale{sys_days{year{2026} / 1 / 1}, 4};
    const auto end = [&](std::vector<ChartReading> readings) {
        const ChartPoint point = chartEnd({{}, {}, {}, std::move(readings)}, scale);
        return std::pair(std::lround(point.x), std::lround(point.y));
    };
    const sys_days start = scale.startDate;
    EXPECT_EQ(end({{start + days(4), 90}, {start + days(2), 50}}), std::pair(36L, 120L));
    EXPECT_EQ(end({{start + days(4), 90}, {start - days(9), 50}}), std::pair(30L, 120L));
}

TEST(ChartSeries, OrdersAndColoursTheInksByTheLastEntry) {
    const Date now = at(2026, 1, 1);
    Array history{"no entry", Dictionary{{"Undated", 50}},
                  Dictionary{{"Date", now}, {"Old\n", 5}, {"Cyan", 9}, {"A", 7}},
                  Dictionary{{"Date", now},
                             {"Cyan", 8},
                             {"Black", 3},
                             {"Photo", 1},
                             {"Colors", Array{"Black", "Cyan", "Photo"}},
                             {"rgbColors", Array{"#000000", 5}}}};
    std::string seen;
    for (const ChartSeries& series : chartSeries(history))
        seen += series.name + series.rgbColor + ":" + std::to_string(series.readings.size()) + " ";
    EXPECT_EQ(seen, "Black#000000:1 Cyan:2 Photo:1 A:1 Old:1 ");
    Dictionary crowd{{"Date", now}};
    for (int i = 0; i < 1000; ++i) crowd.set("Ink " + std::to_string(i), 50);
    EXPECT_EQ(chartSeries({crowd}).size(), 100U);
    history.emplace_back("no entry");
    EXPECT_EQ(chartSeries(history)[0].rgbColor, "");
}

TEST(ReadingNear, FindsWhatIsDrawnWithinEightPoints) {
    const Line line;
    const auto series = chartSeries({line.entry(-1, 50), line.entry(2, 50), line.entry(4, 50)});
    const ChartScale scale{line.start, 4};
    EXPECT_EQ(readingNear(series, scale, {38, 123})->reading.day, line.start + days(2));
    EXPECT_EQ(readingNear(series, scale, {41, 121})->reading.day, line.start + days(4));
    EXPECT_FALSE(readingNear(series, scale, {27, 120})) << "a reading before the window";
    EXPECT_FALSE(readingNear(series, scale, {36, 129}));
}

}  // namespace
}  // namespace tintoral
