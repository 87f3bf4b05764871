#include "simulators/udp_peer.h"

#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

#include "transport/net/sockets.h"

namespace tintoral::test {

namespace {

UniqueFd boundTo(const std::string& address, std::uint16_t port, bool shared) {
    UniqueFd socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const int on = shared ? 1 : 0;
    ::setsockopt(socket.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in own{};
    resolveIpv4(address, port, own);
    if (::bind(socket.get(), reinterpret_cast<const sockaddr*>(&own), sizeof own) != 0) {
        throw std::system_error(errno, std::generic_category(), "UdpPeer: bind");
    }
    return socket;
}

}  // namespace

UdpPeer::UdpPeer(const std::string& address, std::uint16_t port, Script script,
                 const std::string& alsoAt, int answers)
    : socket_(boundTo(address, port, false)),
      second_(alsoAt.empty() ? UniqueFd() : boundTo(alsoAt, port, true)),
      script_(std::move(script)),
      answers_(answers) {
    thread_ = std::jthread([this](const std::stop_token& stop) { serve(stop); });
}

UdpPeer::~UdpPeer() {
    thread_.request_stop();
    thread_.join();
}

std::vector<Datagram> UdpPeer::requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
}

void UdpPeer::serve(const std::stop_token& stop) {
    constexpr int kStopCheckMs = 20;
    std::array<pollfd, 2> entries{{{socket_.get(), POLLIN, 0}, {second_.get(), POLLIN, 0}}};
    while (!stop.stop_requested()) {
        if (::poll(entries.data(), entries.size(), kStopCheckMs) < 1) continue;
        for (const pollfd& entry : entries) {
            if ((entry.revents & POLLIN) != 0) answerOne(stop, entry.fd);
        }
    }
}

void UdpPeer::answerOne(const std::stop_token& stop, int socket) {
    Datagram request(65536);
    sockaddr_in sender{};
    socklen_t size = sizeof sender;
    auto* const from = reinterpret_cast<sockaddr*>(&sender);
    const ssize_t count = ::recvfrom(socket, request.data(), request.size(), 0, from, &size);
    if (count < 0) return;
    request.resize(static_cast<std::size_t>(count));
    {
        const std::lock_guard lock(mutex_);
        requests_.push_back(request);
    }
    for (int i = 0; i < answers_ && !stop.stop_requested(); ++i) {
        if (const auto answer = script_(request))
            ::sendto(socket_.get(), answer->data(), answer->size(), MSG_NOSIGNAL, from, size);
    }
}

}  // namespace tintoral::test
