#include "history/monthly_levels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace tintoral {
namespace {

using std::chrono::year;
using Levels = std::vector<std::optional<int>>;

Date day(int y, unsigned m, unsigned d) {
    return std::chrono::sys_days{year{y} / static_cast<int>(m) / static_cast<int>(d)};
}

const Date kNow = day(2026, 5, 20);

Dictionary reading(Date date, Value black) {
    return {{"Black", std::move(black)}, {"Colors", Array{"Black"}}, {"Date", date}};
}

MonthlyLevels tableOf(const Array& history) {
    return monthlyLevels(history, kNow);
}

TEST(MonthlyLevels, KeepsTheLastReadingOfEachOfTwelveMonthsInWhateverOrder) {
    const auto table = tableOf({reading(day(2026, 5, 2), 10), reading(day(2025, 5, 31), 99),
                                reading(day(2025, 6, 1), 90), reading(day(2026, 3, 31), 30),
                                reading(day(2026, 3, 1), 35), reading(day(2026, 5, 2), 9)});
    ASSERT_EQ(table.months.size(), 12U);
    EXPECT_EQ(table.months.front(), year{2025} / 6);
    EXPECT_EQ(table.months.back(), year{2026} / 5);
    Levels expected(12);
    expected[0] = 90;
    expected[9] = 30;
    expected[11] = 9;
    EXPECT_EQ(table.levels, std::vector<Levels>({expected}));
}

TEST(MonthlyLevels, ShowsAtLeastFourMonthsAcrossTheYear) {
    const auto table = tableOf({reading(day(2026, 1, 31), 5)});
    EXPECT_EQ(table.months,
              (std::vector{year{2025} / 10, year{2025} / 11, year{2025} / 12, year{2026} / 1}));
    EXPECT_EQ(table.levels[0], (Levels{{}, {}, {}, 5}));
}

TEST(MonthlyLevels, AWrongClockDoesNotHideTheOtherReadings) {
    const Dictionary future = reading(day(2199, 1, 1), 7);
    const Dictionary past = reading(day(1904, 1, 1), 8);
    const Date outside[] = {Date::max(), Date::min(), day(9999, 12, 31) + std::chrono::days(1)};
    EXPECT_EQ(tableOf({future, past, reading(kNow, 50)}).months.back(), year{2026} / 5);
    EXPECT_EQ(tableOf({future, past}).months.back(), year{1904} / 1);
    EXPECT_EQ(tableOf({future}).months.back(), year{2199} / 1);
    for (const Date date : outside) {
        EXPECT_TRUE(tableOf({reading(date, 50)}).months.empty());
        EXPECT_EQ(tableOf({reading(date, 50), reading(kNow, 5)}).levels[0].back(), 5);
    }
}

TEST(MonthlyLevels, ReadsNumbersOfAnyTypeAndPassesOverTheRest) {
    constexpr int kMost = std::numeric_limits<int>::max();
    const struct {
        Value value;
        std::optional<int> level;
    } cases[] = {
        {0, 0},
        {120, 120},
        {std::int64_t{1} << 40, kMost},
        {12.9, 12},
        {"42", 42},
        {"42 %", 42},
        {"unknown", 77},
        {"", 77},
        {-3, 77},
        {"-1", 77},
        {std::nan(""), 77},
        {1e300, kMost},
        {true, 77},
        {Array{5}, 77},
        {Dictionary{}, 77},
        {kNow, 77},
        {"9999999999999999999999", 77},
    };
    for (const auto& c : cases) {
        const auto table = tableOf({reading(day(2026, 5, 1), 77), reading(kNow, c.value)});
        EXPECT_EQ(table.levels[0].back(), c.level) << &c - cases;
    }
}

TEST(MonthlyLevels, OrdersTheInksByTheLastEntryAndBoundsThem) {
    const auto months = [](const char* key, Value value, Date date) {
        return Dictionary{{key, std::move(value)}, {"Colors", Array{key}}, {"Date", date}};
    };
    const Array inks{"Yellow", "Black", "Date", 5, "Yellow", "Colors"};
    const Dictionary last{{"Black", 1}, {"Yellow", 2}, {"Colors", inks}, {"rgbColors", Array{}}};
    const auto table = tableOf({"text", 5, months("Old", 5, day(2020, 1, 1)),
                                months("Red", 5, kNow), months("Note", "none", kNow), last});
    EXPECT_EQ(table.inks, (std::vector<std::string>{"Yellow", "Black", "Red"}));
    EXPECT_EQ(table.levels[0], Levels(4)) << "the last entry has no date";

    Dictionary many{{"Date", kNow}};
    for (int i = 0; i < 100; ++i) many.set("Ink" + std::to_string(i), i);
    EXPECT_EQ(tableOf({many}).inks.size(), kMostMonthlyInks);
    EXPECT_TRUE(tableOf({}).inks.empty());
}

}  // namespace
}  // namespace tintoral
