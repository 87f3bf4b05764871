#include <gtest/gtest.h>

#include "support/fixed_text.h"
#include "support/text.h"

namespace tintoral {
namespace {

using namespace std::string_view_literals;

TEST(FixedText, CutsWhatDoesNotFitAndStaysTerminated) {
    FixedText<8> text("abcdefghij");
    EXPECT_EQ(text.view(), "abcdefg");
    EXPECT_EQ(text.format("%s-%d", "abc", 123456), 7U);
    EXPECT_STREQ(text.c_str(), "abc-123");
    EXPECT_EQ(text.appendFormat("%d", 4), 0U);
    text.assign(text.view().substr(4));  // from its own storage
    text.append("4567890");
    const FixedText<8> copy(text);
    text.clear();
    EXPECT_STREQ(copy.c_str(), "1234567") << "a copy has storage of its own";
    EXPECT_STREQ(text.c_str(), "");
}

TEST(CleanText, LeavesNothingThatSteersATerminalOrALabel) {
    // In pieces, so that this source steers nobody's editor.
    const std::string overrides =
        std::string("a\xE2\x80") + "\xAE" + "b\xE2\x81" + "\xA6" + "c\xE2\x80" + "\xA8";
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"a\nATTR: b\r\t\0\x1B[31m\x7F"sv, "aATTR: b[31m"},
        {"caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x96\xA8", "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x96\xA8"},
        {"caf\xE9 noir", "caf\xC3\xA9 noir"},  // ISO 8859-1
        {"x\xC2\x9By", "xy"},                  // control sequence introducer as UTF-8
        {overrides, "abc"},                    // and a line separator
        {"cut \xE2\x82", "cut "},              // inside a character
        {"\xC0\xAF", "\xC3\x80\xC2\xAF"},      // overlong slash: two Latin-1 characters
        {"\xED\xA0\x80", "\xC3\xAD\xC2\xA0"},  // surrogate: 0x80 is a control character
        {"\xEF\xBF\xBF|", "|"},
    };
    for (const auto& [dirty, clean] : cases) EXPECT_EQ(cleanText(dirty), clean) << dirty;
}

TEST(SpelledOutText, KeepsNamesApartThatDiffer) {
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"Caf\xC3\xA9 \"2/3\"", "Caf\xC3\xA9 \"2/3\""},
        {"a\a\0b"sv, "a<U+0007><U+0000>b"},
        {"a\xE2\x80\xA8", "a<U+2028>"},
        {"cut \xE2\x82", "cut \xC3\xA2<U+0082>"},
    };
    for (const auto& [dirty, spelled] : cases) {
        EXPECT_EQ(spelledOutText(dirty), spelled);
        EXPECT_EQ(cleanText(spelled), spelled);
    }
}

TEST(CaseRules, TouchAsciiOnlyAndNeedNoTerminator) {
    EXPECT_FALSE(equalsIgnoringCase("\xC3\x84", "\xC3\xA4"));
    EXPECT_FALSE(equalsIgnoringCase("@", "`"));
    EXPECT_EQ(findIgnoringCase("Photo BLACK", "black"), 6U);
    EXPECT_FALSE(containsIgnoringCase("blac", "black"));
}

}  // namespace
}  // namespace tintoral
