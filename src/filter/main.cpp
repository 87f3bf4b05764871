// One executable, two programs: CUPS calls a filter with at least five arguments, a person calls
// the window with fewer.
#include <cstdio>

#include "filter/command_filter.h"
#include "filter/window_loader.h"

int main(int argc, char** argv) {
    constexpr int kFilterArguments = 6;  // the program's own name counts
    std::fflush(stderr);
    if (argc < kFilterArguments) return tintoral::startWindow(argc, argv);
    return tintoral::doCupsCommands(argc, argv);
}
