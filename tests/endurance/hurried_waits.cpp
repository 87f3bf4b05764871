// The functions of the C library stand in this executable, so all libraries call these.
#include "endurance/hurried_waits.h"

#include <poll.h>
#include <sys/syscall.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <ctime>

namespace {

constexpr long kNanoseconds = 1'000'000'000;
long factor = 1;
long origin = 0;  // where the hurried clock and the true one agree

long nanoseconds(const timespec& time) {
    return time.tv_sec * kNanoseconds + time.tv_nsec;
}

timespec timeOf(long nanoseconds) {
    return {nanoseconds / kNanoseconds, nanoseconds % kNanoseconds};
}

long trueNow() {
    timespec now{};
    ::syscall(SYS_clock_gettime, CLOCK_MONOTONIC, &now);
    return nanoseconds(now);
}

timespec unhurried(const timespec& moment) {
    const long time = nanoseconds(moment);
    return time == 0 ? moment : timeOf(origin + (time - origin) / factor);
}

}  // namespace

namespace tintoral::test {

void hurryWaits(long times) {
    origin = trueNow();
    factor = times;
}

}  // namespace tintoral::test

extern "C" {

int clock_gettime(clockid_t clock, timespec* time) noexcept {
    const long result = ::syscall(SYS_clock_gettime, clock, time);
    if (result == 0 && clock == CLOCK_MONOTONIC)
        *time = timeOf(origin + (nanoseconds(*time) - origin) * factor);
    return static_cast<int>(result);
}

int poll(pollfd* descriptors, nfds_t count, int timeout) {
    const timespec wait = timeOf(timeout * (kNanoseconds / 1000) / factor);
    return static_cast<int>(
        ::syscall(SYS_ppoll, descriptors, count, timeout < 0 ? nullptr : &wait, nullptr, 0));
}

// libusb sets moments of the monotonic clock, not spans of it.
int timerfd_settime(int timer, int flags, const itimerspec* wanted, itimerspec* old) noexcept {
    itimerspec moment = *wanted;
    if ((flags & TFD_TIMER_ABSTIME) != 0) moment.it_value = unhurried(moment.it_value);
    return static_cast<int>(::syscall(SYS_timerfd_settime, timer, flags, &moment, old));
}
}
