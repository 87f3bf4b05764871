#include "app/ink_colors.h"

#include <algorithm>
#include <array>

#include "ink/color_vocabulary.h"

namespace tintoral {
namespace {

struct Paint {
    float red, green, blue;
    bool isWhite = false;
    float alpha = 1;
};

constexpr Paint kBlack{0, 0, 0, true};
constexpr Paint kDarkGrey{1.0F / 3, 1.0F / 3, 1.0F / 3, true};
constexpr Paint kLightGrey{2.0F / 3, 2.0F / 3, 2.0F / 3, true};
constexpr Paint kWhite{1, 1, 1, true};
constexpr Paint kCyan{0, 1, 1};
constexpr Paint kMagenta{1, 0, 1};
constexpr Paint kYellow{1, 1, 0};
constexpr Paint kRed{1, 0, 0};
constexpr Paint kGreen{0, 1, 0};
constexpr Paint kBlue{0, 0, 1};
constexpr Paint kPurple{0.5F, 0, 0.5F};

struct PaintOfID {
    int id;
    Paint paint;
};

constexpr std::array kPaints{
    PaintOfID{1, kBlack},       PaintOfID{65, kBlack},      PaintOfID{139, kBlack},
    PaintOfID{2, kCyan},        PaintOfID{3, kCyan},        PaintOfID{4, kCyan},
    PaintOfID{12, kCyan},       PaintOfID{13, kCyan},       PaintOfID{14, kCyan},
    PaintOfID{15, kCyan},       PaintOfID{5, kMagenta},     PaintOfID{6, kYellow},
    PaintOfID{7, {0.4F, 1, 1}}, PaintOfID{8, {1, 0.4F, 1}}, PaintOfID{9, {1, 1, 0.6F}},
    PaintOfID{10, kDarkGrey},   PaintOfID{11, kBlue},       PaintOfID{16, kLightGrey},
    PaintOfID{17, kLightGrey},  PaintOfID{18, kLightGrey},  PaintOfID{19, kLightGrey},
    PaintOfID{143, kLightGrey}, PaintOfID{32, kWhite},      PaintOfID{142, kWhite},
    PaintOfID{33, kRed},        PaintOfID{66, kGreen},      PaintOfID{137, {0.9F, 0.9F, 0}},
    PaintOfID{141, kPurple},
};

struct PaintOfName {
    std::string_view name;
    Paint paint;
};

// The charts go by whole names, and their light inks are paler than those of the bars.
constexpr std::array kChartPaints{
    PaintOfName{"Black", kBlack},
    PaintOfName{"Matte Black", kBlack},
    PaintOfName{"Photo Black", kBlack},
    PaintOfName{"CMY Color", kCyan},
    PaintOfName{"Cyan", kCyan},
    PaintOfName{"KCMY Color", kCyan},
    PaintOfName{"LCMY Color", kCyan},
    PaintOfName{"Yellow and Magenta", kCyan},
    PaintOfName{"Cyan and Black", kCyan},
    PaintOfName{"Magenta", kMagenta},
    PaintOfName{"Yellow", kYellow},
    PaintOfName{"Light Cyan", {0.7F, 1, 1}},
    PaintOfName{"Light Magenta", {1, 0.7F, 1}},
    PaintOfName{"Light Yellow", {1, 1, 0.7F}},
    PaintOfName{"Light Black", kDarkGrey},
    PaintOfName{"Blue", kBlue},
    PaintOfName{"LightGray & PhotoBlack", kLightGrey},
    PaintOfName{"LightGrey & PhotoBlack", kLightGrey},
    PaintOfName{"Light Gray", kLightGrey},
    PaintOfName{"Light Grey", kLightGrey},
    PaintOfName{"Medium Gray", kLightGrey},
    PaintOfName{"Medium Grey", kLightGrey},
    PaintOfName{"Photo Gray", kLightGrey},
    PaintOfName{"Photo Grey", kLightGrey},
    PaintOfName{"Gray", kLightGrey},
    PaintOfName{"Grey", kLightGrey},
    PaintOfName{"White", kLightGrey},
    PaintOfName{"Gloss Optimizer", kLightGrey},
    PaintOfName{"Light Light Black", kLightGrey},
    PaintOfName{"Red", kRed},
    PaintOfName{"Dark Yellow", {1, 1, 0, false, 0.9F}},
    PaintOfName{"Violet", kPurple},
    PaintOfName{"Green", kGreen},
};

QColor colorOf(const Paint& paint) {
    return QColor::fromRgbF(paint.red, paint.green, paint.blue, paint.alpha);
}

InkColor inkOf(const Paint& paint) {
    return {colorOf(paint), paint.isWhite};
}

}  // namespace

InkColor whiteInk(float white) {
    return {QColor::fromRgbF(white, white, white), true};
}

InkColor nscolorByColorID(int id, Picture picture) {
    const bool inDock = picture == Picture::DockIcon;
    if (id == 0) return inDock ? inkOf(kWhite) : InkColor{};
    const auto found = std::ranges::find(kPaints, id, &PaintOfID::id);
    if (found != kPaints.end()) return inkOf(found->paint);
    return inkOf(inDock ? kBlue : kGreen);
}

InkColor colorByRGBColor(std::string_view code) {
    const auto [red, green, blue] = rgbColorByColor(code);
    return {QColor::fromRgbF(red, green, blue)};
}

QColor nscolorByColorName(std::string_view name) {
    const auto found = std::ranges::find(kChartPaints, name, &PaintOfName::name);
    return colorOf(found == kChartPaints.end() ? kBlue : found->paint);
}

QColor chartColor(std::string_view name, std::string_view rgbColor) {
    return rgbColor.starts_with('#') ? colorByRGBColor(rgbColor).color : nscolorByColorName(name);
}

}  // namespace tintoral
