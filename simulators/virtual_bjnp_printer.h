// A Canon network printer without paper: answers BJNP on UDP port 8611 of an address of its own,
// and discoveries that come to a broadcast address.
//
//   discover          the header, 6 bytes, MAC and IPv4 address
//   get device ID     the device ID, after its length (2 bytes, these two included)
//   set job details   the header with a new session
//   get status        the status text likewise; the header alone when the session is not open
//   close             the header
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "simulators/udp_peer.h"
#include "transport/net/sockets.h"

namespace tintoral::test {

struct BjnpSetup {
    MacAddress mac{0x00, 0x1E, 0x8F, 0x10, 0x20, 0x30};
    std::string deviceID =
        "MFG:Canon;CMD:BJL,BJRaster3,BSCCe;SOJ:CHMP;MDL:MP640 series;CLS:PRINTER;";
    std::string status = "BST:00;CIR:PBK=75,BK=40,M=62,C=UK,Y=18;DWS:NO;";
    bool everyRound = true;                          // else it answers the first discovery only
    std::uint16_t firstSession = 17;                 // the next ones count up
    std::set<std::uint8_t> ignores = {};             // commands that it does not answer
    std::function<void(Datagram&)> spoil = nullptr;  // has each answer before it is sent
    int answers = 1;                                 // to each request
};

class VirtualBjnpPrinter {
  public:
    // Without a broadcast address it cannot be discovered. Throws as UdpPeer.
    explicit VirtualBjnpPrinter(const std::string& address, BjnpSetup setup = {},
                                const std::string& broadcastAddress = "");

    // All that it heard, discoveries too, and the sessions that were not closed.
    std::vector<Datagram> requests() const { return peer_.requests(); }
    std::set<std::uint16_t> openSessions() const;

  private:
    std::optional<Datagram> answer(Bytes request);
    Datagram payloadFor(std::uint8_t command, std::uint16_t session) const;
    void keepSessions(std::uint8_t command, std::uint16_t& session);

    Ipv4Address address_;
    BjnpSetup setup_;
    mutable std::mutex mutex_;
    std::uint16_t nextSession_;
    int discoveries_ = 0;
    std::set<std::uint16_t> sessions_;
    UdpPeer peer_;
};

}  // namespace tintoral::test
