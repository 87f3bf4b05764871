#include "discovery/txt_record.h"

#include <algorithm>

#include "support/text.h"

namespace tintoral {
namespace {

constexpr std::size_t kMostBytes = std::size_t{64} * 1024;  // what one DNS record can hold

std::string inSmallLetters(std::string_view key) {
    std::string small(key);
    std::ranges::transform(small, small.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return small;
}

}  // namespace

void TxtRecord::add(std::string_view keyAndValue) {
    const std::size_t at = keyAndValue.find('=');
    if (at == std::string_view::npos || at == 0) return;
    if (keyAndValue.size() > kMostBytes - size_) return;
    size_ += keyAndValue.size();
    values_.emplace(inSmallLetters(keyAndValue.substr(0, at)), keyAndValue.substr(at + 1));
}

std::optional<std::string> TxtRecord::text(std::string_view key) const {
    const auto entry = values_.find(inSmallLetters(key));
    if (entry == values_.end()) return std::nullopt;
    return cleanText(entry->second);
}

}  // namespace tintoral
