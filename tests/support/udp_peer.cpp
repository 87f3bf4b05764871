#include "support/udp_peer.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "transport/net/sockets.h"

namespace tintoral::test {

UdpPeer::UdpPeer(const std::string& address, std::uint16_t port, Script script)
    : socket_(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)), script_(std::move(script)) {
    sockaddr_in own{};
    resolveIpv4(address, port, own);
    if (::bind(socket_.get(), reinterpret_cast<const sockaddr*>(&own), sizeof own) != 0) {
        throw std::system_error(errno, std::generic_category(), "UdpPeer: bind");
    }
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
    pollfd entry{socket_.get(), POLLIN, 0};
    while (!stop.stop_requested()) {
        if (::poll(&entry, 1, kStopCheckMs) > 0) answerOne();
    }
}

void UdpPeer::answerOne() {
    Datagram request(65536);
    sockaddr_in sender{};
    socklen_t size = sizeof sender;
    auto* const from = reinterpret_cast<sockaddr*>(&sender);
    const ssize_t count = ::recvfrom(socket_.get(), request.data(), request.size(), 0, from, &size);
    if (count < 0) return;
    request.resize(static_cast<std::size_t>(count));
    {
        const std::lock_guard lock(mutex_);
        requests_.push_back(request);
    }
    if (const auto answer = script_(request)) {
        ::sendto(socket_.get(), answer->data(), answer->size(), MSG_NOSIGNAL, from, size);
    }
}

}  // namespace tintoral::test
