// The HTTP client against a real nginx.
#include <gtest/gtest.h>

#include "netproto/http.h"
#include "support/nginx_server.h"

namespace tintoral {
namespace {

using std::chrono::milliseconds;

constexpr std::uint16_t kPort = 8088;

// Server-side includes are what makes nginx send a file in chunks.
constexpr const char* kLocations = R"(
    location /chunked { ssi on; ssi_types *; }
    location /private { auth_basic "Tintoral"; auth_basic_user_file users; }
    location /post { return 202 "taken"; }
)";

std::string bodyOf(NHttpRequester& requester) {
    std::string body;
    std::array<std::uint8_t, 15360> buffer{};
    int count = 0;
    while ((count = nHttpRecvContent(requester, buffer)) > 0)
        body += asText(Bytes(buffer).first(static_cast<std::size_t>(count)));
    EXPECT_EQ(count, 0);
    return body;
}

std::unique_ptr<NHttpRequester> begin(const std::string& path, std::string_view method = "GET") {
    return nHttpBegin("http://127.0.0.1:" + std::to_string(kPort) + path, method, "1.1",
                      "Tintoral");
}

TEST(HttpClient, UnderstandsNginx) {
    const std::string content = std::string(40000, 'p') + "end";
    const test::NginxServer nginx(NGINX_EXECUTABLE, kPort, kLocations,
                                  {{"plain", content},
                                   {"chunked", content},
                                   {"private", content},
                                   {"users", "bob:{PLAIN}s3cret\n"}});
    // Connections are kept open, so that only the framing can end a body at once.
    const auto start = std::chrono::steady_clock::now();
    for (const auto& [path, length] : {std::pair("/plain", 40003), std::pair("/chunked", -1)}) {
        const auto requester = begin(path);
        ASSERT_EQ(nHttpSendReq(*requester, "", 0), 0);
        EXPECT_EQ(nHttpCheckResp(*requester, milliseconds(2000)), 200);
        EXPECT_EQ(nHttpGetContentLen(*requester), length);
        EXPECT_TRUE(bodyOf(*requester) == content) << path;
    }

    auto requester = begin("/private");
    ASSERT_EQ(nHttpSendReq(*requester, "", 0), 0);
    EXPECT_EQ(nHttpCheckResp(*requester, milliseconds(2000)), 401);
    EXPECT_EQ(requester->reason.view(), "Unauthorized");
    bodyOf(*requester);
    std::string challenge;
    nHttpGetPairValue(*requester, "www-authenticate:", challenge);
    for (const auto& [password, status] : {std::pair("wrong", 401), std::pair("s3cret", 200)}) {
        requester = begin("/private");
        EXPECT_EQ(nHttpMakeAuthorization(*requester, challenge, "bob", password), 200);
        ASSERT_EQ(nHttpSendReq(*requester, "", 0), 0);
        EXPECT_EQ(nHttpCheckResp(*requester, milliseconds(2000)), status);
    }
    EXPECT_TRUE(bodyOf(*requester) == content);

    for (const std::int64_t length : {5, -1}) {
        requester = begin("/post", "POST");
        ASSERT_EQ(nHttpSendReq(*requester, "application/ipp", length), 0);
        EXPECT_EQ(nHttpSendContent(*requester, asBytes("hello")), 0);
        EXPECT_EQ(nHttpSendContent(*requester, {}), 0);
        EXPECT_EQ(nHttpCheckResp(*requester, milliseconds(2000)), 202);
        EXPECT_EQ(bodyOf(*requester), "taken");
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds(4000));
}

}  // namespace
}  // namespace tintoral
