#include "support/clock.h"

#include <thread>

namespace tintoral {
namespace {

class SystemClock final : public Clock {
  public:
    std::chrono::sys_time<std::chrono::milliseconds> now() override {
        return std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
    }
    void pause(std::chrono::microseconds duration) override {
        std::this_thread::sleep_for(duration);
    }
};

Clock*& activeClock() {
    static SystemClock system;
    static Clock* active = &system;
    return active;
}

}  // namespace

std::chrono::sys_time<std::chrono::milliseconds> currentTime() {
    return activeClock()->now();
}

Date currentDate() {
    return std::chrono::floor<std::chrono::seconds>(currentTime());
}

void pauseFor(std::chrono::microseconds duration) {
    activeClock()->pause(duration);
}

ScopedClock::ScopedClock(Clock& clock) : previous_(activeClock()) {
    activeClock() = &clock;
}

ScopedClock::~ScopedClock() {
    activeClock() = previous_;
}

}  // namespace tintoral
