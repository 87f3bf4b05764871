// A TCP server on a thread of its own that lends a virtual printer an address and a port, with
// manners that can be bad on request. One client at a time; the next one waits in the queue.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "support/byte_reader.h"
#include "support/unique_fd.h"

namespace tintoral::test {

// What is behind the port. Both run on the peer's thread.
struct TcpScript {
    std::function<void()> opened = [] {};  // a client came
    std::function<std::vector<std::uint8_t>(Bytes)> received;
    std::vector<std::uint8_t> greeting = {};  // said to each client unasked
};

// How the peer answers.
struct TcpManners {
    std::chrono::milliseconds delay{0};                            // before each answer
    std::size_t atMost = std::numeric_limits<std::size_t>::max();  // bytes of each answer
    std::size_t pieceSize = std::numeric_limits<std::size_t>::max();
    std::chrono::milliseconds pieceGap{0};  // after each piece
    bool silent = false;                    // hears all, says nothing
    bool resets = false;                    // breaks the connection on the first byte
    bool resetsAfter = false;               // breaks it after what it says of an answer
    std::function<void(std::vector<std::uint8_t>&)> spoil = nullptr;  // has each answer first
    std::vector<std::uint8_t> endless = {};  // said after an answer until the client is gone
    int honestAnswers = 0;  // so many of each connection are given without any of this
};

// A socket that listens; throws std::system_error when the address is taken.
UniqueFd listenOn(const std::string& address, std::uint16_t port);

// The next client, or an invalid descriptor when none came within 10 ms.
UniqueFd acceptClient(int listener);

class TcpPeer {
  public:
    // Listens at once at an IPv4 or IPv6 address; throws std::system_error when the address is
    // taken. A client that is silent for 30 s is sent away.
    TcpPeer(const std::string& address, std::uint16_t port, TcpScript script,
            TcpManners manners = {});
    ~TcpPeer();
    TcpPeer(const TcpPeer&) = delete;
    TcpPeer& operator=(const TcpPeer&) = delete;

    void setManners(TcpManners manners);

    // Waits until `count` clients have come and gone, so that all they sent has been heard; false
    // when that takes longer than `timeout`.
    bool waitForClients(int count, std::chrono::milliseconds timeout = std::chrono::seconds(5));

  private:
    void serve(const std::stop_token& stop);
    void serveClient(const std::stop_token& stop, UniqueFd client);
    bool answer(const std::stop_token& stop, int client, const std::vector<std::uint8_t>& reply);
    TcpManners manners() const;

    UniqueFd socket_;
    TcpScript script_;
    mutable std::mutex mutex_;
    TcpManners manners_;
    int answersLeftHonest_ = 0;
    int clientsServed_ = 0;
    std::jthread thread_;
};

}  // namespace tintoral::test
