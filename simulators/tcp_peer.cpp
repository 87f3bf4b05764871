#include "simulators/tcp_peer.h"

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <system_error>
#include <utility>

namespace tintoral::test {
namespace {

using std::chrono::milliseconds;
using Steady = std::chrono::steady_clock;

constexpr milliseconds kTick{10};
constexpr milliseconds kLongestSilence{30000};

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

bool readable(int socket) {
    pollfd entry{socket, POLLIN, 0};
    return ::poll(&entry, 1, static_cast<int>(kTick.count())) > 0;
}

void sleepUnlessStopped(const std::stop_token& stop, milliseconds duration) {
    const auto end = Steady::now() + duration;
    while (!stop.stop_requested() && Steady::now() < end) {
        std::this_thread::sleep_for(std::min<Steady::duration>(kTick, end - Steady::now()));
    }
}

// A client that stops reading holds the peer up no longer than this.
void boundSends(int socket) {
    const timeval limit{2, 0};
    ::setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

void resetOnClose(int socket) {
    const linger now{1, 0};
    ::setsockopt(socket, SOL_SOCKET, SO_LINGER, &now, sizeof now);
}

// Result: false when the client is gone.
bool sendInPieces(const std::stop_token& stop, int client, Bytes bytes, const TcpManners& how) {
    ByteReader rest(bytes);
    while (!rest.atEnd() && !stop.stop_requested()) {
        const Bytes piece = rest.take(std::min(how.pieceSize, rest.remaining()));
        if (::send(client, piece.data(), piece.size(), MSG_NOSIGNAL) < 0) return false;
        sleepUnlessStopped(stop, how.pieceGap);
    }
    return true;
}

}  // namespace

UniqueFd listenOn(const std::string& address, std::uint16_t port) {
    constexpr int kQueue = 8;
    addrinfo hints{};
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (::getaddrinfo(address.c_str(), std::to_string(port).c_str(), &hints, &found) != 0)
        fail("listenOn: address");
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> own(found, &::freeaddrinfo);
    UniqueFd listener(::socket(own->ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const int on = 1;
    ::setsockopt(listener.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (::bind(listener.get(), own->ai_addr, own->ai_addrlen) != 0) fail("listenOn: bind");
    if (::listen(listener.get(), kQueue) != 0) fail("listenOn: listen");
    return listener;
}

UniqueFd acceptClient(int listener) {
    if (!readable(listener)) return {};
    UniqueFd client(::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC));
    if (client.valid()) boundSends(client.get());
    return client;
}

TcpPeer::TcpPeer(const std::string& address, std::uint16_t port, TcpScript script,
                 TcpManners manners)
    : socket_(listenOn(address, port)), script_(std::move(script)), manners_(std::move(manners)) {
    thread_ = std::jthread([this](const std::stop_token& stop) { serve(stop); });
}

TcpPeer::~TcpPeer() {
    thread_.request_stop();
    thread_.join();
}

TcpManners TcpPeer::manners() const {
    const std::lock_guard lock(mutex_);
    return manners_;
}

void TcpPeer::setManners(TcpManners manners) {
    const std::lock_guard lock(mutex_);
    manners_ = std::move(manners);
}

bool TcpPeer::waitForClients(int count, milliseconds timeout) {
    const auto end = Steady::now() + timeout;
    while (Steady::now() < end) {
        {
            const std::lock_guard lock(mutex_);
            if (clientsServed_ >= count) return true;
        }
        std::this_thread::sleep_for(kTick);
    }
    return false;
}

void TcpPeer::serve(const std::stop_token& stop) {
    while (!stop.stop_requested()) {
        UniqueFd client = acceptClient(socket_.get());
        if (!client.valid()) continue;
        serveClient(stop, std::move(client));
        const std::lock_guard lock(mutex_);
        ++clientsServed_;
    }
}

void TcpPeer::serveClient(const std::stop_token& stop, UniqueFd client) {
    script_.opened();
    answersLeftHonest_ = manners().honestAnswers;
    if (!script_.greeting.empty() && !answer(stop, client.get(), script_.greeting)) return;
    std::array<std::uint8_t, 4096> buffer{};
    auto lastHeard = Steady::now();
    while (!stop.stop_requested() && Steady::now() - lastHeard < kLongestSilence) {
        if (!readable(client.get())) continue;
        const ssize_t count = ::recv(client.get(), buffer.data(), buffer.size(), 0);
        if (count <= 0) return;
        lastHeard = Steady::now();
        const Bytes request = Bytes(buffer).first(static_cast<std::size_t>(count));
        if (!answer(stop, client.get(), script_.received(request))) return;
    }
}

// Result: false when the client is gone, or is to go.
bool TcpPeer::answer(const std::stop_token& stop, int client,
                     const std::vector<std::uint8_t>& reply) {
    const bool honest = answersLeftHonest_ > 0;
    if (honest && !reply.empty()) --answersLeftHonest_;
    const TcpManners how = honest ? TcpManners{} : manners();
    if (how.resets) resetOnClose(client);
    if (how.resets) return false;
    if (how.silent || reply.empty()) return true;
    std::vector<std::uint8_t> said = reply;
    if (how.spoil) how.spoil(said);
    said.resize(std::min(how.atMost, said.size()));
    sleepUnlessStopped(stop, how.delay);
    if (!sendInPieces(stop, client, said, how)) return false;
    while (!how.endless.empty() && !stop.stop_requested()) {
        if (!sendInPieces(stop, client, how.endless, how)) return false;
    }
    if (how.resetsAfter) resetOnClose(client);
    return !how.resetsAfter;
}

}  // namespace tintoral::test
