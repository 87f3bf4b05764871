#include "support/fixed_text.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace tintoral {

void BoundedText::clear() {
    size_ = 0;
    storage_[0] = '\0';
}

void BoundedText::assign(std::string_view text) {
    size_ = std::min(text.size(), capacity_);
    if (size_ > 0)
        std::memmove(storage_, text.data(), size_);  // the text may be a part of this one
    storage_[size_] = '\0';
}

void BoundedText::append(std::string_view text) {
    const std::size_t count = std::min(text.size(), capacity_ - size_);
    if (count > 0) std::memmove(storage_ + size_, text.data(), count);
    size_ += count;
    storage_[size_] = '\0';
}

std::size_t BoundedText::appendArguments(const char* pattern, std::va_list arguments) {
    const std::size_t room = capacity_ - size_;
    const int wanted = std::vsnprintf(storage_ + size_, room + 1, pattern, arguments);
    const std::size_t added = wanted < 0 ? 0 : std::min(static_cast<std::size_t>(wanted), room);
    size_ += added;
    storage_[size_] = '\0';
    return added;
}

std::size_t BoundedText::format(const char* pattern, ...) {
    clear();
    std::va_list arguments;
    va_start(arguments, pattern);
    const std::size_t added = appendArguments(pattern, arguments);
    va_end(arguments);
    return added;
}

std::size_t BoundedText::appendFormat(const char* pattern, ...) {
    std::va_list arguments;
    va_start(arguments, pattern);
    const std::size_t added = appendArguments(pattern, arguments);
    va_end(arguments);
    return added;
}

}  // namespace tintoral
