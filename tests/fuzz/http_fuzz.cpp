// Whatever a peer answers, an exchange ends, its body stays within its frame, and nothing of it
// becomes a line of our own. The input is a row of pieces, each a length byte and as many bytes; an
// empty piece is a time-out.
#include <algorithm>
#include <cstdlib>
#include <utility>

#include "netproto/http_responder.h"

namespace {

using namespace tintoral;
using std::chrono::milliseconds;

class FuzzConnection final : public HttpConnection {
  public:
    FuzzConnection(Bytes input, std::string& sent) : input_(input), sent_(sent) {}

    bool send(Bytes bytes) override {
        sent_ += asText(bytes);
        return true;
    }
    bool wait(milliseconds) override { return !input_.atEnd(); }
    int receive(MutableBytes buffer, milliseconds) override {
        if (input_.atEnd()) return http_errors::closed;
        const std::size_t wanted = std::min<std::size_t>(input_.u8(), input_.remaining());
        const Bytes piece = input_.take(std::min(wanted, buffer.size()));
        std::ranges::copy(piece, buffer.begin());
        return static_cast<int>(piece.size());
    }

  private:
    ByteReader input_;
    std::string& sent_;
};

void readBody(NHttpRequester& requester) {
    std::array<std::uint8_t, 100> buffer{};
    std::size_t total = 0;
    int count = 0;
    while ((count = nHttpRecvContent(requester, buffer)) > 0) {
        if (static_cast<std::size_t>(count) > buffer.size()) std::abort();
        total += static_cast<std::size_t>(count);
    }
    if (nHttpRecvContent(requester, buffer) != count) std::abort();
    const std::int32_t announced = nHttpGetContentLen(requester);
    const std::size_t limit = announced > 0 ? static_cast<std::size_t>(announced) : 100000;
    if (announced != HttpBody::kChunked && total > limit) std::abort();
}

// The second head of an exchange that was refused; its lines are the program's.
void answerChallenge(const NHttpRequester& refused) {
    std::string challenge, sent;
    nHttpGetPairValue(refused, "www-authenticate:", challenge);
    const auto again = nHttpBegin("ipp://printer/ipp", "POST", refused.version.view(), "fuzz");
    again->connection = std::make_unique<FuzzConnection>(Bytes(), sent);
    nHttpMakeAuthorization(*again, challenge, "user", "password");
    nHttpSendReq(*again, "application/ipp", -1);
    const auto lines = static_cast<std::size_t>(std::count(sent.begin(), sent.end(), '\n'));
    if (lines != again->requestHeaders.size() + 2) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Bytes input(data, size);
    std::string sent;
    const auto client = nHttpBegin("ipp://printer/ipp", "POST", "1.1", "fuzz");
    client->connection = std::make_unique<FuzzConnection>(input, sent);
    const int status = nHttpCheckResp(*client, milliseconds(1));
    if (status > 999 || status == 100) std::abort();
    if (status > 0) readBody(*client);
    answerChallenge(*client);

    const auto responder = nHttpBegin("", "", "1.1", "fuzz");
    if (nHttpRecvReq(*responder, std::make_unique<FuzzConnection>(input, sent)) != 0) return 0;
    readBody(*responder);
    const int allowed = nHttpAuthenticate(*responder, [](std::string_view) { return "password"; });
    if (allowed == 200 && responder->requestHeaders.empty()) std::abort();
    nHttpSendResp(*responder, allowed, "text/plain", -1);
    return 0;
}
