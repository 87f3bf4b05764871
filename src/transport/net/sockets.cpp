#include "transport/net/sockets.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <ifaddrs.h>
#include <netdb.h>
#include <netinet/tcp.h>
#include <netpacket/packet.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>

#include "support/clock.h"

namespace tintoral {
namespace {

using std::chrono::milliseconds;
using Steady = std::chrono::steady_clock;

constexpr milliseconds kConnectTimeout{2000};
constexpr milliseconds kSendTimeout{2000};
constexpr int kUdpAttempts = 2;

using AddressList = std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)>;
using InterfaceList = std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)>;

// What is left until `deadline`, rounded up, as poll() wants it.
int remainingMs(Steady::time_point deadline) {
    const auto left = std::chrono::ceil<milliseconds>(deadline - Steady::now()).count();
    return static_cast<int>(std::clamp<milliseconds::rep>(left, 0, INT_MAX));
}

int pollUntil(Steady::time_point deadline, pollfd& entry) {
    int result = 0;
    do {
        result = ::poll(&entry, 1, remainingMs(deadline));
    } while (result < 0 && errno == EINTR);
    return result;
}

// Waits until one of `events` is there: 1, 0 on time-out, -1 with errno set. A signal does not
// stretch the wait, and poll() knows no limit to a descriptor's number as select() does.
int waitFor(int socket, short events, milliseconds timeout) {
    pollfd entry{socket, events, 0};
    // poll() waits for a negative descriptor in silence, and only marks one that is not open.
    const int result = socket < 0 ? -1 : pollUntil(Steady::now() + timeout, entry);
    if (socket >= 0 && (entry.revents & POLLNVAL) == 0) return result;
    errno = EBADF;
    return -1;
}

void waitUntil(Steady::time_point deadline) {
    while (const int left = remainingMs(deadline)) ::poll(nullptr, 0, left);
}

// One recv of a socket that was found ready; never blocks, for a datagram may be gone again (bad
// checksum).
int receiveOnce(int socket, MutableBytes buffer) {
    return static_cast<int>(::recv(socket, buffer.data(), buffer.size(), MSG_DONTWAIT));
}

bool setNonBlocking(int socket, bool on) {
    return ::fcntl(socket, F_SETFL, on ? O_NONBLOCK : 0) == 0;
}

// The error that a connection in progress ended with, 0 for none.
int pendingError(int socket) {
    int error = 0;
    socklen_t size = sizeof error;
    return ::getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size) == 0 ? error : errno;
}

const char* finishConnect(int socket) {
    const int ready = waitFor(socket, POLLOUT, kConnectTimeout);
    if (ready < 0) return "TcpOpen:connect_select";
    errno = ready == 0 ? ETIMEDOUT : pendingError(socket);
    if (ready == 0) return "TcpOpen:connect timeout";
    return errno == 0 ? nullptr : "TcpOpen:connect";
}

// Connects within 2 s and leaves the socket blocking. Result: null, or what failed (for perror),
// with errno set.
const char* connectWithin(int socket, const sockaddr* address, socklen_t size) {
    if (!setNonBlocking(socket, true)) return "TcpOpen:fcntl";
    if (::connect(socket, address, size) != 0) {
        if (errno != EINPROGRESS) return "TcpOpen:connect";
        if (const char* failed = finishConnect(socket)) return failed;
    }
    return setNonBlocking(socket, false) ? nullptr : "TcpOpen:fcntl";
}

// Requests are small and some come in two sends: the second one is not to wait for the peer's
// delayed acknowledgement of the first (Nagle's algorithm, RFC 896), which takes 40 ms and more.
void sendAtOnce(int socket) {
    const int on = 1;
    ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

// A peer that stops reading may hold up a send no longer than this.
void boundSends(int socket) {
    const timeval limit{std::chrono::duration_cast<std::chrono::seconds>(kSendTimeout).count(), 0};
    ::setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

const sockaddr* generic(const sockaddr_in& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

AddressList lookUp(const std::string& host, const char* service, const addrinfo& hints) {
    addrinfo* found = nullptr;
    if (::getaddrinfo(host.c_str(), service, &hints, &found) != 0) found = nullptr;
    return {found, &::freeaddrinfo};
}

UniqueFd withoutUdpSocket() {
    std::perror("Client:socket");
    return {};
}

// No peer: the host's name did not resolve.
bool sendDatagram(int socket, Bytes datagram, const std::optional<sockaddr_in>& peer) {
    errno = EHOSTUNREACH;
    const bool sent = peer && ::sendto(socket, datagram.data(), datagram.size(), MSG_NOSIGNAL,
                                       generic(*peer), sizeof *peer) >= 0;
    if (!sent) std::perror("Client: sendto");
    return sent;
}

InterfaceList interfaces() {
    ifaddrs* first = nullptr;
    if (::getifaddrs(&first) != 0) first = nullptr;
    return {first, &::freeifaddrs};
}

bool hasFamily(const ifaddrs& entry, int family) {
    return entry.ifa_addr != nullptr && entry.ifa_addr->sa_family == family;
}

Ipv4Address ipv4Bytes(const sockaddr* address) {
    sockaddr_in ipv4{};
    if (address != nullptr) std::memcpy(&ipv4, address, sizeof ipv4);
    Ipv4Address bytes{};
    std::memcpy(bytes.data(), &ipv4.sin_addr, bytes.size());
    return bytes;
}

// The decimal number that `text` begins with; 0 when it begins with none that a port can have.
int portNumber(std::string_view text) {
    std::uint16_t port = 0;
    std::from_chars(text.data(), text.data() + text.size(), port);
    return port;
}

void splitHostAndPort(std::string_view text, UrlParts& parts) {
    const std::size_t colon = text.find(':');
    parts.host = text.substr(0, colon);
    if (colon != std::string_view::npos && colon + 1 < text.size()) {
        parts.port = portNumber(text.substr(colon + 1));
    }
}

}  // namespace

bool resolveIpv4(const std::string& host, std::uint16_t port, sockaddr_in& address) {
    address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    if (::inet_aton(host.c_str(), &address.sin_addr) != 0) return true;
    addrinfo hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    const AddressList found = lookUp(host, nullptr, hints);
    if (!found) return false;
    const Ipv4Address bytes = ipv4Bytes(found->ai_addr);
    std::memcpy(&address.sin_addr, bytes.data(), bytes.size());
    return true;
}

UniqueFd TcpOpenConnection(const std::string& host, std::uint16_t port) {
    UniqueFd socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!socket.valid()) {
        std::perror("TcpOpen:socket");
        return {};
    }
    sockaddr_in address{};
    const bool known = resolveIpv4(host, port, address);
    if (!known) errno = EHOSTUNREACH;
    const char* failed =
        known ? connectWithin(socket.get(), generic(address), sizeof address) : "TcpOpen:connect";
    if (failed != nullptr) {
        std::perror(failed);
        return {};
    }
    sendAtOnce(socket.get());
    boundSends(socket.get());
    return socket;
}

UniqueFd openTCP6(const std::string& host, std::uint16_t port) {
    addrinfo hints{};
    // Name services of Linux often know a ".local" name's IPv4 address alone.
    hints.ai_flags = AI_NUMERICSERV | AI_V4MAPPED;
    hints.ai_family = AF_INET6;
    hints.ai_socktype = SOCK_STREAM;
    const AddressList found = lookUp(host, std::to_string(port).c_str(), hints);
    for (const addrinfo* at = found.get(); at != nullptr; at = at->ai_next) {
        UniqueFd socket(::socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0));
        if (!socket.valid()) return {};
        if (connectWithin(socket.get(), at->ai_addr, at->ai_addrlen) != nullptr) continue;
        sendAtOnce(socket.get());
        boundSends(socket.get());
        return socket;
    }
    return {};
}

int SelectRecv(int socket, MutableBytes buffer, milliseconds timeout) {
    const int ready = waitFor(socket, POLLIN, timeout);
    if (ready <= 0) return ready;
    return std::max(receiveOnce(socket, buffer), 0);
}

int Nrecv(int socket, MutableBytes buffer, milliseconds timeout) {
    const int count = SelectRecv(socket, buffer, timeout);
    return count < 1 ? -1 : count;
}

int SelectCheck(int socket, milliseconds timeout) {
    const int ready = waitFor(socket, POLLIN, timeout);
    if (ready < 0) std::perror("select");
    return ready;
}

int waitRecv(int socket, MutableBytes buffer, milliseconds timeout) {
    const auto deadline = Steady::now() + timeout;
    const int ready = waitFor(socket, POLLIN, timeout);
    if (ready <= 0) return ready;
    const int count = receiveOnce(socket, buffer);
    if (count < 1) return -1;
    // One read a call, as meant: the peers' protocols are paced by it.
    if (static_cast<std::size_t>(count) < buffer.size()) waitUntil(deadline);
    return count;
}

int receiveAll(int socket, MutableBytes buffer, milliseconds timeout) {
    const auto deadline = Steady::now() + timeout;
    std::size_t received = 0;
    int result = 0;
    while (received < buffer.size()) {
        result = waitFor(socket, POLLIN, milliseconds(remainingMs(deadline)));
        if (result < 1) break;
        result = receiveOnce(socket, buffer.subspan(received));
        if (result < 1) return received > 0 ? static_cast<int>(received) : -1;
        received += static_cast<std::size_t>(result);
    }
    return received > 0 ? static_cast<int>(received) : result;
}

int waitSend(int socket, Bytes bytes) {
    std::size_t left = bytes.size();
    ssize_t written = 0;
    do {
        // From the first byte again, as meant.
        written = ::send(socket, bytes.data(), left, MSG_NOSIGNAL);
        if (written > 0) left -= static_cast<std::size_t>(written);
    } while (written > 0 && left > 0);
    return static_cast<int>(written);
}

std::uint32_t Getmtime() {
    return static_cast<std::uint32_t>(currentTime().time_since_epoch().count());
}

std::string dottedText(const Ipv4Address& address) {
    std::array<char, INET_ADDRSTRLEN> text{};
    ::inet_ntop(AF_INET, address.data(), text.data(), text.size());
    return text.data();
}

std::optional<Ipv4Address> ipv4FromDotted(const std::string& text) {
    Ipv4Address address{};
    if (::inet_pton(AF_INET, text.c_str(), address.data()) != 1) return std::nullopt;
    return address;
}

int udpExchange(int socket, const std::string& host, const UdpService& service, Bytes request,
                MutableBytes reply, OnSendFailure onSendFailure) {
    std::optional<sockaddr_in> peer(std::in_place);
    if (!resolveIpv4(host, service.port, *peer)) peer.reset();
    // A connected datagram socket hears its peer alone. Where that fails, so will the sends.
    if (peer && service.onlyFromHost)
        static_cast<void>(::connect(socket, generic(*peer), sizeof *peer));
    for (int attempt = 0; attempt < kUdpAttempts; ++attempt) {
        const bool sent = sendDatagram(socket, request, peer);
        if (!sent && onSendFailure == OnSendFailure::GiveUp) return -1;
        std::ranges::fill(reply, std::uint8_t{0});
        if (const int count = SelectRecv(socket, reply, service.wait); count > 0) return count;
    }
    return 0;
}

UniqueFd openUdpSocket() {
    UniqueFd socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    return socket.valid() ? std::move(socket) : withoutUdpSocket();
}

int sendAndReceive(const std::string& host, Bytes request, MutableBytes reply,
                   const UdpService& service) {
    const UniqueFd socket = openUdpSocket();
    if (!socket.valid()) std::exit(1);
    return udpExchange(socket.get(), host, service, request, reply, OnSendFailure::KeepTrying);
}

UniqueFd openBroadcastSocket() {
    UniqueFd socket = openUdpSocket();
    if (!socket.valid()) return socket;
    const int on = 1;
    sockaddr_in any{};
    any.sin_family = AF_INET;
    const bool prepared =
        ::setsockopt(socket.get(), SOL_SOCKET, SO_BROADCAST, &on, sizeof on) == 0 &&
        ::bind(socket.get(), generic(any), sizeof any) == 0;
    return prepared ? std::move(socket) : withoutUdpSocket();
}

bool sendDatagramTo(int socket, const Ipv4Address& address, std::uint16_t port, Bytes datagram) {
    sockaddr_in peer{};
    peer.sin_family = AF_INET;
    peer.sin_port = htons(port);
    std::memcpy(&peer.sin_addr, address.data(), address.size());
    return sendDatagram(socket, datagram, peer);
}

int Url2host_port_location(std::string_view url, UrlParts& parts) {
    constexpr std::size_t kLongestUrl = 1024;
    url = url.substr(0, kLongestUrl);
    parts.port = url.starts_with("ipp") ? 631 : 80;
    const auto rest = textAfter(url, "//");
    if (!rest) return 0;
    const std::size_t slash = rest->find('/');
    parts.location = slash == std::string_view::npos ? "/" : rest->substr(slash);
    const std::string_view authority = rest->substr(0, slash);
    if (!authority.empty()) splitHostAndPort(authority, parts);
    return 1;
}

int myIPAddress(std::string& interfaceName, Ipv4Address& address, Ipv4Address& netmask) {
    constexpr Ipv4Address kLoopback{127, 0, 0, 1};
    const InterfaceList list = interfaces();
    for (const ifaddrs* at = list.get(); at != nullptr; at = at->ifa_next) {
        if (!hasFamily(*at, AF_INET) || ipv4Bytes(at->ifa_addr) == kLoopback) continue;
        interfaceName = at->ifa_name;
        address = ipv4Bytes(at->ifa_addr);
        netmask = ipv4Bytes(at->ifa_netmask);
        break;
    }
    return 0;
}

int myMacAddress(std::string_view interfaceName, MacAddress& address) {
    const InterfaceList list = interfaces();
    for (const ifaddrs* at = list.get(); at != nullptr; at = at->ifa_next) {
        if (!hasFamily(*at, AF_PACKET) || interfaceName != at->ifa_name) continue;
        sockaddr_ll link{};
        std::memcpy(&link, at->ifa_addr, sizeof link);
        std::copy_n(std::begin(link.sll_addr), address.size(), address.begin());
        break;
    }
    return 0;
}

int GetMacAddress(const void* /*ignored*/, std::string_view text) {
    return static_cast<int>(text.size());
}

int gethostnameFromSock(const sockaddr_in& address, BoundedText& name) {
    std::array<char, NI_MAXHOST> found{};
    const bool known = ::getnameinfo(generic(address), sizeof address, found.data(), found.size(),
                                     nullptr, 0, NI_NAMEREQD) == 0;
    if (!known) ::inet_ntop(AF_INET, &address.sin_addr, found.data(), found.size());
    name.assign(found.data());
    return static_cast<int>(name.size());
}

int peerAddressOfSock(int socket, BoundedText& address) {
    sockaddr_in peer{};
    socklen_t size = sizeof peer;
    std::array<char, INET_ADDRSTRLEN> dotted{};
    const int known = ::getpeername(socket, reinterpret_cast<sockaddr*>(&peer), &size);
    if (known == 0 && peer.sin_family == AF_INET) {
        ::inet_ntop(AF_INET, &peer.sin_addr, dotted.data(), dotted.size());
    }
    address.assign(dotted.data());
    return static_cast<int>(address.size());
}

int my_ntoa(BoundedText& text, const sockaddr_in6& address) {
    text.clear();
    for (const std::uint8_t byte : address.sin6_addr.s6_addr) {
        text.appendFormat(text.empty() ? "%x" : ":%x", byte);
    }
    return 0;
}

int sendOnce(int socket, Bytes bytes) {
    return static_cast<int>(::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL));
}

int sendAll(int socket, Bytes bytes, milliseconds timeout) {
    const auto deadline = Steady::now() + timeout;
    while (!bytes.empty()) {
        const milliseconds left(remainingMs(deadline));
        const int ready = waitFor(socket, POLLOUT, std::min(left, kSendTimeout));
        if (ready == 0) errno = ETIMEDOUT;
        if (ready <= 0) return -1;
        const ssize_t sent =
            ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent < 0 && errno != EAGAIN) return -1;
        if (sent > 0) bytes = bytes.subspan(static_cast<std::size_t>(sent));
    }
    return 0;
}

int tcpSend(const std::string& host, std::uint16_t port, Bytes bytes) {
    const UniqueFd socket = TcpOpenConnection(host, port);
    if (!socket.valid()) return -1;
    const int sent = sendOnce(socket.get(), bytes);
    if (sent < 0) std::perror("tcpSend: send ");
    return sent;
}

}  // namespace tintoral
