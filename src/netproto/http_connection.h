// The bytes of one HTTP exchange: a connection, and a reader that bounds every wait and every line.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "support/byte_reader.h"
#include "support/unique_fd.h"

namespace tintoral {

// Results of reads beside the number of bytes; named after the HTTP status codes.
namespace http_errors {
inline constexpr int closed = -1;       // the peer ended the connection
inline constexpr int malformed = -400;  // not HTTP, or beyond the bounds
inline constexpr int timedOut = -408;   // nothing came in time, or the rest never will
}  // namespace http_errors

// What a requester talks through: a socket, or a stand-in for one.
class HttpConnection {
  public:
    virtual ~HttpConnection() = default;

    // Sends all; false with errno set when it cannot.
    virtual bool send(Bytes bytes) = 0;

    // Something can be received within the time-out.
    virtual bool wait(std::chrono::milliseconds timeout) = 0;

    // Bytes received; 0 when none came in time; http_errors::closed when the peer closed or the
    // connection broke.
    virtual int receive(MutableBytes buffer, std::chrono::milliseconds timeout) = 0;

    // The socket's descriptor, 0 for a connection without one.
    virtual int socket() const { return 0; }
};

// A connection over a socket, which it owns and closes. A send may take 30 s in all, and 2 s
// without progress.
std::unique_ptr<HttpConnection> httpConnectionOver(UniqueFd socket);

// How long an exchange may take.
struct HttpWaits {
    std::chrono::milliseconds byte{5000};  // for the next byte
    // For a whole part, so that a peer that sends a byte now and then is left in the end.
    std::chrono::milliseconds head{30000};
    std::chrono::milliseconds body{60000};
};

// Reads through a small buffer of its own; whoever reads the socket past it may miss what that
// holds.
class HttpReader {
  public:
    static constexpr std::size_t kLongestLine = 8192;

    // From now on reads may take `whole` together, and each of them `piece`.
    void allow(std::chrono::milliseconds whole, std::chrono::milliseconds piece);

    // One byte or more. Result: their number, http_errors::timedOut or http_errors::closed; 0 for
    // an empty buffer.
    int read(HttpConnection& connection, MutableBytes buffer);

    // A line up to and including its line feed. Result: 0; timedOut when it does not end in time or
    // the peer closed; malformed when it is longer than kLongestLine.
    int readLine(HttpConnection& connection, std::string& line);

    // Reads and drops. Result: 0, or timedOut.
    int skip(HttpConnection& connection, std::size_t count);

    bool hasBuffered() const { return !buffered().empty(); }
    void clear() { used_ = filled_ = 0; }

  private:
    Bytes buffered() const { return Bytes(buffer_).subspan(used_, filled_ - used_); }
    std::chrono::milliseconds nextWait() const;
    int fill(HttpConnection& connection);

    std::array<std::uint8_t, 1024> buffer_{};
    std::size_t used_ = 0;
    std::size_t filled_ = 0;
    std::chrono::steady_clock::time_point deadline_;
    std::chrono::milliseconds piece_{0};
};

}  // namespace tintoral
