#include "transport/usb/device_id.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>

#include "support/byte_reader.h"
#include "support/text.h"

namespace tintoral {
namespace {

constexpr std::size_t kSmallestSize = 32;
constexpr std::size_t kShortestDescription = 8;
constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

constexpr std::array<std::string_view, 2> kDescriptionKeys{"DES:", "DESCRIPTION:"};
constexpr std::array<std::string_view, 3> kMakeKeys{"MANUFACTURER:", "Manufacturer:", "MFG:"};
constexpr std::array<std::string_view, 3> kModelKeys{"MODEL:", "Model:", "MDL:"};

struct Rule {
    std::string_view prefix;
    std::string_view make;
};
constexpr std::array<Rule, 3> kMakerNames{{
    {"Hewlett-Packard", "HP"},
    {"hp", "HP"},
    {"Lexmark International", "Lexmark"},
}};
constexpr std::array<Rule, 2> kDescribedMakers{{
    {"Hewlett-Packard hp ", "HP "},
    {"Hewlett-Packard ", "HP "},
}};

// The two texts with the size that the caller allows each.
struct Names {
    BoundedText& make;
    BoundedText& model;
    std::size_t size;

    std::string_view fitting(std::string_view text) const { return text.substr(0, size - 1); }
};

std::string_view untilSemicolon(std::string_view text) {
    return text.substr(0, text.find(';'));
}

// Everything after the first key that occurs.
std::optional<std::string_view> textAfterAny(std::string_view text,
                                             std::span<const std::string_view> keys) {
    for (const std::string_view key : keys) {
        if (const auto value = textAfter(text, key)) return value;
    }
    return std::nullopt;
}

const Rule* findRule(std::span<const Rule> rules, std::string_view text) {
    for (const Rule& rule : rules) {
        if (startsWithIgnoringCase(text, rule.prefix)) return &rule;
    }
    return nullptr;
}

bool isAsciiLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

std::optional<std::string_view> findDescription(std::string_view deviceID) {
    const auto text = textAfterAny(deviceID, kDescriptionKeys);
    if (!text) return std::nullopt;
    const std::string_view run = untilSemicolon(*text);
    const bool valid = run.size() >= kShortestDescription &&
                       run.find_first_of(kWhiteSpace) != std::string_view::npos &&
                       std::any_of(run.begin(), run.end(), isAsciiLetter);
    return valid ? text : std::nullopt;
}

void useManufacturer(Names names, std::string_view manufacturer, std::string_view modelText) {
    const Rule* rule = findRule(kMakerNames, manufacturer);
    names.make.assign(untilSemicolon(names.fitting(rule != nullptr ? rule->make : manufacturer)));
    // The blank goes again when the make is trimmed, as meant.
    if (!startsWithIgnoringCase(modelText, names.make.view())) names.make.append(" ");
}

void useModel(Names names, std::optional<std::string_view> manufacturer,
              std::string_view modelText) {
    names.model.assign(names.fitting(modelText));
    if (manufacturer) {
        useManufacturer(names, *manufacturer, modelText);
    } else {
        names.make.assign(names.fitting(modelText));
    }
}

void useDescription(Names names, std::string_view description) {
    if (const Rule* rule = findRule(kDescribedMakers, description)) {
        names.make.assign(rule->make);
        names.model.assign(names.fitting(description.substr(rule->prefix.size())));
    } else {
        names.make.assign(names.fitting(description));
    }
}

void fillNames(Names names, std::string_view deviceID) {
    if (const auto modelText = textAfterAny(deviceID, kModelKeys)) {
        useModel(names, textAfterAny(deviceID, kMakeKeys), *modelText);
    } else if (const auto description = findDescription(deviceID)) {
        useDescription(names, *description);
    } else {
        names.make.assign("Unknown");
        names.model.assign("Unknown");
    }
}

std::string_view withoutTrailingBlanks(std::string_view text) {
    return text.substr(0, text.find_last_not_of(kWhiteSpace) + 1);
}

}  // namespace

int backendGetMakeModel(std::string_view deviceID, BoundedText& make, BoundedText& model,
                        std::size_t size) {
    const std::string_view text = textBeforeNul(asBytes(deviceID));
    if (text.empty() || size < kSmallestSize) return -1;
    make.clear();
    model.clear();
    fillNames({make, model, size}, text);
    make.assign(withoutTrailingBlanks(untilSemicolon(make.view())));
    model.assign(untilSemicolon(model.view()));
    return make.empty() ? -1 : 0;
}

}  // namespace tintoral
