#include "vendors/maker_and_model.h"

#include <string>

#include "support/text.h"

namespace tintoral {
namespace {

struct MakerWord {
    std::string_view word;
    std::string_view maker;
    std::size_t modelAt;  // where the model starts, from the start of the word
};

constexpr MakerWord kMakerWords[] = {
    {"Canon ", "Canon", 6},
    {"Epson ", "EPSON", 6},
    {"hp ", "HP", 3},
    {"Hewlett-Packard ", "HP", 3},  // the model begins with "lett-Packard", as meant
};

struct ProductLine {
    std::string_view word;
    std::string_view maker;
};

// The last line that occurs in a name decides.
constexpr ProductLine kProductLines[] = {
    {"Officejet", "HP"}, {"Photosmart", "HP"},   {"Deskjet", "HP"},  {"Laserjet", "HP"},
    {"Stylus", "EPSON"}, {"Workforce", "EPSON"}, {"Pixma", "Canon"},
};

// The word's last character becomes "-", at its first occurrence. "PM " stands here twice, as
// meant: a second one in a name is joined too.
constexpr std::string_view kSeriesLetters[] = {"PM ", "PX ", "PM ", "CL ", "EP ", "MFC "};

struct Split {
    std::string_view maker;
    std::string model;
};

Split splitByProductLine(std::string_view name) {
    Split split{{}, std::string(name)};
    for (const ProductLine& line : kProductLines) {
        if (containsIgnoringCase(name, line.word)) split.maker = line.maker;
    }
    return split;
}

Split splitName(std::string_view name) {
    for (const MakerWord& row : kMakerWords) {
        const std::size_t at = findIgnoringCase(name, row.word);
        if (at == std::string_view::npos) continue;
        return {row.maker, std::string(name.substr(at + row.modelAt))};
    }
    return splitByProductLine(name);
}

void cutDriverSuffix(std::string& model) {
    const std::size_t at = findIgnoringCase(model, " - Gutenprint");
    if (at != std::string::npos) model.erase(at);
}

void joinSeriesLetters(std::string& model) {
    for (const std::string_view letters : kSeriesLetters) {
        const std::size_t at = model.find(letters);
        if (at != std::string::npos) model[at + letters.size() - 1] = '-';
    }
}

void removeFirst(std::string& model, std::string_view word) {
    const std::size_t at = model.find(word);
    if (at != std::string::npos) model.erase(at, word.size());
}

}  // namespace

int identifyMakerAndModelName(std::string_view name, BoundedText& maker, BoundedText& model) {
    Split split = splitName(name);
    cutDriverSuffix(split.model);
    joinSeriesLetters(split.model);
    removeFirst(split.model, "PIXMA ");
    maker.assign(split.maker);
    model.assign(split.model);
    return 0;
}

}  // namespace tintoral
