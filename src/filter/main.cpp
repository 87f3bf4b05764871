// One executable, two programs: CUPS calls a filter with at least five arguments, a person calls
// the window with fewer.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

#include "filter/command_filter.h"
#include "filter/window_loader.h"

namespace {

// A standard stream that is closed would become the next file or socket that is opened, and what is
// meant for the printer or the person would be written there.
void openStandardStreams() {
    int fd = 0;
    do {
        fd = ::open("/dev/null", O_RDWR);
    } while (fd >= 0 && fd <= STDERR_FILENO);
    if (fd >= 0) ::close(fd);
}

}  // namespace

int main(int argc, char** argv) {
    constexpr int kFilterArguments = 6;  // the program's own name counts
    openStandardStreams();
    std::fflush(stderr);
    if (argc < kFilterArguments) return tintoral::startWindow(argc, argv);
    return tintoral::doCupsCommands(argc, argv);
}
