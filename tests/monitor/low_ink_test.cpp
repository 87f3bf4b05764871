#include "monitor/low_ink.h"

#include <gtest/gtest.h>

#include "records/printer_record.h"

namespace tintoral {
namespace {

constexpr int kNoLevel = 999;

Dictionary reading(const std::vector<std::pair<std::string, int>>& inks) {
    Dictionary inkDict;
    std::vector<std::string> names;
    for (const auto& [name, level] : inks) {
        names.push_back(name);
        if (level != kNoLevel) inkDict.set(name, level);
    }
    inkDict.set(keys::colors, names);
    return inkDict;
}

// What a person sees after each reading: news (N), no change (.) or nothing any more (-).
TEST(LowInk, IsNewsOnceForEachThresholdUntilTheRefill) {
    const struct {
        const char* what;
        const char* ink;
        std::vector<int> levels;
        const char* seen;
    } cases[] = {
        {"both thresholds", "Cyan", {100, 21, 20, 15, 11, 10, 9, 0}, "--N..N.."},
        {"at once below both", "Cyan", {50, 4, 3}, "-N."},
        {"up and down below 20", "Cyan", {9, 18, 10, 12}, "N..."},
        {"refilled", "Cyan", {20, 21, 20, 8, 100, 8}, "N-NN-N"},
        {"not known for a while", "Cyan", {20, -3, 20, -2, kNoLevel, 9}, "N....N"},
        {"never known", "Cyan", {-1, -2, -3, -4, kNoLevel}, "-----"},
        {"a waste box", "Waste Toner Box", {0, 5}, "--"},
        {"a maintenance box", "Maintenance box", {0, 5}, "--"},
    };
    for (const auto& c : cases) {
        Dictionary announced;
        std::string seen;
        for (const int level : c.levels) {
            const LowInkNews news = judgeReading(announced, reading({{c.ink, level}}));
            announced = news.announced;
            seen += news.isNew ? 'N' : announced.empty() ? '-' : '.';
        }
        EXPECT_EQ(seen, c.seen) << c.what;
    }
}

TEST(LowInk, ListsAllThatAreLowAndForgetsAnInkThatIsGone) {
    const Dictionary before{{"Cyan", 20}, {"Old", 10}};
    const LowInkNews same = judgeReading(
        before, reading({{"Red", 21}, {"Cyan", 12}, {"\x1b[1mBlack", kNoLevel}, {"Cyan", 12}}));
    EXPECT_FALSE(same.isNew);
    EXPECT_EQ(same.inks, (std::vector<LowInk>{{"Cyan", 12}}));
    EXPECT_EQ(same.announced, (Dictionary{{"Cyan", 20}}));
    const LowInkNews more = judgeReading(before, reading({{"\x1b[1mBlack", 3}, {"Cyan", 12}}));
    EXPECT_TRUE(more.isNew);
    EXPECT_EQ(more.inks, (std::vector<LowInk>{{"[1mBlack", 3}, {"Cyan", 12}}));
    EXPECT_TRUE(judgeReading(before, Dictionary()).announced.empty());
}

TEST(LowInk, IsLookedForInNoMoreInksThanAreShown) {
    std::vector<std::pair<std::string, int>> inks(20, {"Cyan", 90});
    inks.emplace_back("Beyond", 0);
    EXPECT_TRUE(judgeReading({}, reading(inks)).inks.empty());
}

}  // namespace
}  // namespace tintoral
