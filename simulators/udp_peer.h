// A scripted UDP peer on a thread of its own: hears each datagram on one port, answers as its
// script says.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "support/byte_reader.h"
#include "support/unique_fd.h"

namespace tintoral::test {

using Datagram = std::vector<std::uint8_t>;

class UdpPeer {
  public:
    // The answer to a request, or nothing: silence. Runs on the peer's thread.
    using Script = std::function<std::optional<Datagram>(Bytes request)>;

    // Binds at once, so that no request is lost; throws std::system_error when the address is
    // taken. What comes to `alsoAt`, which may be a broadcast address that others hear too, is
    // answered from `address` as well. The script is asked for an answer `answers` times each.
    UdpPeer(const std::string& address, std::uint16_t port, Script script,
            const std::string& alsoAt = "", int answers = 1);
    ~UdpPeer();
    UdpPeer(const UdpPeer&) = delete;
    UdpPeer& operator=(const UdpPeer&) = delete;

    // All that was heard so far, in order.
    std::vector<Datagram> requests() const;

  private:
    void serve(const std::stop_token& stop);
    void answerOne(const std::stop_token& stop, int socket);

    UniqueFd socket_;
    UniqueFd second_;
    Script script_;
    int answers_;
    mutable std::mutex mutex_;
    std::vector<Datagram> requests_;
    std::jthread thread_;
};

}  // namespace tintoral::test
