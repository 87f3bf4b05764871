// A host on the network that announces services by multicast DNS of its own (RFC 6762), without any
// daemon: as many and as odd as a test wants, and without ever answering a question.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/unique_fd.h"

namespace tintoral::test {

struct MdnsService {
    std::string name;  // any bytes, at most 63
    std::string type;  // "_ipp._tcp"
    std::uint16_t port = 9100;
    std::vector<std::string> txt{};
    bool resolvable = true;  // false: only the name is announced
};

class MdnsPeer {
  public:
    // Sends from `address`, an IPv4 address of this host, which is that of every service too.
    explicit MdnsPeer(const std::string& address);

    // Sends over IPv6 on net0 instead; the services' address is still the IPv4 one.
    struct OverIPv6 {};
    MdnsPeer(const std::string& address, OverIPv6);

    // From now on the services are announced, or withdrawn.
    void announce(const std::vector<MdnsService>& services) { setServices(services, 120); }
    void withdraw(const std::vector<MdnsService>& services) { setServices(services, 0); }

    // Sends the next packet of those that it takes, the first one again after the last one: packets
    // are lost when the host is busy.
    void sendNext();
    std::size_t packetCount() const { return packets_.size(); }

  private:
    void setServices(const std::vector<MdnsService>& services, std::uint32_t timeToLive);

    std::string address_;
    UniqueFd socket_;
    std::vector<std::uint8_t> group_;  // a socket address
    std::vector<std::string> packets_;
    std::size_t next_ = 0;
};

}  // namespace tintoral::test
