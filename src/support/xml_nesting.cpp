#include "support/xml_nesting.h"

#include <algorithm>

namespace tintoral {
namespace {

enum class Markup { Comment, CharacterData, Declaration, Opening, Closing, Other };

struct MarkupStart {
    std::string_view text;
    Markup markup;
};

// In the order in which they are tried.
constexpr MarkupStart kMarkupStarts[] = {
    {"<!--", Markup::Comment},   {"<![CDATA[", Markup::CharacterData}, {"<!", Markup::Declaration},
    {"<?", Markup::Declaration}, {"<array/>", Markup::Other},          {"<dict/>", Markup::Other},
    {"<array", Markup::Opening}, {"<dict", Markup::Opening},           {"</array", Markup::Closing},
    {"</dict", Markup::Closing},
};

Markup markupAt(std::string_view rest) {
    const auto* start = std::ranges::find_if(
        kMarkupStarts, [&](const MarkupStart& s) { return rest.starts_with(s.text); });
    return start == std::end(kMarkupStarts) ? Markup::Other : start->markup;
}

class NestingScan {
  public:
    NestingScan(std::string_view xml, int levels) : xml_(xml), levels_(levels) {}

    bool run() {
        for (auto at = xml_.find('<'); at != kNone; at = xml_.find('<', at + 1)) {
            if (!step(at, markupAt(xml_.substr(at)))) return false;
        }
        return true;
    }

  private:
    static constexpr auto kNone = std::string_view::npos;

    // Where a kind of hidden text ends; found once for all starts before it, however many there
    // are.
    struct HiddenText {
        std::string_view opening;
        std::string_view terminator;
        std::size_t end = 0;
    };

    bool step(std::size_t at, Markup markup) {
        switch (markup) {
            case Markup::Comment:
                return hide(comment_, at);
            case Markup::CharacterData:
                return hide(characterData_, at);
            case Markup::Declaration:
                return !begun_;
            case Markup::Opening:
                open();
                break;
            case Markup::Closing:
                close(at);
                break;
            case Markup::Other:
                break;
        }
        return depth_ <= levels_ && !(begun_ && hasQuotes(at));
    }

    bool hide(HiddenText& hidden, std::size_t at) {
        const std::size_t inside = at + hidden.opening.size();
        if (hidden.end < inside) hidden.end = xml_.find(hidden.terminator, inside);
        return hidden.end != kNone;
    }

    void open() {
        begun_ = true;
        ++depth_;
    }

    void close(std::size_t at) {
        if (at > std::max(comment_.end, characterData_.end)) depth_ = std::max(0, depth_ - 1);
    }

    bool hasQuotes(std::size_t at) const {
        const auto stop = xml_.find_first_of("<>\"'", at + 1);
        return stop != kNone && (xml_[stop] == '"' || xml_[stop] == '\'');
    }

    std::string_view xml_;
    int levels_;
    int depth_ = 0;
    bool begun_ = false;
    HiddenText comment_{"<!--", "-->"};
    HiddenText characterData_{"<![CDATA[", "]]>"};
};

}  // namespace

bool nestsWithin(std::string_view xml, int levels) {
    return NestingScan(xml, levels).run();
}

}  // namespace tintoral
