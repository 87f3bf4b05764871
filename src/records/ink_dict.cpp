#include "records/ink_dict.h"

#include <algorithm>

#include "ink/color_vocabulary.h"

namespace tintoral {

void prefillQuantities(const std::vector<std::string>& colors, InkQuantities& record) {
    constexpr std::int8_t kFull = 100;
    const std::size_t count = std::min(colors.size(), InkQuantities::kCapacity);
    for (std::size_t i = 0; i < count; ++i)
        record.entries[i] = {colorIDByColorName(colors[i]), kFull};
    record.count = static_cast<std::int8_t>(count);
}

std::vector<std::string> colorNames(const InkQuantities& record) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < record.usableCount(); ++i) {
        const ColorID id = record.entries[i].colorID;
        names.emplace_back(id == 0 ? "none" : colorNameByColorID(id));
    }
    return names;
}

Dictionary makeInkDict(const std::vector<std::string>& colors, const InkQuantities& record,
                       Date date) {
    Dictionary inkDict;
    for (std::size_t i = 0; i < colors.size(); ++i) {
        inkDict.set(colors[i], i < InkQuantities::kCapacity ? int{record.entries[i].level} : 0);
    }
    inkDict.set(keys::colors, colors);
    inkDict.set(keys::date, date);
    return inkDict;
}

}  // namespace tintoral
