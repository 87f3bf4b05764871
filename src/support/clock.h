// Time, and the pauses that a printer needs between two exchanges.
//
// All of the program asks this clock, so that a test can fix the date of a reading and skip a
// pause. Waits for a peer (select, poll) are real time and do not go through here.
#pragma once

#include <chrono>

namespace tintoral {

// A moment as property lists keep it: whole seconds, UTC.
using Date = std::chrono::sys_seconds;

class Clock {
  public:
    virtual ~Clock() = default;
    virtual std::chrono::sys_time<std::chrono::milliseconds> now() = 0;
    virtual void pause(std::chrono::microseconds duration) = 0;
};

// The moment, cut to whole seconds.
Date currentDate();

// The moment in milliseconds since 1970, UTC.
std::chrono::sys_time<std::chrono::milliseconds> currentTime();

// Does nothing for `duration`.
void pauseFor(std::chrono::microseconds duration);

// While it lives, the program runs by `clock`, which its maker owns. Scopes nest.
class ScopedClock {
  public:
    explicit ScopedClock(Clock& clock);
    ~ScopedClock();
    ScopedClock(const ScopedClock&) = delete;
    ScopedClock& operator=(const ScopedClock&) = delete;

  private:
    Clock* previous_;
};

}  // namespace tintoral
