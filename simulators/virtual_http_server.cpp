#include "simulators/virtual_http_server.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

#include "simulators/tcp_peer.h"
#include "transport/net/sockets.h"

namespace tintoral::test {
namespace {

using std::chrono::milliseconds;
using Steady = std::chrono::steady_clock;

constexpr milliseconds kTick{10};
constexpr milliseconds kPatience{5000};
constexpr const char* kAgent = "virtual-http";
constexpr const char* kNonce = "5f3a9c";

std::unique_ptr<NHttpRequester> makeResponder() {
    auto responder = nHttpBegin("", "", "1.1", kAgent);
    responder->nonce.assign(kNonce);
    responder->waits = {milliseconds(1000), kPatience, kPatience};
    return responder;
}

bool announcesBody(const NHttpRequester& responder) {
    std::string length;
    return nHttpGetContentLen(responder) == HttpBody::kChunked ||
           nHttpGetPairValue(responder, "content-length:", length) > 0;
}

HttpRequest takeRequest(NHttpRequester& responder) {
    HttpRequest request{std::string(nHttpGetMethod(responder)),
                        std::string(nHttpGetLocation(responder)),
                        responder.requestHeaders,
                        {}};
    if (!announcesBody(responder)) return request;
    std::array<std::uint8_t, 4096> buffer{};
    while (const int count = nHttpRecvContent(responder, buffer)) {
        if (count < 0) break;
        request.body += asText(Bytes(buffer).first(static_cast<std::size_t>(count)));
    }
    return request;
}

std::string challenge(const NHttpRequester& responder, const HttpLogin& login) {
    const std::string realm = " realm=\"" + std::string(responder.realm.view()) + "\"";
    if (login.scheme == "Basic") return login.scheme + realm;
    const std::string opaque = login.opaque.empty() ? "" : ", opaque=\"" + login.opaque + "\"";
    return login.scheme + realm + ", nonce=\"" + kNonce + "\"" + opaque;
}

int statusFor(NHttpRequester& responder, const std::optional<HttpLogin>& login) {
    if (!login) return 200;
    const int status = nHttpAuthenticate(responder, [&](std::string_view user) {
        return user == login->user ? std::optional(login->password) : std::nullopt;
    });
    if (status == 401) nHttpNewPair(responder, "WWW-Authenticate", challenge(responder, *login));
    return status;
}

void sendAnswer(NHttpRequester& responder, const HttpAnswer& answer) {
    for (const auto& [name, value] : answer.headers) nHttpNewPair(responder, name, value);
    const auto length = std::accumulate(
        answer.pieces.begin(), answer.pieces.end(), std::int64_t{0},
        [](std::int64_t sum, const std::string& piece) { return sum + std::ssize(piece); });
    nHttpSendResp(responder, answer.status, answer.contentType, answer.chunked ? -1 : length);
    for (const std::string& piece : answer.pieces) nHttpSendContent(responder, asBytes(piece));
    if (answer.chunked) nHttpSendContent(responder, {});
}

}  // namespace

VirtualHttpServer::VirtualHttpServer(const std::string& address, std::uint16_t port,
                                     Converse converse)
    : listener_(listenOn(address, port)), converse_(std::move(converse)) {
    thread_ = std::jthread([this](const std::stop_token& stop) { run(stop); });
}

VirtualHttpServer::VirtualHttpServer(const std::string& address, std::uint16_t port, Serve serve,
                                     std::optional<HttpLogin> login)
    : VirtualHttpServer(address, port,
                        Converse([this, serve = std::move(serve), login = std::move(login)](
                                     const std::stop_token& stop, UniqueFd client) {
                            converse(stop, std::move(client), serve, login);
                        })) {}

VirtualHttpServer::VirtualHttpServer(const std::string& address, std::uint16_t port,
                                     RawScript script)
    : VirtualHttpServer(address, port,
                        Converse([this, script = std::move(script)](const std::stop_token& stop,
                                                                    const UniqueFd& client) {
                            play(stop, client, script);
                        })) {}

VirtualHttpServer::~VirtualHttpServer() {
    thread_.request_stop();
    thread_.join();
}

std::vector<HttpRequest> VirtualHttpServer::requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
}

std::string VirtualHttpServer::heard(int clients) const {
    const auto end = Steady::now() + kPatience;
    while (Steady::now() < end) {
        {
            const std::lock_guard lock(mutex_);
            if (clientsGone_ >= clients) return heard_;
        }
        std::this_thread::sleep_for(kTick);
    }
    return "(the client is still there)";
}

void VirtualHttpServer::run(const std::stop_token& stop) {
    while (!stop.stop_requested()) {
        UniqueFd client = acceptClient(listener_.get());
        if (!client.valid()) continue;
        converse_(stop, std::move(client));
        const std::lock_guard lock(mutex_);
        ++clientsGone_;
    }
}

void VirtualHttpServer::converse(const std::stop_token& stop, UniqueFd client, const Serve& serve,
                                 const std::optional<HttpLogin>& login) {
    const auto responder = makeResponder();
    if (nHttpRecvReq(*responder, httpConnectionOver(std::move(client))) != 0) return;
    const HttpRequest request = takeRequest(*responder);
    {
        const std::lock_guard lock(mutex_);
        requests_.push_back(request);
    }
    const int status = statusFor(*responder, login);
    sendAnswer(*responder, status == 200 ? serve(request) : HttpAnswer{.status = status});
    seeOff(stop, nHttpGetSocket(*responder));
}

void VirtualHttpServer::play(const std::stop_token& stop, const UniqueFd& client,
                             const RawScript& script) {
    if (!listenFor(stop, client.get(), kPatience)) return;
    for (const RawStep& step : script.steps) {
        std::this_thread::sleep_for(step.pause);
        if (stop.stop_requested()) return;
        if (sendAll(client.get(), asBytes(step.bytes), kPatience) != 0) return;
    }
    if (script.closes) return seeOff(stop, client.get());
    while (listenFor(stop, client.get(), kPatience)) continue;
}

// Hears one piece; false when the client went, or stayed silent.
bool VirtualHttpServer::listenFor(const std::stop_token& stop, int client, milliseconds time) {
    std::array<std::uint8_t, 4096> buffer{};
    const auto end = Steady::now() + time;
    while (!stop.stop_requested() && Steady::now() < end) {
        if (SelectCheck(client, kTick) <= 0) continue;
        const int count = SelectRecv(client, buffer, milliseconds(0));
        const std::lock_guard lock(mutex_);
        heard_ += asText(Bytes(buffer).first(static_cast<std::size_t>(std::max(count, 0))));
        return count > 0;
    }
    return false;
}

// Ends our side first: with bytes of the client's unread, closing would take back the answer.
void VirtualHttpServer::seeOff(const std::stop_token& stop, int client) {
    ::shutdown(client, SHUT_WR);
    while (listenFor(stop, client, kPatience)) continue;
}

}  // namespace tintoral::test
