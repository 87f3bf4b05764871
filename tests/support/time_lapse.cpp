#include "support/time_lapse.h"

#include <poll.h>
#include <sys/syscall.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <cstdint>
#include <ctime>

namespace {

constexpr std::int64_t kSecond = 1'000'000'000;

std::int64_t factor = 1;
std::int64_t start = 0;

std::int64_t nanoseconds(const timespec& time) {
    return time.tv_sec * kSecond + time.tv_nsec;
}

timespec asTimespec(std::int64_t nanoseconds) {
    return {nanoseconds / kSecond, nanoseconds % kSecond};
}

// Rounded up: no wait becomes a look, and no alarm is switched off.
timespec shortened(const timespec& wait) {
    return asTimespec((nanoseconds(wait) + factor - 1) / factor);
}

}  // namespace

namespace tintoral::test {

void startTimeLapse(int newFactor) {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    start = nanoseconds(now);
    factor = newFactor;
}

}  // namespace tintoral::test

// These stand before those of the C library.
extern "C" {

int clock_gettime(clockid_t clock, timespec* time) noexcept {
    const auto result = static_cast<int>(::syscall(SYS_clock_gettime, clock, time));
    if (result == 0 && clock == CLOCK_MONOTONIC)
        *time = asTimespec(start + (nanoseconds(*time) - start) * factor);
    return result;
}

int nanosleep(const timespec* wait, timespec* rest) {
    const timespec real = shortened(*wait);
    return static_cast<int>(::syscall(SYS_nanosleep, &real, rest));
}

int poll(pollfd* entries, nfds_t count, int timeout) {
    constexpr std::int64_t kMillisecond = 1'000'000;
    const timespec real = shortened(asTimespec(timeout * kMillisecond));
    return static_cast<int>(
        ::syscall(SYS_ppoll, entries, count, timeout < 0 ? nullptr : &real, nullptr, 0));
}

int timerfd_settime(int timer, int flags, const itimerspec* next, itimerspec* previous) noexcept {
    itimerspec real{{}, shortened(next->it_value)};
    if ((flags & TFD_TIMER_ABSTIME) != 0 && nanoseconds(next->it_value) > start) {
        real.it_value =
            asTimespec(start + (nanoseconds(next->it_value) - start + factor - 1) / factor);
    }
    return static_cast<int>(::syscall(SYS_timerfd_settime, timer, flags, &real, previous));
}
}
