#include "netproto/http.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <utility>

#include "netproto/base64.h"
#include "netproto/http_auth.h"
#include "support/text.h"
#include "transport/net/sockets.h"

namespace tintoral {
namespace {

constexpr int kContinue = 100;
constexpr int kMostContinues = 8;

bool connectRequester(NHttpRequester& requester) {
    requester.reader.clear();
    UniqueFd socket = TcpOpenConnection(requester.host, requester.port);
    requester.connection = socket.valid() ? httpConnectionOver(std::move(socket)) : nullptr;
    return requester.connection != nullptr;
}

// Result: 0, or -1 after `failure` and the system error on standard error.
int sendOrReport(NHttpRequester& requester, std::string_view text, const char* failure) {
    if (requester.connection && requester.connection->send(asBytes(text))) return 0;
    if (!requester.connection) errno = ENOTCONN;
    std::perror(failure);
    return -1;
}

void addBodyHeaders(PairList& list, std::string_view contentType, std::int64_t bodyLength) {
    if (bodyLength == 0) return;
    NewPair(list, "Content-Type", contentType);
    if (bodyLength > 0) {
        NewPair(list, "Content-Length", std::to_string(bodyLength));
    } else {
        NewPair(list, "Transfer-Encoding", "chunked");
    }
}

int sendChunk(NHttpRequester& requester, Bytes bytes) {
    FixedText<32> header;
    header.format("%zx\r\n", bytes.size());
    if (sendOrReport(requester, header.view(), "nHttpSendContent: chunk hdr send ") != 0) return -1;
    const int sent = sendOrReport(requester, asText(bytes), "HttpSendContent: chunk content send ");
    if (sent != 0) return -1;
    return sendOrReport(requester, "\r\n", "HttpSendContent: chunk tailer send ");
}

int sendChunked(NHttpRequester& requester, Bytes bytes) {
    if (!bytes.empty()) return sendChunk(requester, bytes);
    return sendOrReport(requester, "0\r\n\r\n", "nHttpSendContent: chunk hdr send ");
}

int sendPlain(NHttpRequester& requester, Bytes bytes) {
    if (bytes.empty()) return sendOrReport(requester, "\r\n", "HttpSendContent: tailer send ");
    return sendOrReport(requester, asText(bytes), "HttpSendContent: content send ");
}

// The number at the start of `text`; 0 for one that no status has.
int statusNumber(std::string_view text) {
    constexpr int kHighest = 999;
    int number = 0;
    text = trimmed(text);
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number < 0 || number > kHighest ? 0 : number;
}

std::string_view part(std::string_view text, std::size_t start, std::size_t length) {
    return start < text.size() ? text.substr(start, length) : std::string_view();
}

// "HTTP/1.1 200 OK": the fields are found by their places.
void takeStatusLine(NHttpRequester& requester, std::string_view line) {
    if (!line.starts_with("HTTP/")) return;
    requester.statusCode = statusNumber(part(line, 9, 5));
    requester.version.assign(cleanText(part(line, 5, 3)));
    const std::string_view reason = part(line, 13, 31);
    requester.reason.assign(cleanText(reason.substr(0, reason.find('\r'))));
}

// One head. Result: the status code, or an error.
int receiveHead(NHttpRequester& requester) {
    requester.responseHeaders.clear();
    requester.statusCode = 0;
    requester.reason.clear();
    std::string line;
    if (const int failed = requester.reader.readLine(*requester.connection, line)) return failed;
    const int failed =
        readHeaders(requester.reader, *requester.connection, requester.responseHeaders);
    if (failed != 0) return failed;
    takeStatusLine(requester, line);
    return requester.statusCode;
}

}  // namespace

std::unique_ptr<NHttpRequester> nHttpBegin(std::string_view url, std::string_view method,
                                           std::string_view version, std::string_view agent) {
    auto requester = std::make_unique<NHttpRequester>();
    requester->agent.assign(agent);
    requester->version.assign(version);
    if (url.empty()) {
        std::string realm;
        EncodeBase64(requester->agent.view(), realm);
        requester->realm.assign(realm);
        requester->responder = true;
        return requester;
    }
    UrlParts parts;
    // Here already, so that a Digest is made of the location as it is sent.
    Url2host_port_location(withoutControls(url), parts);
    requester->method.assign(method);
    requester->host = parts.host;
    requester->port = static_cast<std::uint16_t>(parts.port);
    requester->location = parts.location;
    return requester;
}

int nHttpSendReq(NHttpRequester& requester, std::string_view contentType, std::int64_t bodyLength) {
    if (!requester.connection && !connectRequester(requester)) return -1;
    requester.sendMode = bodyLength;
    PairList& list = requester.requestHeaders;
    NewPair(list, "Host", requester.host);
    if (!requester.agent.empty()) NewPair(list, "User-Agent", requester.agent.view());
    addBodyHeaders(list, contentType, bodyLength);
    return nHttpResendReq(requester);
}

int nHttpResendReq(NHttpRequester& requester) {
    const std::string requestLine = withoutControls(requester.method.view()) + " " +
                                    requester.location + " HTTP/" +
                                    withoutControls(requester.version.view()) + "\r\n";
    return sendOrReport(requester, requestLine + headerLines(requester.requestHeaders),
                        "HttpSendReq: http send ");
}

int nHttpSendContent(NHttpRequester& requester, Bytes bytes) {
    if (bytes.empty() && requester.endsByClosing) return 0;
    if (requester.sendMode < 0 && !requester.endsByClosing) return sendChunked(requester, bytes);
    if (requester.sendMode != 0) return sendPlain(requester, bytes);
    return bytes.empty() ? 0 : -1;
}

int nHttpCheckResp(NHttpRequester& requester, std::chrono::milliseconds timeout) {
    if (!requester.connection) return -1;
    const bool begun = requester.reader.hasBuffered() || requester.connection->wait(timeout);
    return begun ? nHttpRecvResp(requester) : -1;
}

int nHttpRecvResp(NHttpRequester& requester) {
    if (!requester.connection) return -1;
    requester.reader.allow(requester.waits.head, requester.waits.byte);
    int status = receiveHead(requester);
    for (int i = 0; i < kMostContinues && status == kContinue; ++i) status = receiveHead(requester);
    if (status < 0) return status;
    const bool framed = requester.body.frame(requester.responseHeaders);
    return framed && status != kContinue ? status : http_errors::malformed;
}

int nHttpRecvContent(NHttpRequester& requester, MutableBytes buffer) {
    if (!requester.connection) return http_errors::timedOut;
    return requester.body.read(requester.reader, *requester.connection, buffer, requester.waits);
}

void nHttpNewPair(NHttpRequester& requester, std::string_view name, std::string_view value) {
    NewPair(requester.responder ? requester.responseHeaders : requester.requestHeaders, name,
            value);
}

std::size_t nHttpGetPairValue(const NHttpRequester& requester, std::string_view name,
                              std::string& value) {
    return GetPairValue(requester.responder ? requester.requestHeaders : requester.responseHeaders,
                        name, value);
}

int nHttpMakeAuthorization(NHttpRequester& requester, std::string_view challenge,
                           std::string_view user, std::string_view password) {
    const auto value = authorizationValue(challenge, user, password,
                                          {requester.method.view(), requester.location});
    if (!value) return -1;
    NewPair(requester.requestHeaders, "Authorization", *value);
    return 200;
}

int nHttpResetRequester(NHttpRequester& requester) {
    requester.connection.reset();
    connectRequester(requester);
    return nHttpResumeRequester(requester);
}

int nHttpResumeRequester(NHttpRequester& requester) {
    requester.requestHeaders.clear();
    requester.responseHeaders.clear();
    return requester.connection ? 0 : -1;
}

int nHttpGetSocket(const NHttpRequester& requester) {
    return requester.connection ? requester.connection->socket() : 0;
}

std::int32_t nHttpGetContentLen(const NHttpRequester& requester) {
    return requester.body.contentLength();
}

std::string_view nHttpGetLocation(const NHttpRequester& requester) {
    return requester.location;
}

int nHttpGetScode(const NHttpRequester& requester) {
    return requester.statusCode;
}

std::string_view nHttpGetMethod(const NHttpRequester& requester) {
    return requester.method.view();
}

}  // namespace tintoral
