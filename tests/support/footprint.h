// What this process holds, before and after it has done the same thing many times.
#pragma once

#include <cstddef>
#include <functional>

namespace tintoral::test {

struct Footprint {
    std::size_t descriptors;
    std::size_t heapBytes;    // handed out and not given back
    std::size_t residentKiB;  // after the allocator has returned what it can
};

Footprint footprint();

// The columns of the rows that repeat() prints.
void printFootprintTitles();

// Does `turn` `warmUp` times and then `turns` times, and prints a row of the footprints before and
// after the latter. False, with a line that says why, when more than one turn in ten (and
// more than one) returned false or something grew: a descriptor, 8 bytes of heap for each turn
// (anything that a turn forgets takes more) but not less than `slackBytes`, or 4 MiB of memory.
bool repeat(const char* what, int warmUp, int turns, std::size_t slackBytes,
            const std::function<bool()>& turn);

}  // namespace tintoral::test
