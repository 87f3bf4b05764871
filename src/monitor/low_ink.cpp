#include "monitor/low_ink.h"

#include <algorithm>
#include <array>

#include "ink/ink_quantities.h"
#include "records/ink_dict.h"
#include "support/text.h"

namespace tintoral {
namespace {

constexpr std::array<std::string_view, 2> kBoxWords{"waste", "maintenance"};

bool isInk(std::string_view name) {
    return std::ranges::none_of(
        kBoxWords, [name](std::string_view word) { return containsIgnoringCase(name, word); });
}

std::vector<std::string> inkNames(const Dictionary& inkDict) {
    auto names = inkDict.texts(keys::colors).value_or(std::vector<std::string>());
    names.resize(std::min(names.size(), InkQuantities::kCapacity));
    std::erase_if(names, [](const std::string& name) { return !isInk(name); });
    return names;
}

void judgeInk(const std::string& name, int level, std::int64_t before, LowInkNews& news) {
    if (level > kLowLevel) return;
    const std::int64_t threshold = level > kVeryLowLevel ? kLowLevel : kVeryLowLevel;
    const bool isNew = before == 0 || threshold < before;
    news.announced.set(name, isNew ? threshold : before);
    news.inks.push_back({cleanText(name), level});
    news.isNew |= isNew;
}

}  // namespace

LowInkNews judgeReading(const Dictionary& announced, const Dictionary& inkDict) {
    LowInkNews news;
    for (const std::string& name : inkNames(inkDict)) {
        if (news.announced.contains(name)) continue;  // two inks of one name share a level
        const Value* value = inkDict.find(name);
        const int level = value ? levelOf(*value).value_or(-1) : -1;
        const std::int64_t before = announced.integer(name).value_or(0);
        if (level >= 0) {
            judgeInk(name, level, before, news);
        } else if (before != 0) {
            news.announced.set(name, before);
        }
    }
    return news;
}

}  // namespace tintoral
