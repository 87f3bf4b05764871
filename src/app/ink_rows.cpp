#include "app/ink_rows.h"

#include "ink/color_vocabulary.h"
#include "records/ink_dict.h"
#include "support/text.h"

namespace tintoral {
namespace {

int levelUnder(std::string_view name, const Dictionary& inkDict) {
    const Value* value = inkDict.find(name);
    return value ? levelOf(*value).value_or(0) : 0;
}

InkColor colorOf(std::string_view name, std::string_view rgbColor, Picture picture) {
    // Printers also report words such as "none" in place of a colour.
    if (rgbColor.starts_with('#')) return colorByRGBColor(rgbColor);
    return nscolorByColorID(colorIDByColorName(name), picture);
}

}  // namespace

std::vector<InkRow> inkRows(const Dictionary& inkDict, const std::vector<std::string>& rgbColors,
                            Picture picture) {
    std::vector<InkRow> rows;
    for (const std::string& name :
         inkDict.texts(keys::colors).value_or(std::vector<std::string>())) {
        const std::size_t index = rows.size();
        if (index == InkQuantities::kCapacity) break;
        const std::string_view rgbColor =
            index < rgbColors.size() ? rgbColors[index] : std::string_view();
        rows.push_back(
            {cleanText(name), levelUnder(name, inkDict), colorOf(name, rgbColor, picture)});
    }
    return rows;
}

std::vector<InkRow> inkRowsOf(const PrinterRecord& printer, Picture picture) {
    const Dictionary* inkDict = printer.dictionary(keys::inkDict);
    if (!inkDict) return {};
    const auto rgbColors = printer.texts(keys::rgbColors);
    return inkRows(*inkDict, rgbColors.value_or(std::vector<std::string>()), picture);
}

QString levelText(int level) {
    if (level >= 0) return QStringLiteral("%1 %").arg(level);
    return level == kLevelSomeRemaining ? QStringLiteral("not empty") : QStringLiteral("unknown");
}

}  // namespace tintoral
