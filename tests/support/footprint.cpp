#include "support/footprint.h"

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>

#if defined(__SANITIZE_ADDRESS__)
// From <sanitizer/allocator_interface.h>, which GCC does not ship.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace tintoral::test {
namespace {

// Beyond this the rest of the allocator's work shows as growth.
constexpr std::size_t kMostResidentGrowthKiB = 4096;
constexpr std::size_t kForgottenBytes = 8;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kResidentCounts = false;  // freed memory is kept for a while to find late uses
std::size_t heapBytes() {
    return __sanitizer_get_current_allocated_bytes();
}
#else
constexpr bool kResidentCounts = true;
std::size_t heapBytes() {
    ::malloc_trim(0);
    const struct mallinfo2 all = ::mallinfo2();
    return all.uordblks + all.hblkhd;
}
#endif

std::size_t openDescriptors() {
    const std::filesystem::directory_iterator entries("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

std::size_t residentKiB() {
    std::size_t total = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)) / 1024;
}

bool hasGrown(const char* what, const char* measure, std::size_t before, std::size_t after,
              std::size_t allowed) {
    if (after <= before + allowed) return false;
    std::printf("%s: %s grew from %zu to %zu\n", what, measure, before, after);
    return true;
}

// On a busy machine an answer may come too late.
bool doTurns(const char* what, int turns, const std::function<bool()>& turn) {
    const int allowed = 1 + turns / 10;
    int failed = 0;
    for (int number = 1; number <= turns && failed <= allowed; ++number) {
        if (!turn()) ++failed;
    }
    if (failed > 0) std::printf("%s: %d turns failed\n", what, failed);
    return failed <= allowed;
}

void printRow(const char* what, int turns, double seconds, const Footprint& before,
              const Footprint& after) {
    std::printf("%-28s %6d %8.1f %5zu %5zu %10zu %10zu %8zu %8zu\n", what, turns, seconds,
                before.descriptors, after.descriptors, before.heapBytes, after.heapBytes,
                before.residentKiB, after.residentKiB);
    std::fflush(stdout);
}

}  // namespace

Footprint footprint() {
    const std::size_t heap = heapBytes();
    return {openDescriptors(), heap, residentKiB()};
}

void printFootprintTitles() {
    std::printf("%-28s %6s %8s %11s %21s %17s\n", "", "turns", "seconds", "descriptors",
                "heap bytes", "resident KiB");
}

bool repeat(const char* what, int warmUp, int turns, std::size_t slackBytes,
            const std::function<bool()>& turn) {
    if (!doTurns(what, warmUp, turn)) return false;
    const Footprint before = footprint();
    const auto start = std::chrono::system_clock::now();  // a time lapse leaves it alone
    if (!doTurns(what, turns, turn)) return false;
    const std::chrono::duration<double> took = std::chrono::system_clock::now() - start;
    const Footprint after = footprint();
    printRow(what, turns, took.count(), before, after);
    const std::size_t heapSlack =
        std::max(slackBytes, kForgottenBytes * static_cast<std::size_t>(turns));
    const bool descriptors =
        hasGrown(what, "descriptors", before.descriptors, after.descriptors, 0);
    const bool heap = hasGrown(what, "heap", before.heapBytes, after.heapBytes, heapSlack);
    const bool resident = kResidentCounts && hasGrown(what, "resident memory", before.residentKiB,
                                                      after.residentKiB, kMostResidentGrowthKiB);
    return !descriptors && !heap && !resident;
}

}  // namespace tintoral::test
