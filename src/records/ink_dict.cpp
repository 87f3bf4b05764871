#include "records/ink_dict.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "ink/color_vocabulary.h"

namespace tintoral {
namespace {

struct LevelOfValue {
    using Limits = std::numeric_limits<int>;

    std::optional<int> operator()(std::int64_t number) const {
        return static_cast<int>(std::clamp<std::int64_t>(number, Limits::min(), Limits::max()));
    }
    std::optional<int> operator()(double number) const {
        if (std::isnan(number)) return std::nullopt;
        return static_cast<int>(std::clamp<double>(number, Limits::min(), Limits::max()));
    }
    std::optional<int> operator()(const std::string& text) const {
        int number = 0;
        const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
        return result.ec == std::errc() ? std::optional(number) : std::nullopt;
    }
    template <typename T>
    std::optional<int> operator()(const T&) const {
        return std::nullopt;
    }
};

}  // namespace

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

bool isInkName(std::string_view key) {
    return key != keys::date && key != keys::colors && key != keys::rgbColors;
}

std::optional<int> levelOf(const Value& value) {
    return std::visit(LevelOfValue(), value.storage());
}

}  // namespace tintoral
