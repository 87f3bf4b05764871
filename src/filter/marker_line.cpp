#include "filter/marker_line.h"

#include <algorithm>
#include <string>

#include "ink/color_vocabulary.h"
#include "support/text.h"

namespace tintoral {
namespace {

enum Column : std::size_t { kColors, kLevels, kNames, kTypes };

constexpr std::array<std::string_view, 4> kTitles = {
    "marker-colors=", "marker-levels=", "marker-names=", "marker-types="};

// Apostrophes too: CUPS drops the double quotes at its first pass and would read an apostrophe as
// an opening quote at its second.
std::string quotedName(std::string_view name) {
    std::string harmless = cleanText(name);
    std::erase_if(harmless, [](char c) {
        return std::string_view("\"'\\,").find(c) != std::string_view::npos;
    });
    return '"' + harmless + '"';
}

}  // namespace

MarkerLine::MarkerLine() {
    for (std::size_t i = 0; i < kTitles.size(); ++i) attributes_[i].assign(kTitles[i]);
}

bool MarkerLine::add(std::string_view colorName, int level) {
    std::array<std::string, 4> parts;
    if (!empty_) parts.fill(",");
    parts[kColors] += hexColorCodeByColorName(colorName);
    parts[kLevels] += std::to_string(level);
    parts[kNames] += quotedName(colorName);
    parts[kTypes] += "ink";
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (parts[i].size() > attributes_[i].capacity() - attributes_[i].size()) return false;
    }
    for (std::size_t i = 0; i < parts.size(); ++i) attributes_[i].append(parts[i]);
    empty_ = false;
    return true;
}

int MarkerLine::write(std::FILE* out) const {
    return std::fprintf(out, "ATTR: %s %s %s %s\n", attributes_[kColors].c_str(),
                        attributes_[kLevels].c_str(), attributes_[kNames].c_str(),
                        attributes_[kTypes].c_str());
}

}  // namespace tintoral
