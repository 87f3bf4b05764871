// What tests measure of a query.
#pragma once

#include <chrono>
#include <functional>
#include <vector>

#include "ink/ink_quantities.h"

namespace tintoral::test {

// How long the call took in real time.
inline std::chrono::milliseconds timed(const std::function<void()>& call) {
    const auto start = std::chrono::steady_clock::now();
    call();
    return std::chrono::floor<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
}

// The levels of the entries in use.
inline std::vector<int> levelsOf(const InkQuantities& ink) {
    std::vector<int> all;
    for (std::size_t i = 0; i < ink.usableCount(); ++i) all.push_back(ink.entries.at(i).level);
    return all;
}

}  // namespace tintoral::test
