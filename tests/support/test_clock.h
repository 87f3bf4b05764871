// A clock that stands still until told otherwise; pauses move it on without waiting.
#pragma once

#include <vector>

#include "support/clock.h"

namespace tintoral::test {

class TestClock final : public Clock {
  public:
    explicit TestClock(Date start = std::chrono::sys_days{std::chrono::year{2026} / 3 / 14})
        : now_(start) {}

    std::chrono::sys_time<std::chrono::milliseconds> now() override {
        return std::chrono::floor<std::chrono::milliseconds>(now_);
    }
    void pause(std::chrono::microseconds duration) override;

    void advance(std::chrono::microseconds duration) { now_ += duration; }
    const std::vector<std::chrono::microseconds>& pauses() const { return pauses_; }

  private:
    std::chrono::sys_time<std::chrono::microseconds> now_;
    std::vector<std::chrono::microseconds> pauses_;
};

}  // namespace tintoral::test
