// The HTTP client against a real nginx, which runs as the tester under a folder of the test's own.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "netproto/http.h"
#include "support/clock.h"
#include "support/temporary_folder.h"
#include "transport/net/sockets.h"

namespace tintoral {
namespace {

using std::chrono::milliseconds;

constexpr std::uint16_t kPort = 8088;

// SSI is what makes nginx send a file in chunks.
constexpr const char* kConfiguration = R"(
daemon off; master_process off; pid nginx.pid; error_log stderr crit;
events { worker_connections 16; }
http {
    access_log off; keepalive_timeout 60;
    client_body_temp_path body; proxy_temp_path proxy; fastcgi_temp_path fastcgi;
    uwsgi_temp_path uwsgi; scgi_temp_path scgi;
    server {
        listen 127.0.0.1:8088; root .;
        location /chunked { ssi on; ssi_types *; }
        location /private { auth_basic "Tintoral"; auth_basic_user_file users; }
        location /post { return 202 "taken"; }
    }
}
)";

class Nginx {
  public:
    Nginx() {
        test::writeFile(folder_ / "conf", kConfiguration);
        test::writeFile(folder_ / "users", "bob:{PLAIN}s3cret\n");
        for (const char* file : {"plain", "private"}) test::writeFile(folder_ / file, content());
        test::writeFile(folder_ / "chunked", content());
        const std::string prefix = folder_ / "";
        process_ = ::fork();
        if (process_ == 0) {
            ::execl(NGINX_EXECUTABLE, "nginx", "-e", "stderr", "-p", prefix.c_str(), "-c", "conf",
                    nullptr);
            ::_exit(127);
        }
        waitUntilReady();
    }
    ~Nginx() {
        ::kill(process_, SIGTERM);
        ::waitpid(process_, nullptr, 0);
    }
    Nginx(const Nginx&) = delete;
    Nginx& operator=(const Nginx&) = delete;

    static std::string content() { return std::string(40000, 'p') + "end"; }

  private:
    static void waitUntilReady() {
        for (int i = 0; i < 100; ++i) {
            if (TcpOpenConnection("127.0.0.1", kPort).valid()) return;
            pauseFor(milliseconds(50));
        }
        FAIL() << "nginx does not listen";
    }

    test::TemporaryFolder folder_;
    pid_t process_ = -1;
};

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
    const Nginx nginx;
    // Connections are kept open, so that only the framing can end a body at once.
    const auto start = std::chrono::steady_clock::now();
    for (const auto& [path, length] : {std::pair("/plain", 40003), std::pair("/chunked", -1)}) {
        const auto requester = begin(path);
        ASSERT_EQ(nHttpSendReq(*requester, "", 0), 0);
        EXPECT_EQ(nHttpCheckResp(*requester, milliseconds(2000)), 200);
        EXPECT_EQ(nHttpGetContentLen(*requester), length);
        EXPECT_TRUE(bodyOf(*requester) == Nginx::content()) << path;
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
    EXPECT_TRUE(bodyOf(*requester) == Nginx::content());

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
