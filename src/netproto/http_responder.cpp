#include "netproto/http_responder.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <utility>

#include "support/clock.h"
#include "transport/net/sockets.h"

namespace tintoral {
namespace {

constexpr std::pair<int, std::string_view> kStatusMessages[] = {
    {200, "OK"},
    {201, "Created"},
    {202, "Accepted"},
    {203, "Provisional Information"},
    {204, "No Response"},
    {205, "Deleted"},
    {206, "Modified"},
    {301, "Moved Permanently"},
    {400, "Bad Request"},
    {401, "Unauthorized"},
    {402, "Payment Required"},
    {403, "Forbidden"},
    {404, "Not Found"},
    {405, "Method Not Allowed"},
    {406, "None Acceptable"},
    {407, "Proxy Authentication Required"},
    {408, "Request Timeout"},
    {412, "Precondition Failed"},
    {500, "Internal Server Error"},
    {501, "Not Implemented"},
    {502, "Bad Gateway"},
    {503, "Service Unavailable"},
    {504, "Gateway Timeout"},
};

// The first word of `text`, which then begins behind it.
std::string_view takeWord(std::string_view& text) {
    text = trimmed(text);
    const std::string_view word = text.substr(0, text.find(' '));
    text.remove_prefix(word.size());
    return word;
}

void takeRequestLine(NHttpRequester& requester, std::string_view line) {
    constexpr std::size_t kLongestMethod = 8;
    constexpr std::size_t kLongestLocation = 128;
    constexpr std::size_t kVersionLength = 3;
    requester.method.assign(takeWord(line).substr(0, kLongestMethod));
    requester.location = takeWord(line).substr(0, kLongestLocation);
    const auto version = textAfter(line, "/").value_or(std::string_view());
    requester.version.assign(version.substr(0, kVersionLength));
}

std::string localDate() {
    const std::time_t now = std::chrono::system_clock::to_time_t(currentDate());
    std::tm local{};
    ::localtime_r(&now, &local);
    std::array<char, 64> text{};
    return {text.data(), std::strftime(text.data(), text.size(), "%a, %d %h %Y %T %Z", &local)};
}

void addBodyHeaders(NHttpRequester& requester, std::string_view contentType,
                    std::int64_t bodyLength) {
    PairList& list = requester.responseHeaders;
    if (bodyLength != 0) NewPair(list, "Content-Type", contentType);
    if (bodyLength >= 0) {
        NewPair(list, "Content-Length", std::to_string(bodyLength));
    } else if (!requester.endsByClosing) {
        NewPair(list, "Transfer-Encoding", "chunked");
    }
}

}  // namespace

int nHttpRecvReq(NHttpRequester& requester, std::unique_ptr<HttpConnection> connection) {
    peerAddressOfSock(connection->socket(), requester.peerName);
    requester.connection = std::move(connection);
    requester.reader.clear();
    requester.reader.allow(requester.waits.head, requester.waits.byte);
    std::string line;
    if (const int failed = requester.reader.readLine(*requester.connection, line)) return failed;
    takeRequestLine(requester, line);
    requester.requestHeaders.clear();
    const int failed =
        readHeaders(requester.reader, *requester.connection, requester.requestHeaders);
    if (failed != 0) return failed;
    return requester.body.frame(requester.requestHeaders) ? 0 : http_errors::malformed;
}

int nHttpSendResp(NHttpRequester& requester, int statusCode, std::string_view contentType,
                  std::int64_t bodyLength) {
    requester.statusCode = statusCode;
    requester.sendMode = bodyLength;
    requester.endsByClosing = bodyLength < 0 && requester.version.view() != "1.1";
    nHttpNewPair(requester, "Date", localDate());
    if (!requester.agent.empty()) nHttpNewPair(requester, "Server", requester.agent.view());
    addBodyHeaders(requester, contentType, bodyLength);
    const std::string statusLine = "HTTP/" + withoutControls(requester.version.view()) + " " +
                                   std::to_string(statusCode) + " " +
                                   std::string(nHttpStatusMessage(statusCode)) + "\r\n";
    const std::string head = statusLine + headerLines(requester.responseHeaders);
    if (requester.connection && requester.connection->send(asBytes(head))) return 0;
    std::perror("HttpSendResp: http send ");
    return -1;
}

int nHttpAuthenticate(const NHttpRequester& requester, const PasswordOf& passwordOf) {
    std::string authorization;
    nHttpGetPairValue(requester, "authorization:", authorization);
    const bool holds =
        authorizationHolds(authorization, {requester.method.view(), requester.location},
                           {requester.realm.view(), requester.nonce.view()}, passwordOf);
    return holds ? 200 : 401;
}

std::string_view nHttpStatusMessage(int statusCode) {
    const auto* const found =
        std::ranges::find(kStatusMessages, statusCode, &std::pair<int, std::string_view>::first);
    return found == std::end(kStatusMessages) ? "Unknown error" : found->second;
}

}  // namespace tintoral
