#include "support/mdns_peer.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <sys/socket.h>

#include <cerrno>
#include <system_error>

#include "transport/net/sockets.h"

namespace tintoral::test {
namespace {

using namespace std::string_literals;

constexpr std::uint16_t kPort = 5353;
constexpr std::size_t kLargestPacket = 1400;

enum RecordType : std::uint16_t { A = 1, Ptr = 12, Txt = 16, Srv = 33 };

std::string be16(std::size_t value) {
    return {static_cast<char>(value >> 8 & 0xFF), static_cast<char>(value & 0xFF)};
}

std::string withLength(const std::string& text) {
    return static_cast<char>(text.size()) + text;
}

// "_ipp._tcp" below "local", in the wire format (RFC 1035, section 3.1).
std::string encodedType(const std::string& type) {
    const std::size_t dot = type.find('.');
    return withLength(type.substr(0, dot)) + withLength(type.substr(dot + 1)) + "\5local\0"s;
}

std::string record(const std::string& name, RecordType type, std::uint32_t timeToLive,
                   const std::string& data) {
    return name + be16(type) + be16(1) + be16(timeToLive >> 16) + be16(timeToLive & 0xFFFF) +
           be16(data.size()) + data;
}

std::string addressBytes(const std::string& address) {
    in_addr parsed{};
    ::inet_pton(AF_INET, address.c_str(), &parsed);
    return {reinterpret_cast<const char*>(&parsed), sizeof parsed};
}

struct Records {
    std::string bytes;
    std::size_t count = 0;

    void add(const std::string& one) {
        bytes += one;
        ++count;
    }
};

Records recordsOf(const MdnsService& service, std::uint32_t timeToLive,
                  const std::string& address) {
    const std::string host = "\4peer\5local\0"s;
    const std::string type = encodedType(service.type);
    const std::string instance = withLength(service.name) + type;
    std::string txt;
    for (const std::string& string : service.txt) txt += withLength(string);
    Records records;
    records.add(record(type, Ptr, timeToLive, instance));
    if (!service.resolvable) return records;
    records.add(record(instance, Srv, timeToLive, be16(0) + be16(0) + be16(service.port) + host));
    records.add(record(instance, Txt, timeToLive, txt.empty() ? "\0"s : txt));
    records.add(record(host, A, 120, addressBytes(address)));
    return records;
}

// An unsolicited response.
std::string packetOf(const Records& answers) {
    return be16(0) + be16(0x8400) + be16(0) + be16(answers.count) + be16(0) + be16(0) +
           answers.bytes;
}

template <typename SocketAddress>
std::vector<std::uint8_t> bytesOf(const SocketAddress& address) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(&address);
    return {bytes, bytes + sizeof address};
}

// The port is the daemon's too.
template <typename SocketAddress>
void bindShared(const UniqueFd& socket, const SocketAddress& own) {
    const int yes = 1;
    ::setsockopt(socket.get(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    if (::bind(socket.get(), reinterpret_cast<const sockaddr*>(&own), sizeof own) != 0)
        throw std::system_error(errno, std::generic_category(), "MdnsPeer: bind");
}

}  // namespace

MdnsPeer::MdnsPeer(const std::string& address)
    : address_(address), socket_(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    const int hops = 255;
    sockaddr_in own{};
    sockaddr_in group{};
    resolveIpv4(address, kPort, own);
    resolveIpv4("224.0.0.251", kPort, group);
    ::setsockopt(socket_.get(), IPPROTO_IP, IP_MULTICAST_TTL, &hops, sizeof hops);
    ::setsockopt(socket_.get(), IPPROTO_IP, IP_MULTICAST_IF, &own.sin_addr, sizeof own.sin_addr);
    bindShared(socket_, own);
    group_ = bytesOf(group);
}

MdnsPeer::MdnsPeer(const std::string& address, OverIPv6)
    : address_(address), socket_(::socket(AF_INET6, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    const int yes = 1;
    const int hops = 255;
    const unsigned interface = ::if_nametoindex("net0");
    sockaddr_in6 own{};
    own.sin6_family = AF_INET6;
    own.sin6_port = htons(kPort);
    sockaddr_in6 group = own;
    group.sin6_scope_id = interface;
    ::inet_pton(AF_INET6, "ff02::fb", &group.sin6_addr);
    ::setsockopt(socket_.get(), IPPROTO_IPV6, IPV6_V6ONLY, &yes, sizeof yes);
    ::setsockopt(socket_.get(), IPPROTO_IPV6, IPV6_MULTICAST_HOPS, &hops, sizeof hops);
    ::setsockopt(socket_.get(), IPPROTO_IPV6, IPV6_MULTICAST_IF, &interface, sizeof interface);
    bindShared(socket_, own);
    group_ = bytesOf(group);
}

void MdnsPeer::setServices(const std::vector<MdnsService>& services, std::uint32_t timeToLive) {
    packets_.clear();
    next_ = 0;
    Records packet;
    for (const MdnsService& service : services) {
        const Records more = recordsOf(service, timeToLive, address_);
        if (packet.bytes.size() + more.bytes.size() > kLargestPacket) {
            packets_.push_back(packetOf(packet));
            packet = {};
        }
        packet.bytes += more.bytes;
        packet.count += more.count;
    }
    packets_.push_back(packetOf(packet));
}

void MdnsPeer::sendNext() {
    const std::string& packet = packets_[next_++ % packets_.size()];
    ::sendto(socket_.get(), packet.data(), packet.size(), MSG_NOSIGNAL,
             reinterpret_cast<const sockaddr*>(group_.data()),
             static_cast<socklen_t>(group_.size()));
}

}  // namespace tintoral::test
