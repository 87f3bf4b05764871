#include "support/test_clock.h"

namespace tintoral::test {

void TestClock::pause(std::chrono::microseconds duration) {
    pauses_.push_back(duration);
    advance(duration);
}

}  // namespace tintoral::test
