#include "ink/color_vocabulary.h"

#include <gtest/gtest.h>

#include <array>

namespace tintoral {
namespace {

TEST(ColorVocabulary, LongerWordsWinAndUnknownNamesAreBlue) {
    const struct {
        std::string_view name;
        ColorID id;
    } rows[] = {
        {"Photo Black", 65},
        {"light grey", 17},
        {"Grey", 19},
        {"Toner", 11},
        {"", 11},
        {"Ultra PHOTO BLACK X", 65},
        {"CKM Color", 11},
        {"Cyan and Black", 15},
        {"LightGray & PhotoBlack", 1},
    };
    for (const auto& row : rows) EXPECT_EQ(colorIDByColorName(row.name), row.id) << row.name;
}

TEST(ColorVocabulary, WholeNamesGiveColorsAndCaseCountsForBlackAndGreenOnly) {
    const RgbTriple blue{0, 0, 1};
    const struct {
        std::string_view name;
        std::string_view hex;
        RgbTriple rgb;
    } rows[] = {
        {"Black", "#000000", {0.4F, 0.4F, 0.4F}},
        {"black", "#0000FF", blue},
        {"Green", "#00FF00", {0, 1, 0}},
        {"GREEN", "#0000FF", blue},
        {"dark yellow", "#FFFF20", {1, 1, 0.125F}},
        {"Gray", "#0000FF", blue},  // only a word inside a name
        {"Cyan ink", "#0000FF", blue},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(hexColorCodeByColorName(row.name), row.hex) << row.name;
        EXPECT_EQ(rgbColorByColorName(row.name), row.rgb) << row.name;
    }
}

TEST(ColorVocabulary, CodesOfSixDigitsAreDividedBy256) {
    EXPECT_EQ(rgbColorByColor("#808080"), (RgbTriple{0.5F, 0.5F, 0.5F}));
    EXPECT_EQ(rgbColorByColor("#ffFF40"), (RgbTriple{0.99609375F, 0.99609375F, 0.25F}));
    EXPECT_EQ(rgbColorByColor("#8"), (RgbTriple{0.5F, 0, 0}));
}

TEST(ColorVocabulary, CodesOutsideTheTablesHaveNoNameAndNoColor) {
    for (const auto id : std::to_array<ColorID>({0, 20, 255}))
        EXPECT_EQ(colorNameByColorID(id), "None");
    EXPECT_EQ(chgColorCode(12), 143);
    EXPECT_EQ(chgColorCode(13), 0);
}

}  // namespace
}  // namespace tintoral
