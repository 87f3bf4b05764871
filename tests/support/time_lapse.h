// Lets time pass faster, so that waits of minutes can be tested as they are: to all of the process,
// libraries included, the monotonic clock runs `factor` times as fast, and sleeps, poll() and
// timerfd wait as much less. The date stays, and so do the time-outs of sockets.
#pragma once

namespace tintoral::test {

// From now on and for good; called once, before other threads are started.
void startTimeLapse(int factor);

}  // namespace tintoral::test
