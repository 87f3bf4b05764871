// An HTTP server on a thread of its own: it answers through the program's own responder, or, for
// answers that no server would give, says exactly the bytes of a script. One client at a time and
// one exchange per connection; the next client waits in the queue.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "netproto/http_responder.h"
#include "support/unique_fd.h"

namespace tintoral::test {

struct HttpRequest {
    std::string method;
    std::string location;
    PairList headers;  // names with their colons
    std::string body;  // without chunks
};

struct HttpAnswer {
    int status = 200;
    std::string contentType = "text/plain";
    std::vector<std::string> pieces = {};  // of the body, sent one by one
    bool chunked = false;                  // each piece is a chunk
    PairList headers = {};                 // besides those of the responder
};

// What the server wants to see before it serves.
struct HttpLogin {
    std::string scheme;  // "Basic" or "Digest"
    std::string user;
    std::string password;
    std::string opaque;  // Digest: left out of the challenge when empty
};

// Said to each client once the first bytes of its request are there.
struct RawStep {
    std::string bytes;
    std::chrono::milliseconds pause{0};  // before the bytes
};
struct RawScript {
    std::vector<RawStep> steps;
    bool closes = true;  // else the connection stays open until the client goes
};

class VirtualHttpServer {
  public:
    using Serve = std::function<HttpAnswer(const HttpRequest&)>;  // runs on the server's thread

    // Listens at once; throws std::system_error when the address is taken.
    VirtualHttpServer(const std::string& address, std::uint16_t port, Serve serve,
                      std::optional<HttpLogin> login = {});
    VirtualHttpServer(const std::string& address, std::uint16_t port, RawScript script);
    ~VirtualHttpServer();
    VirtualHttpServer(const VirtualHttpServer&) = delete;
    VirtualHttpServer& operator=(const VirtualHttpServer&) = delete;

    // The requests that were understood so far, those refused with 401 among them.
    std::vector<HttpRequest> requests() const;

    // All that the clients of a script said, once `clients` of them have gone (waits up to 5 s).
    std::string heard(int clients = 1) const;

  private:
    using Converse = std::function<void(const std::stop_token&, UniqueFd)>;

    VirtualHttpServer(const std::string& address, std::uint16_t port, Converse converse);
    void run(const std::stop_token& stop);
    void converse(const std::stop_token& stop, UniqueFd client, const Serve& serve,
                  const std::optional<HttpLogin>& login);
    void play(const std::stop_token& stop, const UniqueFd& client, const RawScript& script);
    bool listenFor(const std::stop_token& stop, int client, std::chrono::milliseconds time);
    void seeOff(const std::stop_token& stop, int client);

    UniqueFd listener_;
    Converse converse_;
    mutable std::mutex mutex_;
    std::vector<HttpRequest> requests_;
    std::string heard_;
    int clientsGone_ = 0;
    std::jthread thread_;
};

}  // namespace tintoral::test
