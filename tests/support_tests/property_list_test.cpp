#include <gtest/gtest.h>

#include <limits>

#include "support/property_list.h"

namespace tintoral {
namespace {

std::string repeated(std::string_view text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i) all += text;
    return all;
}

TEST(Dictionary, KeepsKeysSortedAndTheLastOfEqualOnes) {
    Dictionary dictionary{{"b", 1}, {"a", "first"}, {"c", 3}, {"a", "last"}};
    dictionary.set("B", true);
    dictionary.set("b", 2);
    dictionary.remove("c");
    EXPECT_EQ(dictionary, (Dictionary{{"B", true}, {"a", "last"}, {"b", 2}}));
    EXPECT_EQ(dictionary.begin()->first, "B");
    EXPECT_EQ(dictionary.integer("a"), std::nullopt);
    EXPECT_EQ(dictionary.text("b"), "");
    dictionary.set("mixed", Array{"x", 5, "z"});
    EXPECT_EQ(dictionary.texts("mixed"), (std::vector<std::string>{"x", "", "z"}));
}

TEST(PropertyList, EveryTypeSurvivesAFile) {
    using Limits = std::numeric_limits<std::int64_t>;
    const Date date =
        std::chrono::sys_days{std::chrono::year{2026} / 2 / 28} + std::chrono::hours(23);
    const Value root(Dictionary{
        {"integers", Array{0, -1, -3, Limits::min(), Limits::max()}},
        {"reals", Array{0.5, -2.25}},
        {"flags", Array{true, false}},
        {"date", date},
        {"data", Data{0, 1, 255}},
        {"text", "<&> \"caf\xC3\xA9\" ]]> two\nlines"},
        {"", Dictionary{{"empty array", Array()}, {"empty text", ""}}},
    });
    EXPECT_EQ(parsePropertyList(formatPropertyList(root)), root) << formatPropertyList(root);
    const std::string unfit = std::string("a\x01\x1B") + "b\xE9.";  // what XML cannot hold
    EXPECT_EQ(parsePropertyList(formatPropertyList(Array{unfit})), Value(Array{"ab\xC3\xA9."}));
}

TEST(PropertyList, ReadsDatesFarFromOurs) {
    for (const int number : {1904, 2199}) {
        const auto date =
            parsePropertyList("<plist version=\"1.0\"><date>" + std::to_string(number) +
                              "-02-28T00:00:01Z</date></plist>");
        const Date expected = std::chrono::sys_days{std::chrono::year{number} / 2 / 28};
        EXPECT_EQ(date, Value(expected + std::chrono::seconds(1))) << number;
    }
}

TEST(PropertyList, NestsTo64LevelsAndNoDeeper) {
    Value deep = "core";
    for (int level = 0; level < 64; ++level) deep = Array{deep};
    EXPECT_EQ(parsePropertyList(formatPropertyList(deep)), deep);
    EXPECT_EQ(parsePropertyList(formatPropertyList(Dictionary{{"k", deep}})), std::nullopt);
    EXPECT_TRUE(parsePropertyList("<array>" + repeated("<dict></dict>", 1000) + "</array>"));
}

TEST(PropertyList, EndlessNestingIsRefusedHoweverItIsHidden) {
    const char* const openings[] = {
        "<array>",
        "<dict><key>k</key>",
        "<array><!-- </array> -->",
        "<array a=\"</array>\">",
        "<array><?x </array> ?>",
        "<array><string><![CDATA[</array>]]></string>",
    };
    for (const char* opening : openings) {
        const std::string body = repeated(opening, 300000);
        for (const char* start :
             {"", "<plist version=\"1.0\">", "<?x \"?>", "<!DOCTYPE [\"<!--\"]>"}) {
            EXPECT_EQ(parsePropertyList(start + body), std::nullopt) << start << opening;
        }
    }
    EXPECT_TRUE(parsePropertyList(
        "<plist version=\"1.0\"><!-- it's --><array><!-- a > b --></array></plist>"));
}

TEST(PropertyList, DamagedTextIsNoPropertyList) {
    const std::string whole = formatPropertyList(Dictionary{{"key", Array{"text", -5, true}}});
    for (std::size_t length = 0; length < whole.find("</plist>") - 8; ++length) {
        EXPECT_EQ(parsePropertyList(whole.substr(0, length)), std::nullopt) << length;
    }
    EXPECT_EQ(parsePropertyList("bplist00\xFF\xFF"), std::nullopt);
}

}  // namespace
}  // namespace tintoral
