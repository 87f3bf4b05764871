#include "ink/color_vocabulary.h"

#include <algorithm>

#include "ink/byte_helpers.h"
#include "support/text.h"

namespace tintoral {
namespace {

enum class Use {
    kColor,     // a colour with a name, found by every look-up
    kWordOnly,  // no colour's whole name, only a word inside one
    kNameOnly,  // only named: the look-ups by name do not know it
};

struct ColorRow {
    std::string_view name;
    ColorID id;
    std::string_view hex;
    RgbTriple rgb;
    Use use = Use::kColor;
};

constexpr ColorID kDefaultID = 11;
constexpr std::string_view kDefaultHex = "#0000FF";
constexpr RgbTriple kDefaultRgb{0, 0, 1};

// The rows stand in the order in which colorIDByColorName() tries them. Where several share a code,
// the first one is the code's name and the others are further spellings. As meant: "LightGray &
// PhotoBlack", "KCMY Color" and "LCMY Color" come after "Black" and "CMY Color", which they
// contain, and so are found by their whole name only.
constexpr auto kColors = std::to_array<ColorRow>({
    {"Cyan and Black", 15, "#00FFFF", {0, 1, 1}},
    {"Light Light Black", 143, "#CCCCCC", {0.8F, 0.8F, 0.8F}},
    {"Light Black", 10, "#999999", {0.6F, 0.6F, 0.6F}},
    {"Matte Black", 139, "#000000", {0.4F, 0.4F, 0.4F}},
    {"Photo Black", 65, "#000000", {0.4F, 0.4F, 0.5F}},
    {"Black", 1, "#000000", {0.4F, 0.4F, 0.4F}},
    {"CMY Color", 2, "#0000FF", {0, 0, 1}},
    {"Light Cyan", 7, "#99FFFF", {0.6F, 1, 1}},
    {"Cyan", 4, "#00FFFF", {0, 1, 1}},
    {"Yellow and Magenta", 14, "#FF00FF", {1, 0, 1}},
    {"Light Magenta", 8, "#FF99FF", {1, 0.6F, 1}},
    {"Magenta", 5, "#FF00FF", {1, 0, 1}},
    {"Light Yellow", 9, "#FFFF99", {1, 1, 0.6F}},
    {"Dark Yellow", 137, "#FFFF20", {1, 1, 0.125F}},
    {"Yellow", 6, "#FFFF00", {1, 1, 0.1F}},
    {"Blue", 11, "#0000FF", {0, 0, 1}},
    {"KCMY Color", 12, "#0000FF", {0, 0, 1}},
    {"LCMY Color", 13, "#0000FF", {0, 0, 1}},
    {"LightGray & PhotoBlack", 16, "#808080", {0.5F, 0.5F, 0.5F}},
    {"LightGrey & PhotoBlack", 16, "#808080", {0.5F, 0.5F, 0.5F}},
    {"Light Gray", 17, "#999999", {0.6F, 0.6F, 0.6F}},
    {"Light Grey", 17, "#999999", {0.6F, 0.6F, 0.6F}},
    {"Medium Gray", 18, "#666666", {0.4F, 0.4F, 0.4F}},
    {"Medium Grey", 18, "#666666", {0.4F, 0.4F, 0.4F}},
    {"Photo Gray", 19, "#333333", {0.2F, 0.2F, 0.2F}},
    {"Photo Grey", 19, "#333333", {0.2F, 0.2F, 0.2F}},
    {"Gray", 19, kDefaultHex, kDefaultRgb, Use::kWordOnly},
    {"Grey", 19, kDefaultHex, kDefaultRgb, Use::kWordOnly},
    {"White", 32, "#FFFFFF", {1, 1, 1}},
    {"Red", 33, "#FF0000", {1, 0, 0}},
    {"Violet", 141, "#9900CC", {0.6F, 0, 0.8F}},
    {"Gloss Optimizer", 142, "#EEEEEE", {0.92F, 0.92F, 0.92F}},
    {"Green", 66, "#00FF00", {0, 1, 0}},
    {"CKM Color", 3, kDefaultHex, kDefaultRgb, Use::kNameOnly},
    {"Waste Toner Box", 144, kDefaultHex, kDefaultRgb, Use::kNameOnly},
    {"Oil Roll", 145, kDefaultHex, kDefaultRgb, Use::kNameOnly},
    {"Black OPC", 146, kDefaultHex, kDefaultRgb, Use::kNameOnly},
    {"Cyan OPC", 147, kDefaultHex, kDefaultRgb, Use::kNameOnly},
    {"Magenta OPC", 148, kDefaultHex, kDefaultRgb, Use::kNameOnly},
    {"Yellow OPC", 149, kDefaultHex, kDefaultRgb, Use::kNameOnly},
});

constexpr std::array<ColorID, 13> kColorsOfEpsonCodes{1,   4,  5,  6,  7,   8,  9,
                                                      137, 10, 33, 11, 142, 143};

// The first row for which `matches` holds, or null.
template <typename Predicate>
const ColorRow* findRow(Predicate matches) {
    const auto* const row = std::find_if(kColors.begin(), kColors.end(), matches);
    return row == kColors.end() ? nullptr : row;
}

bool isWholeName(const ColorRow& row, std::string_view name) {
    const bool exactCase = row.name == "Black" || row.name == "Green";  // these two alone, as meant
    return exactCase ? row.name == name : equalsIgnoringCase(row.name, name);
}

const ColorRow* rowByWholeName(std::string_view name) {
    return findRow(
        [name](const ColorRow& row) { return row.use == Use::kColor && isWholeName(row, name); });
}

float componentAt(std::string_view code, std::size_t position) {
    const std::string_view digits =
        position < code.size() ? code.substr(position, 2) : std::string_view();
    return static_cast<float>(static_cast<std::uint8_t>(hTob(digits))) / 256.0F;
}

}  // namespace

ColorID colorIDByColorName(std::string_view name) {
    const ColorRow* row = findRow([name](const ColorRow& r) {
        return r.use != Use::kNameOnly && containsIgnoringCase(name, r.name);
    });
    return row != nullptr ? row->id : kDefaultID;
}

std::string_view colorNameByColorID(ColorID id) {
    const ColorRow* row = findRow([id](const ColorRow& r) { return r.id == id; });
    return row != nullptr ? row->name : std::string_view("None");
}

std::string_view hexColorCodeByColorName(std::string_view name) {
    const ColorRow* row = rowByWholeName(name);
    return row != nullptr ? row->hex : kDefaultHex;
}

RgbTriple rgbColorByColorName(std::string_view name) {
    const ColorRow* row = rowByWholeName(name);
    return row != nullptr ? row->rgb : kDefaultRgb;
}

RgbTriple rgbColorByColor(std::string_view code) {
    return {componentAt(code, 1), componentAt(code, 3), componentAt(code, 5)};
}

ColorID chgColorCode(std::uint8_t epsonCode) {
    return epsonCode < kColorsOfEpsonCodes.size() ? kColorsOfEpsonCodes[epsonCode] : ColorID{0};
}

}  // namespace tintoral
