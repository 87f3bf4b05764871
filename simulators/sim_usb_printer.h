// USB printers that the real libusb finds and talks to, without hardware or privileges: umockdev
// gives the process a /sys and a /dev of its own and hands every ioctl on the device nodes to the
// printers here. The test binary must have umockdev's preload library ahead of the C library.
//
// The ioctls arrive on a thread of umockdev's; all functions may be called from the test's. An
// answer runs on umockdev's thread.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "simulators/sim_usb_device.h"

namespace tintoral::test {

class SimUsbPrinter {
  public:
    struct Impl;
    explicit SimUsbPrinter(std::shared_ptr<Impl> impl);  // SimUsbBus::attach()
    ~SimUsbPrinter();
    SimUsbPrinter(const SimUsbPrinter&) = delete;
    SimUsbPrinter& operator=(const SimUsbPrinter&) = delete;

    // What it says to each bulk write. It may call the functions below.
    void answerWith(SimUsbAnswer answer);

    // Puts a transfer up for reading; an empty one is a packet of length 0.
    void say(ByteVector transfer);

    void takeNoWrites(bool waits);
    void haltOut();
    void haltIn();
    void unplug();
    void holdElsewhere(bool held);  // another program has claimed its interfaces
    void refuseAccess();            // nobody but root may open the node any more
    void changeDeviceID(std::string deviceID);

    std::string owner() const;  // of interface 0: "usbfs" for a program, a driver, or nobody
    std::uint8_t alternate() const;
    int refusedClaims() const;
    ByteVector heard() const;                   // bulk writes
    std::vector<std::string> controls() const;  // setup packets in hex
    int transfersInFlight() const;
    int opens() const;   // of its node
    int closes() const;  // which come late

  private:
    std::shared_ptr<Impl> impl_;
};

// A bus with printers, bus 1; one at a time in a process. Everything of libusb must be closed
// before it goes.
class SimUsbBus {
  public:
    SimUsbBus();  // throws std::runtime_error where the preload library is not in place
    ~SimUsbBus();
    SimUsbBus(const SimUsbBus&) = delete;
    SimUsbBus& operator=(const SimUsbBus&) = delete;

    // Plugs a printer into the next port: the first has port 1 and address 2.
    SimUsbPrinter& attach(SimUsbSetup setup = {});

  private:
    struct Testbed;
    std::vector<std::unique_ptr<SimUsbPrinter>> printers_;
    std::unique_ptr<Testbed> testbed_;  // goes first, with its thread
};

}  // namespace tintoral::test
