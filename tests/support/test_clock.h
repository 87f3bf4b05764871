// A clock that stands still until told otherwise; pauses move it on without waiting.
#pragma once

#include <vector>

#include "support/clock.h"

namespace tintoral::test {

class TestClock final : public Clock {
  public:
    explicit TestClock(Date start = std::chrono::sys_days{std::chrono::year{2026} / 3 / 14})
        : now_(start) {}

    std::chrono::sys_time<std::chrono::milliseconds> now() override { return now_; }
    void pause(std::chrono::milliseconds duration) override;

    void advance(std::chrono::milliseconds duration) { now_ += duration; }
    const std::vector<std::chrono::milliseconds>& pauses() const { return pauses_; }

  private:
    std::chrono::sys_time<std::chrono::milliseconds> now_;
    std::vector<std::chrono::milliseconds> pauses_;
};

}  // namespace tintoral::test
