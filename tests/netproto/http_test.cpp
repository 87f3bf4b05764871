// The HTTP client against the responder side, and against peers that no server would be.
#include "netproto/http.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>

#include "simulators/tcp_peer.h"
#include "simulators/virtual_http_server.h"
#include "support/temporary_folder.h"
#include "support/test_clock.h"

namespace tintoral {
namespace {

using std::chrono::milliseconds;
using test::RawScript;
using test::VirtualHttpServer;
using namespace std::string_literals;

constexpr const char* kHost = "127.0.0.1";
constexpr std::uint16_t kPort = 8080;
constexpr const char* kUrl = "http://127.0.0.1:8080/ipp/print";
constexpr const char* kType = "application/ipp";

// What a client made of an answer.
struct Answer {
    int status = 0;
    std::string body = {};
    int end = 0;       // the last result of nHttpRecvContent
    int endAgain = 0;  // that of another call
    milliseconds took{0};
};

Answer readAnswer(NHttpRequester& requester, milliseconds patience = milliseconds(2000)) {
    const auto start = std::chrono::steady_clock::now();
    Answer answer;
    answer.status = nHttpCheckResp(requester, patience);
    std::array<std::uint8_t, 700> buffer{};
    while (answer.status > 0 && (answer.end = nHttpRecvContent(requester, buffer)) > 0)
        answer.body += asText(Bytes(buffer).first(static_cast<std::size_t>(answer.end)));
    if (answer.status > 0) answer.endAgain = nHttpRecvContent(requester, buffer);
    answer.took =
        std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start);
    return answer;
}

constexpr HttpWaits kShort{milliseconds(1500), milliseconds(1500), milliseconds(1500)};

Answer ask(const RawScript& script, const HttpWaits& waits = kShort) {
    const VirtualHttpServer server(kHost, kPort, script);
    const auto requester = nHttpBegin(kUrl, "POST", "1.1", "");
    requester->waits = waits;
    if (nHttpSendReq(*requester, "", 0) != 0) return {.status = -99};
    return readAnswer(*requester);
}

RawScript says(const std::string& bytes, bool closes = false) {
    return {{{bytes}}, closes};
}

TEST(HttpRequest, IsSentByteForByte) {
    const struct {
        std::int64_t length;
        std::string headers, body;
    } rows[] = {
        {5, "Content-Type: application/ipp\r\nContent-Length: 5\r\n", "hello\r\n"},
        {-1, "Content-Type: application/ipp\r\nTransfer-Encoding: chunked\r\n",
         "5\r\nhello\r\n1a\r\nabcdefghijklmnopqrstuvwxyz\r\n0\r\n\r\n"},
        {0, "", ""},
    };
    for (const auto& row : rows) {
        const VirtualHttpServer server(kHost, kPort, says("HTTP/1.1 200 OK\r\n\r\n", true));
        auto requester = nHttpBegin(kUrl, "POST", "1.1", "Tintoral");
        nHttpNewPair(*requester, "X-First", "1");
        ASSERT_EQ(nHttpSendReq(*requester, kType, row.length), 0);
        EXPECT_EQ(nHttpSendContent(*requester, asBytes("hello")), row.length == 0 ? -1 : 0);
        if (row.length < 0) nHttpSendContent(*requester, asBytes("abcdefghijklmnopqrstuvwxyz"));
        EXPECT_EQ(nHttpSendContent(*requester, {}), 0);
        EXPECT_EQ(readAnswer(*requester).status, 200);
        requester.reset();
        EXPECT_EQ(server.heard(),
                  "POST /ipp/print HTTP/1.1\r\nX-First: 1\r\nHost: 127.0.0.1\r\n"
                  "User-Agent: Tintoral\r\n" +
                      row.headers + "\r\n" + row.body);
    }
}

TEST(HttpRequest, CannotBeGivenLinesByItsValues) {
    const VirtualHttpServer server(kHost, kPort, says("HTTP/1.1 200 OK\r\n\r\n", true));
    auto requester = nHttpBegin("http://127.0.0.1:8080/a\r\nX: 1\n", "PO\r\nST", "1.1", "T\nY: 2");
    nHttpMakeAuthorization(*requester, "Digest realm=\"a\rb\"", "bob\r\nZ: 3", "");
    ASSERT_EQ(nHttpSendReq(*requester, "t\r\n\r\nbody", 1), 0);
    requester.reset();
    const std::string heard = server.heard();
    EXPECT_EQ(std::ranges::count(heard, '\n'), 7) << heard;
    EXPECT_EQ(std::ranges::count(heard, '\r'), 7) << heard;
    EXPECT_TRUE(heard.starts_with("POST /aX: 1 HTTP/1.1\r\n")) << heard;
}

TEST(HttpAnswer, EndsWhereItsFramingSays) {
    const std::string ok = "HTTP/1.1 200 OK\r\n",
                      chunked = ok + "transfer-encoding: chunked\r\n\r\n";
    const struct {
        RawScript script;
        std::string body;
        int end;
    } rows[] = {
        {says(ok + "Content-Length: 3\r\n\r\nabcdef"), "abc", 0},
        {says(ok + "CONTENT-LENGTH:0\n\n"), "", 0},
        {says(ok + "Content-Length: 9\r\n\r\nabc", true), "abc", -408},
        {says(chunked + "5\r\nfirst\r\na\r\nsecondpart\r\n0\r\n\r\n"), "firstsecondpart", 0},
        {says(chunked + " 0A;x=y\r\nsecondpart\r\n0\n"), "secondpart", 0},
        {says(chunked + "5\r\nfir", true), "fir", -408},
        {says(chunked + "5\r\nfirst", true), "first", -408},
        {says(chunked + "\r\n"), "", -408},
        {says(chunked + "-5\r\nfirst\r\n"), "", -400},
        {says(chunked + "80000000\r\nfirst"), "", -400},
        {says(chunked + "fffffffffffffffff\r\nfirst"), "", -400},
        {says(chunked + "5\r\nfirst\r\nxyz\r\n"), "first", -400},
        {says(chunked + std::string(20000, '0')), "", -400},
        {says(ok + "\r\nall of it", true), "all of it", 0},
        {says(ok + "\r\n" + std::string(150000, 'x')), std::string(100000, 'x'), 0},
        {says(ok + "Transfer-Encoding: Chunked\r\n\r\n5\r\n", true), "5\r\n",
         0},  // another spelling
        {says(ok + "Content-Length: 1\r\nTransfer-Encoding: chunked\r\n\r\n5"), "5", 0},
        {says("HTTP/1.1 100 Continue\r\n\r\n" + ok + "Content-Length: 1\r\n\r\nx"), "x", 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.script.steps[0].bytes.substr(0, 200));
        const Answer answer = ask(row.script);
        EXPECT_EQ(answer.status, 200);
        EXPECT_EQ(answer.body, row.body);
        EXPECT_EQ(answer.end, row.end);
        EXPECT_EQ(answer.endAgain, row.end);
        EXPECT_LT(answer.took, milliseconds(1200)) << "nothing had to be waited for";
    }
}

TEST(HttpAnswer, RefusesHeadsBeyondItsBounds) {
    std::string lines, continues;
    for (int i = 0; i < 200; ++i) lines += "X-" + std::to_string(i) + ": y\r\n";
    for (int i = 0; i < 20; ++i) continues += "HTTP/1.1 100 Continue\r\n\r\n";
    const std::string ok = "HTTP/1.1 200 OK\r\n";
    const std::pair<std::string, int> rows[] = {
        {ok + lines + "\r\n", -400},
        {ok + "X: " + std::string(20000, 'y'), -400},
        {std::string(20000, 'y') + "\n\n", -400},
        {continues + ok + "\r\n", -400},
        {ok + "Content-Length: -1\r\n\r\n", -400},
        {ok + "Content-Length: 99999999999\r\n\r\n", -400},
        {ok + "Content-Length: 12x\r\n\r\n", -400},
        {ok + "X: y\r\n", -408},
        {"", -408},
        {"hello\r\n\r\n", 0},
        {"HTTP/1.1\r\n\r\n", 0},
        {"HTTP/1.1 -408\r\n\r\n", 0},
        {"HTTP/1.1 4294967496\r\n\r\n", 0},
    };
    for (const auto& [bytes, status] : rows)
        EXPECT_EQ(ask(says(bytes, true)).status, status) << bytes;
}

TEST(HttpAnswer, IsKeptInParts) {
    const VirtualHttpServer server(
        kHost, kPort,
        says("HTTP/1.0 401 \x1B[31mNot for you, whoever you may be\r\nno colon\r\n"
             " X-Blank :\t a b \r\nWWW-Authenticate: Basic "
             "realm=\"x\"\r\nwww-authenticate:2\r\n\r\n",
             true));
    const auto requester = nHttpBegin(kUrl, "POST", "1.1", "");
    ASSERT_EQ(nHttpSendReq(*requester, "", 0), 0);
    EXPECT_EQ(nHttpCheckResp(*requester, milliseconds(1000)), 401);
    EXPECT_EQ(requester->version.view(), "1.0");
    EXPECT_EQ(requester->reason.view(), "[31mNot for you, whoever you m");
    ASSERT_EQ(requester->responseHeaders.size(), 3U);
    EXPECT_EQ(requester->responseHeaders[0].name, "X-Blank :");
    EXPECT_EQ(requester->responseHeaders[0].value, "a b");
    std::string value;
    EXPECT_EQ(nHttpGetPairValue(*requester, "www-auth", value), 15U);
    EXPECT_EQ(value, "Basic realm=\"x\"");
    EXPECT_EQ(nHttpGetPairValue(*requester, "x-none", value), 0U);
    EXPECT_EQ(value, "");
    EXPECT_EQ(CmpPair(requester->responseHeaders, "www-authenticate:", "Basic realm=\"x\""), 0);
    EXPECT_NE(CmpPair(requester->responseHeaders, "www-authenticate:", "basic realm=\"x\""), 0);
    EXPECT_EQ(CmpPair(requester->responseHeaders, "www-authenticate", "2"), -1);
}

TEST(HttpAnswer, WaitsFiveSecondsForAByte) {
    const Answer answer = ask(says("HTTP/1.1 200 O"), HttpWaits{});
    EXPECT_EQ(answer.status, -408);
    EXPECT_GE(answer.took, milliseconds(4900));
    EXPECT_LT(answer.took, milliseconds(6500));
}

TEST(HttpExchange, CarriesLargeBodiesBothWaysInEitherFraming) {
    std::string large;
    large.resize(12'000'000);  // more than both buffers of a connection hold
    for (std::size_t i = 0; i < large.size(); ++i) large[i] = static_cast<char>(i % 251);
    for (const bool chunked : {false, true}) {
        const VirtualHttpServer server(kHost, kPort, [&](const test::HttpRequest& request) {
            return test::HttpAnswer{
                .contentType = kType, .pieces = {"=", request.body}, .chunked = chunked};
        });
        const auto requester = nHttpBegin(kUrl, "POST", "1.1", "");
        const auto length = static_cast<std::int64_t>(large.size());
        ASSERT_EQ(nHttpSendReq(*requester, kType, chunked ? -1 : length), 0);
        ASSERT_EQ(nHttpSendContent(*requester, asBytes(large)), 0);
        ASSERT_EQ(nHttpSendContent(*requester, {}), 0);
        const Answer answer = readAnswer(*requester);
        EXPECT_EQ(answer.end, 0);
        EXPECT_TRUE(answer.body == "=" + large) << answer.body.size();
        EXPECT_EQ(nHttpGetContentLen(*requester), chunked ? -1 : length + 1);
    }
}

TEST(HttpExchange, EndsInAnErrorWhereNobodyListens) {
    for (const char* url :
         {"http://127.0.0.1:9/", "http://127.0.0.1:99999/", "no URL", "http:///x"}) {
        const auto requester = nHttpBegin(url, "POST", "1.1", "Tintoral");
        EXPECT_EQ(nHttpSendReq(*requester, kType, 5), -1) << url;
        EXPECT_EQ(nHttpSendContent(*requester, asBytes("hello")), -1);
        EXPECT_EQ(nHttpCheckResp(*requester, milliseconds(50)), -1);
        EXPECT_EQ(nHttpResumeRequester(*requester), -1);
        EXPECT_EQ(nHttpGetSocket(*requester), 0);
    }
}

TEST(HttpExchange, ReportsASendToAPeerThatIsGone) {
    const test::TcpPeer peer(kHost, kPort,
                             {.received = [](Bytes) { return std::vector<std::uint8_t>{}; }},
                             {.resets = true});
    const std::string piece(100000, 'x');
    for (const auto& [length, report] : {std::pair(1, "HttpSendContent: content send "s),
                                         std::pair(-1, "nHttpSendContent: chunk hdr send "s)}) {
        const auto requester = nHttpBegin(kUrl, "POST", "1.1", "");
        ASSERT_EQ(nHttpSendReq(*requester, kType, length), 0);
        EXPECT_LT(nHttpCheckResp(*requester, milliseconds(1000)), 0);
        testing::internal::CaptureStderr();
        EXPECT_EQ(nHttpSendContent(*requester, asBytes(piece)), -1);
        EXPECT_TRUE(testing::internal::GetCapturedStderr().starts_with(report)) << report;
    }
}

// Expected digests by md5sum; the password stands before the realm, as meant.
TEST(HttpAuthorization, IsMadeOfTheChallenge) {
    const std::string start =
        R"(Digest username="bob", realm="Tintoral Test", nonce="n0nce", uri="/ipp/print", )";
    const std::string end = "response=\"19b2b75036db732576c013719ab9b2c0\"";
    const std::pair<const char*, std::string> rows[] = {
        {"BASIC realm=\"x\"", "Basic Ym9iOnMzY3JldA=="},
        {R"(Digest realm="Tintoral Test", nonce="n0nce")", start + end},
        {R"(digest nonce="n0nce",opaque = "o p",realm="Tintoral Test")",
         start + "opaque=\"o p\", " + end},
    };
    const auto requester = nHttpBegin(kUrl, "POST", "1.1", "");
    for (const auto& [challenge, value] : rows) {
        EXPECT_EQ(nHttpMakeAuthorization(*requester, challenge, "bob", "s3cret"), 200);
        EXPECT_EQ(requester->requestHeaders.back().name, "Authorization");
        EXPECT_EQ(requester->requestHeaders.back().value, value);
    }
    EXPECT_EQ(nHttpMakeAuthorization(*requester, "Negotiate", "bob", "s3cret"), -1);
    EXPECT_EQ(nHttpMakeAuthorization(*requester, "Digest realm=\"", "bob", "s3cret"), 200);
    EXPECT_EQ(requester->requestHeaders.size(), 4U);
}

// The status of a request that follows a challenge, in the order in which the IPP client asks.
int statusAfterChallenge(std::string_view user, std::string_view password) {
    auto requester = nHttpBegin(kUrl, "POST", "1.1", "Tintoral");
    if (nHttpSendReq(*requester, "", 0) != 0) return -99;
    const Answer refused = readAnswer(*requester);
    if (refused.status != 401 || refused.end != 0) return refused.status;
    std::string challenge;
    nHttpGetPairValue(*requester, "www-authenticate:", challenge);
    requester = nHttpBegin(kUrl, "POST", "1.1", "Tintoral");
    nHttpMakeAuthorization(*requester, challenge, user, password);
    nHttpSendReq(*requester, kType, -1);
    nHttpSendContent(*requester, asBytes("question"));
    nHttpSendContent(*requester, {});
    return readAnswer(*requester).status;
}

TEST(HttpAuthorization, OpensTheResponderToTheRightPassword) {
    for (const auto& [scheme, opaque] :
         {std::pair("Basic", ""), {"Digest", ""}, {"Digest", "0paque"}}) {
        const VirtualHttpServer server(
            kHost, kPort, [](const test::HttpRequest&) { return test::HttpAnswer{}; },
            test::HttpLogin{scheme, "bob", "s3cret", opaque});
        EXPECT_EQ(statusAfterChallenge("bob", "s3cret"), 200) << scheme;
        EXPECT_EQ(statusAfterChallenge("bob", "S3cret"), 401) << scheme;
        EXPECT_EQ(statusAfterChallenge("bo", "b:s3cret"), 401) << scheme;
        EXPECT_EQ(server.requests()[1].body, "question");
    }
}

TEST(HttpResponder, AnswersWithDateServerAndFraming) {
    const test::ScopedEnvironment zone("TZ", "XYZ-1");
    ::tzset();
    test::TestClock clock;
    const ScopedClock scope(clock);
    const VirtualHttpServer server(kHost, kPort, [](const test::HttpRequest& request) {
        return test::HttpAnswer{.status = request.method == "REMOVEIT" ? 404 : 299,
                                .pieces = {"one", "two"},
                                .chunked = true};
    });
    const auto requester = nHttpBegin(kUrl, "REMOVEITNOW", "1.1", "");
    ASSERT_EQ(nHttpSendReq(*requester, "", 0), 0);
    EXPECT_EQ(readAnswer(*requester).body, "onetwo");
    EXPECT_EQ(requester->reason.view(), "Not Found");
    EXPECT_EQ(CmpPair(requester->responseHeaders, "date:", "Sat, 14 Mar 2026 01:00:00 XYZ"), 0);
    EXPECT_EQ(CmpPair(requester->responseHeaders, "server:", "virtual-http"), 0);

    // Another exchange of the same requester, by a version without chunks.
    ASSERT_EQ(nHttpResetRequester(*requester), 0);
    requester->version.assign("1.0");
    requester->method.assign("GET");
    ASSERT_EQ(nHttpSendReq(*requester, "", 0), 0);
    EXPECT_EQ(readAnswer(*requester).body, "onetwo");
    EXPECT_EQ(requester->reason.view(), "Unknown error");
    EXPECT_EQ(nHttpGetContentLen(*requester), 0);
    EXPECT_EQ(server.requests()[1].headers.size(), 1U);
}

}  // namespace
}  // namespace tintoral
