// A USB printer on the far side of the cable, and the kernel's book-keeping for it: descriptors,
// requests, claims, bulk pipes. It knows nothing of how libusb reaches it (sim_usb_printer.h).
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "simulators/hex_bytes.h"
#include "support/byte_reader.h"

namespace tintoral::test {

// An alternate setting of an interface. Its bulk pipes are 01 and 82, for interface 1 03 and 84 and
// so on.
struct SimUsbSetting {
    std::uint8_t interface = 0;
    std::uint8_t alternate = 0;
    std::uint8_t interfaceClass = 7;
    std::uint8_t subclass = 1;
    std::uint8_t protocol = 2;
    bool bulkOut = true;
    bool bulkIn = true;
    bool interruptIn = false;
};

struct SimUsbSetup {
    std::uint16_t vendor = 0x04B8;
    std::uint16_t product = 0x0005;
    std::vector<SimUsbSetting> settings{{}};
    bool configured = true;        // false: it has no configuration
    std::uint8_t activeValue = 1;  // of the configuration; its only one is 1
    std::string deviceID = "MFG:EPSON;CMD:ESCPL2,BDC,D4;MDL:Stylus C84;CLS:PRINTER;SN:AB1234;";
    std::optional<std::uint16_t> deviceIDLength = std::nullopt;  // in front of it; else true
    bool refusesDeviceID = false;
    // The descriptor of the serial number as it is sent; none when empty.
    ByteVector serialDescriptor{14, 3, 'A', 0, 'B', 0, '1', 0, '2', 0, '3', 0, '4', 0};
    bool driverIsBound = true;  // the kernel's usblp, to each interface
};

// What the printer says to what it hears: each element is one transfer.
using SimUsbAnswer = std::function<std::vector<ByteVector>(Bytes)>;

class SimUsbDevice {
  public:
    using Client = const void*;  // an open node

    // Somebody else's claim: only a claim that goes soon may still be waited for.
    static constexpr long kClaimedByClient = -100000;

    explicit SimUsbDevice(SimUsbSetup setup);

    ByteVector descriptors() const;
    const SimUsbSetup& setup() const { return setup_; }
    void changeDeviceID(std::string deviceID) { setup_.deviceID = std::move(deviceID); }

    // Results are those of the kernel: 0 or more, or a negative errno.
    long claim(Client client, unsigned interface);
    long detachAndClaim(Client client, unsigned interface);
    long release(Client client, unsigned interface);
    long detachDriver(unsigned interface);
    long attachDriver(unsigned interface);
    long setAlternate(Client client, unsigned interface, unsigned alternate);
    long setConfiguration(unsigned value);
    long clearHalt(unsigned endpoint);
    void forget(Client client);

    // Who has the interface: "usbfs" for a program, else the driver, or nobody.
    std::string owner(unsigned interface) const;
    std::uint8_t alternate(unsigned interface) const;

    // `packet` is 8 bytes of setup and the data. Result: bytes of data, or a negative errno.
    long control(Client client, MutableBytes packet);

    // Whether the client may use the endpoint now: 0 or a negative errno.
    long checkPipe(Client client, unsigned endpoint) const;

    // Result: of the transfer; nothing while the printer makes it wait.
    struct Transfer {
        int status = 0;
        std::size_t count = 0;
    };
    std::optional<Transfer> write(Bytes bytes);
    std::optional<Transfer> read(MutableBytes buffer);

    // Switches and what was seen; changed between two transfers.
    SimUsbAnswer answer;
    std::deque<ByteVector> toSay;
    bool waits = false;      // takes no bulk writes
    bool outHalted = false;  // the pipe stalls until it is cleared
    bool inHalted = false;
    bool heldElsewhere = false;  // another program has claimed the interfaces
    bool unplugged = false;
    ByteVector heard;
    std::vector<std::string> controls;  // the setup packets in hex
    int refusedClaims = 0;

  private:
    struct Interface {
        std::string driver;
        Client claimant = nullptr;
        std::uint8_t alternate = 0;
    };

    Interface* find(unsigned interface);
    const SimUsbSetting* findSetting(unsigned interface, unsigned alternate) const;
    long mayAsk(Client client, Bytes setup);
    std::optional<ByteVector> replyTo(Bytes setup) const;
    std::optional<ByteVector> descriptor(std::uint8_t type, std::uint8_t index) const;
    ByteVector deviceIDReply() const;

    SimUsbSetup setup_;
    std::map<unsigned, Interface> interfaces_;
};

}  // namespace tintoral::test
