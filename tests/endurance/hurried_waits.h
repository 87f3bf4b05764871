// Waits for a printer that take a fraction of their time.
//
// Pauses go through support/clock.h, but the wait for an answer that does not come (what a printer
// may still have to say, the rest of a reply) is real time. Here the clock that measures it runs
// faster for this process, and whatever is timed by it is over sooner: the program, libusb and the
// libraries of the desktop alike.
#pragma once

namespace tintoral::test {

// From now on a second passes in 1/`times` s.
void hurryWaits(long times);

}  // namespace tintoral::test
