// `paint_bench COMMAND [ARGUMENT...]`: starts a program with a window on an otherwise empty X
// server, measures it, ends it and prints three numbers: µs from exec until its window is mapped,
// µs until it is painted, KiB of memory a second later.
//
// A window counts as painted when its pixels have so many colours as only text and icons have. They
// are fetched every other millisecond, whatever the program. The memory is the proportional set
// size of the process (proc(5), smaps_rollup).
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <thread>

namespace {

using namespace std::chrono_literals;
using Steady = std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;

constexpr int kSmallestWindow = 100;  // pixels, each way; less is an icon or an input-only window
constexpr std::size_t kColorsOfContent = 24;
constexpr auto kInterval = 2ms;
constexpr auto kLongestStart = 30s;
constexpr auto kSettling = 1s;
constexpr auto kLongestEnd = 5s;

struct CloseDisplay {
    void operator()(Display* display) const { XCloseDisplay(display); }
};
struct DestroyImage {
    void operator()(XImage* image) const { XDestroyImage(image); }
};

// A window may go while it is looked at: no reason to end.
int ignoreError(Display*, XErrorEvent*) {
    return 0;
}

std::optional<Window> mappedWindow(Display* display) {
    while (XPending(display) > 0) {
        XEvent event;
        XNextEvent(display, &event);
        XWindowAttributes window;
        if (event.type != MapNotify || !XGetWindowAttributes(display, event.xmap.window, &window))
            continue;
        if (window.width >= kSmallestWindow && window.height >= kSmallestWindow)
            return event.xmap.window;
    }
    return std::nullopt;
}

bool isPainted(Display* display, Window window) {
    XWindowAttributes size;
    if (!XGetWindowAttributes(display, window, &size)) return false;
    const std::unique_ptr<XImage, DestroyImage> image(
        XGetImage(display, window, 0, 0, static_cast<unsigned>(size.width),
                  static_cast<unsigned>(size.height), AllPlanes, ZPixmap));
    std::set<unsigned long> colors;
    for (int y = 0; image && y < image->height; ++y) {
        for (int x = 0; x < image->width; ++x) colors.insert(XGetPixel(image.get(), x, y));
        if (colors.size() >= kColorsOfContent) return true;
    }
    return false;
}

// Result: how long it took until the condition held, or nothing when the start takes too long.
std::optional<Microseconds> waitFor(Steady::time_point start,
                                    const std::function<bool()>& condition) {
    while (Steady::now() - start < kLongestStart) {
        if (condition()) return Steady::now() - start;
        std::this_thread::sleep_for(kInterval);
    }
    return std::nullopt;
}

long proportionalSetSize(pid_t process) {
    std::ifstream rollup("/proc/" + std::to_string(process) + "/smaps_rollup");
    for (std::string word; rollup >> word;) {
        long size = 0;
        if (word == "Pss:" && rollup >> size) return size;
    }
    return 0;
}

void end(pid_t process) {
    ::kill(process, SIGTERM);
    const auto hasEnded = [process] { return ::waitpid(process, nullptr, WNOHANG) != 0; };
    for (auto start = Steady::now(); Steady::now() - start < kLongestEnd;) {
        if (hasEnded()) return;
        std::this_thread::sleep_for(kInterval);
    }
    ::kill(process, SIGKILL);
    ::waitpid(process, nullptr, 0);
}

int measure(Display* display, char** command) {
    const auto start = Steady::now();
    pid_t process = 0;
    if (posix_spawnp(&process, command[0], nullptr, nullptr, command, environ) != 0) {
        std::perror(command[0]);
        return 1;
    }
    std::optional<Window> window;
    const auto mapped =
        waitFor(start, [&] { return (window = mappedWindow(display)).has_value(); });
    const auto painted = mapped ? waitFor(start, [&] { return isPainted(display, *window); })
                                : std::optional<Microseconds>();
    std::this_thread::sleep_for(kSettling);
    const long memory = proportionalSetSize(process);
    end(process);
    if (!painted) {
        std::fprintf(stderr, "%s: no painted window\n", command[0]);
        return 1;
    }
    std::printf("%.0f %.0f %ld\n", mapped->count(), painted->count(), memory);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::unique_ptr<Display, CloseDisplay> display(XOpenDisplay(nullptr));
    if (argc < 2 || !display) {
        std::fputs("usage, with a display: paint_bench COMMAND [ARGUMENT...]\n", stderr);
        return 2;
    }
    XSetErrorHandler(ignoreError);
    XSelectInput(display.get(), DefaultRootWindow(display.get()), SubstructureNotifyMask);
    XSync(display.get(), False);
    return measure(display.get(), argv + 1);
}
