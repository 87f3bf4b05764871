#include "support/binary_property_list.h"

#include <gtest/gtest.h>
#include <plist/plist.h>

#include <cmath>
#include <cstdlib>
#include <limits>

namespace tintoral {
namespace {

using std::chrono::sys_days;
using std::chrono::year;

// A file from its objects, each in bytes; offsets and references have one byte.
std::string fileOf(const std::vector<std::string>& objects, int top = 0) {
    std::string file = "bplist00";
    std::string table;
    for (const std::string& object : objects) {
        table += static_cast<char>(file.size());
        file += object;
    }
    const auto start = static_cast<char>(file.size());
    const auto number = [](char last) { return std::string(7, '\0') + last; };
    return file + table + std::string(6, '\0') + "\x01\x01" +
           number(static_cast<char>(objects.size())) + number(static_cast<char>(top)) +
           number(start);
}

Value everyType() {
    using Limits = std::numeric_limits<std::int64_t>;
    return Dictionary{
        {"integers",
         Array{0, 255, 256, 65535, 65536, std::int64_t{1} << 32, -1, Limits::min(), Limits::max()}},
        {"reals", Array{0.5, -2.25}},
        {"flags", Array{true, false, true}},
        {"date", Date(sys_days(year{2026} / 2 / 28)) + std::chrono::seconds(3)},
        {"data", Data{0, 1, 255}},
        {"texts", Array{"", "<&>\n", "caf\xC3\xA9 \xF0\x9F\x96\xA8", std::string(300, 'x')}},
        {"", Dictionary{{"empty", Array()}, {"none", Dictionary()}}},
    };
}

// libplist reads what is written here, and the other way round.
std::string throughLibrary(const std::string& binary) {
    plist_t node = nullptr;
    plist_from_bin(binary.data(), static_cast<std::uint32_t>(binary.size()), &node);
    char* copy = nullptr;
    std::uint32_t size = 0;
    plist_to_bin(node, &copy, &size);
    const std::string result(copy, size);
    std::free(copy);
    plist_free(node);
    return result;
}

TEST(BinaryPropertyList, EveryTypeSurvivesAlsoALibraryOfOthers) {
    const Value root = everyType();
    const std::string file = formatBinaryPropertyList(root);
    EXPECT_TRUE(parseBinaryPropertyList(file) == root);
    EXPECT_TRUE(parseBinaryPropertyList(throughLibrary(file)) == root);
    EXPECT_TRUE(parsePropertyList(file) == root) << "the first bytes tell the format";
    Array large;
    for (int i = 0; i < 66000; ++i) large.push_back(i);
    large.push_back(root);
    const std::string largeFile = formatBinaryPropertyList(large);
    EXPECT_TRUE(parseBinaryPropertyList(largeFile) == Value(large)) << "references of four bytes";
    EXPECT_TRUE(parseLastItem(largeFile) == root);
    const Array entries(1000, Dictionary{{"Ink", 5}, {"Colors", Array{"Ink", "Other"}}});
    EXPECT_LT(formatBinaryPropertyList(entries).size(), 14000U) << "equal arrays are written once";
    EXPECT_TRUE(parseLastItem(formatPropertyList(Array{1, root})) == root);
    EXPECT_EQ(parseLastItem(formatBinaryPropertyList(Array())), std::nullopt);
    EXPECT_EQ(parseLastItem(formatBinaryPropertyList("text")), std::nullopt);
    EXPECT_LT(largeFile.size(), 70000 * 40U) << "equal arrays are written once";
}

TEST(BinaryPropertyList, DatesAndTextsAreMadeFit) {
    const std::pair<double, Date> dates[] = {
        {-3061152000.5, sys_days(year{1903} / 12 / 31) + std::chrono::seconds(86399)},
        {std::nan(""), sys_days(year{2001} / 1 / 1)},
        {-1e300, sys_days(year{1} / 1 / 1)},
        {HUGE_VAL, sys_days(year{9999} / 12 / 31)}};
    for (const auto& [seconds, date] : dates) {
        std::string file = formatBinaryPropertyList(seconds);
        file[8] = '\x33';
        EXPECT_TRUE(parseBinaryPropertyList(file) == Value(date)) << seconds;
    }
    const Date late = sys_days(year{2199} / 12 / 31);
    EXPECT_TRUE(parseBinaryPropertyList(formatBinaryPropertyList(late)) == Value(late));
    EXPECT_TRUE(parseBinaryPropertyList(formatBinaryPropertyList("a\x1B\xE9.")) ==
                Value("a\xC3\xA9."));
    EXPECT_TRUE(parseBinaryPropertyList(fileOf({{"\x62\xD8\x00\x00\x41", 5}})) ==
                Value("\xEF\xBF\xBD"
                      "A"));
    EXPECT_TRUE(parseBinaryPropertyList(fileOf({"\x80\x01"})) == Value()) << "UID";
}

TEST(BinaryPropertyList, NestsTo64LevelsAndNeverInItself) {
    Value deep = "core";
    for (int level = 0; level < 64; ++level) deep = Array{deep};
    EXPECT_TRUE(parseBinaryPropertyList(formatBinaryPropertyList(deep)) == deep);
    EXPECT_EQ(parseBinaryPropertyList(formatBinaryPropertyList(Array{deep})), std::nullopt);
    EXPECT_EQ(parseBinaryPropertyList(fileOf({{"\xA1\x00", 2}})), std::nullopt);
    EXPECT_EQ(parseBinaryPropertyList(fileOf({{"\xD1\x01\x00", 3}, "\x51k"})), std::nullopt);
}

TEST(BinaryPropertyList, SharedObjectsCannotFillTheMemory) {
    std::vector<std::string> doubling;
    for (char i = 1; i <= 40; ++i) doubling.push_back({'\xA2', i, i});
    doubling.push_back("\x51x");
    EXPECT_EQ(parseBinaryPropertyList(fileOf(doubling)), std::nullopt);
    // What is written here is read, however often it says the same.
    const Array inks(24, std::string(31, 'x') + "\xC3\xA9");
    const Array many(3000, Dictionary{{"Colors", inks}});
    EXPECT_TRUE(parseBinaryPropertyList(formatBinaryPropertyList(many)) == Value(many));
    const Array texts(200, std::string(10000, 'x'));
    EXPECT_TRUE(parseBinaryPropertyList(formatBinaryPropertyList(texts)) == Value(texts));
}

TEST(BinaryPropertyList, DamageIsSeen) {
    const std::string bad[] = {
        fileOf({"\x51"}),
        fileOf({"\x0A"}),
        fileOf({"\x15"
                "12345678"}),
        fileOf({"\x5F\x51"
                "ab"}),
        fileOf({std::string("\x5F\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 10)}),
        fileOf({std::string("\xAF\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 10)}),
        fileOf({{"\xA1\x05", 2}}),
        fileOf({{"\xD1\x01\x01", 3}, "\x09"}),
        fileOf({"\x09"}, 1),
        "bplist00",
        "bplist00" + std::string(32, '\0'),
        "bplist00" + std::string(32, '\xFF'),
    };
    for (const std::string& file : bad) EXPECT_EQ(parseBinaryPropertyList(file), std::nullopt);
    const std::string whole = formatBinaryPropertyList(everyType());
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_EQ(parseBinaryPropertyList(whole.substr(0, length)), std::nullopt) << length;
    for (std::size_t at = 0; at < whole.size(); ++at) {
        std::string damaged = whole;
        damaged[at] = static_cast<char>(damaged[at] ^ 0xFF);
        parseBinaryPropertyList(damaged);  // whatever it is now, for the sanitizers
        parseLastItemOfBinary(damaged);
    }
}

}  // namespace
}  // namespace tintoral
