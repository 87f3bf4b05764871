#include "netproto/http_connection.h"

#include <algorithm>
#include <utility>

#include "transport/net/sockets.h"

namespace tintoral {
namespace {

using std::chrono::milliseconds;
using Steady = std::chrono::steady_clock;

constexpr milliseconds kSendTime{30000};

class SocketConnection final : public HttpConnection {
  public:
    explicit SocketConnection(UniqueFd socket) : socket_(std::move(socket)) {}

    bool send(Bytes bytes) override { return sendAll(socket_.get(), bytes, kSendTime) == 0; }
    bool wait(milliseconds timeout) override { return SelectCheck(socket_.get(), timeout) > 0; }

    int receive(MutableBytes buffer, milliseconds timeout) override {
        if (!wait(timeout)) return 0;
        // Readable without a byte to read: that is how the end of a stream shows.
        const int count = SelectRecv(socket_.get(), buffer, milliseconds(0));
        return count > 0 ? count : http_errors::closed;
    }

    int socket() const override { return socket_.get(); }

  private:
    UniqueFd socket_;
};

}  // namespace

std::unique_ptr<HttpConnection> httpConnectionOver(UniqueFd socket) {
    return std::make_unique<SocketConnection>(std::move(socket));
}

void HttpReader::allow(milliseconds whole, milliseconds piece) {
    deadline_ = Steady::now() + whole;
    piece_ = piece;
}

milliseconds HttpReader::nextWait() const {
    const auto left = std::chrono::ceil<milliseconds>(deadline_ - Steady::now());
    return std::min(left, piece_);
}

// Result: 0 when something is buffered, else an error.
int HttpReader::fill(HttpConnection& connection) {
    if (hasBuffered()) return 0;
    clear();
    const milliseconds wait = nextWait();
    const int count = wait > milliseconds(0) ? connection.receive(buffer_, wait) : 0;
    if (count > 0) filled_ = static_cast<std::size_t>(count);
    return count == 0 ? http_errors::timedOut : std::min(count, 0);
}

int HttpReader::read(HttpConnection& connection, MutableBytes buffer) {
    if (buffer.empty()) return 0;
    if (const int failed = fill(connection)) return failed;
    const Bytes taken = buffered().first(std::min(buffer.size(), buffered().size()));
    std::ranges::copy(taken, buffer.begin());
    used_ += taken.size();
    return static_cast<int>(taken.size());
}

int HttpReader::readLine(HttpConnection& connection, std::string& line) {
    line.clear();
    do {
        if (fill(connection) != 0) return http_errors::timedOut;
        const std::string_view seen = asText(buffered());
        const std::string_view taken =
            seen.substr(0, std::min(seen.find('\n'), seen.size() - 1) + 1);
        line += taken;
        used_ += taken.size();
        if (line.size() > kLongestLine) return http_errors::malformed;
    } while (!line.ends_with('\n'));
    return 0;
}

int HttpReader::skip(HttpConnection& connection, std::size_t count) {
    while (count > 0) {
        if (fill(connection) != 0) return http_errors::timedOut;
        const std::size_t dropped = std::min(count, buffered().size());
        used_ += dropped;
        count -= dropped;
    }
    return 0;
}

}  // namespace tintoral
