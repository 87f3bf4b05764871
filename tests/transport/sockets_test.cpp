#include "transport/net/sockets.h"

#include <gtest/gtest.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <csignal>
#include <thread>

#include "simulators/tcp_peer.h"
#include "simulators/udp_peer.h"

namespace tintoral {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

// How long `call` took.
template <typename Call>
milliseconds timed(Call call) {
    const auto start = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start);
}

// What `call` wrote to standard error.
template <typename Call>
std::string errorsOf(Call call) {
    testing::internal::CaptureStderr();
    call();
    return testing::internal::GetCapturedStderr();
}

struct Pair {
    UniqueFd ours, theirs;
};

Pair socketPair() {
    int fds[2] = {-1, -1};
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, fds), 0);
    return {UniqueFd(fds[0]), UniqueFd(fds[1])};
}

TEST(TcpOpenConnection, FailsAtOnceOrAfterTwoSecondsAndSaysWhy) {
    const struct {
        const char* host;
        const char* errors;
        milliseconds atLeast, atMost;
    } rows[] = {
        {"10.77.0.11", "TcpOpen:connect: Connection refused\n", 0ms, 500ms},
        {"10.77.0.99", "TcpOpen:connect timeout: Connection timed out\n", 1990ms, 2500ms},
    };
    for (const auto& row : rows) {
        const auto connect = [&] { EXPECT_FALSE(TcpOpenConnection(row.host, 9100).valid()); };
        std::string errors;
        const auto took = timed([&] { errors = errorsOf(connect); });
        EXPECT_EQ(errors, row.errors) << row.host;
        EXPECT_GE(took, row.atLeast) << row.host;
        EXPECT_LT(took, row.atMost) << row.host;
    }
}

TEST(TcpConnections, SendSmallRequestsAtOnce) {
    for (const auto& [address, open] :
         {std::pair("127.0.0.1", &TcpOpenConnection), std::pair("::1", &openTCP6)}) {
        const test::TcpPeer peer(address, 9100,
                                 {.received = [](Bytes) { return std::vector<std::uint8_t>(); }});
        const UniqueFd socket = open(address, 9100);
        int atOnce = 0;
        socklen_t size = sizeof atOnce;
        ::getsockopt(socket.get(), IPPROTO_TCP, TCP_NODELAY, &atOnce, &size);
        EXPECT_NE(atOnce, 0) << address;
    }
}

TEST(Receiving, TellsSilenceFromAnEndAndFromABadDescriptor) {
    std::array<std::uint8_t, 8> buffer{};
    Pair pair = socketPair();
    const auto took = timed([&] {
        EXPECT_EQ(SelectRecv(pair.ours.get(), buffer, 30ms), 0);
        EXPECT_EQ(Nrecv(pair.ours.get(), buffer, 30ms), -1);
        EXPECT_EQ(waitRecv(pair.ours.get(), buffer, 30ms), 0);
        EXPECT_EQ(SelectCheck(pair.ours.get(), 30ms), 0);
    });
    EXPECT_GE(took, 120ms);
    EXPECT_LT(took, 400ms);

    pair.theirs.reset();
    EXPECT_EQ(SelectRecv(pair.ours.get(), buffer, 30ms), 0);
    EXPECT_EQ(Nrecv(pair.ours.get(), buffer, 30ms), -1);
    EXPECT_EQ(waitRecv(pair.ours.get(), buffer, 30ms), -1);
    EXPECT_EQ(SelectCheck(pair.ours.get(), 30ms), 1);

    for (const int bad : {-1, 1 << 20}) {
        EXPECT_EQ(SelectRecv(bad, buffer, 2000ms), -1);
        EXPECT_EQ(errorsOf([&] { EXPECT_EQ(SelectCheck(bad, 2000ms), -1); }),
                  "select: Bad file descriptor\n");
    }
}

TEST(WaitRecv, ReadsOnceAndWaitsOutItsTimeWhateverSignalsCome) {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    ::sigaction(SIGUSR1, &action, nullptr);
    const Pair pair = socketPair();
    std::array<std::uint8_t, 8> buffer{};
    waitSend(pair.theirs.get(), asBytes("abc"));
    const std::jthread nuisance([target = ::pthread_self(), fd = pair.theirs.get()] {
        for (int i = 0; i < 50; ++i) {
            ::pthread_kill(target, SIGUSR1);
            std::this_thread::sleep_for(5ms);
            if (i == 8) waitSend(fd, asBytes("defgh"));
        }
    });
    const auto took = timed([&] { EXPECT_EQ(waitRecv(pair.ours.get(), buffer, 120ms), 3); });
    EXPECT_GE(took, 120ms);
    EXPECT_LT(took, 200ms);

    const auto full = timed(
        [&] { EXPECT_EQ(waitRecv(pair.ours.get(), MutableBytes(buffer).first(5), 2000ms), 5); });
    EXPECT_LT(full, 500ms) << "a full buffer ends the call";
    EXPECT_EQ(asText(Bytes(buffer).first(5)), "defgh");
}

TEST(WaitSend, StartsAgainAtTheFirstByteAfterAPartialWrite) {
    Pair pair = socketPair();
    const int small = 4096;
    const timeval limit{0, 100000};
    ::setsockopt(pair.ours.get(), SOL_SOCKET, SO_SNDBUF, &small, sizeof small);
    ::setsockopt(pair.ours.get(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    std::vector<std::uint8_t> message(200000, 'x');
    message[0] = '^';
    std::vector<std::uint8_t> heard;
    std::jthread reader([&, fd = pair.theirs.get()] {
        std::this_thread::sleep_for(150ms);
        std::vector<std::uint8_t> part(4096);
        for (int n = 0; (n = SelectRecv(fd, part, 300ms)) > 0;) {
            heard.insert(heard.end(), part.begin(), part.begin() + n);
        }
    });
    const int last = waitSend(pair.ours.get(), message);
    reader.join();
    EXPECT_GT(last, 0);
    EXPECT_EQ(heard.size(), message.size());
    EXPECT_GE(std::ranges::count(heard, '^'), 2);

    pair.theirs.reset();
    EXPECT_EQ(waitSend(pair.ours.get(), asBytes("no signal")), -1);
}

TEST(SendAndReceive, TriesTwiceAndThenGivesUp) {
    int heard = 0;
    const test::UdpPeer peer("10.77.0.11", 161, [&heard](Bytes) -> std::optional<test::Datagram> {
        if (++heard == 1) return std::nullopt;
        return test::Datagram{'y', 'e', 's'};
    });
    std::array<std::uint8_t, 16> reply{};
    reply.fill('?');
    EXPECT_EQ(sendAndReceive("10.77.0.11", asBytes("ask"), reply), 3);
    EXPECT_EQ(asText(reply), std::string_view("yes\0\0\0\0\0\0\0\0\0\0\0\0\0", 16));
    EXPECT_EQ(peer.requests(), std::vector<test::Datagram>(2, test::Datagram{'a', 's', 'k'}));

    const auto took =
        timed([&] { EXPECT_EQ(sendAndReceive("10.77.0.99", asBytes("ask"), reply), 0); });
    EXPECT_GE(took, 200ms);
    EXPECT_LT(took, 500ms);
}

TEST(Url, IsSplit) {
    const struct {
        std::string url;
        const char* host;
        const char* location;
        int port, result;
    } rows[] = {
        {"ipp://h/printers/x", "h", "/printers/x", 631, 1},
        {"http://h:8080/a//b:1", "h", "/a//b:1", 8080, 1},
        {"http://h:70000/", "h", "/", 0, 1},
        {"http:///only", "was", "/only", 80, 1},
        {"ipp:h/printers", "was", "was", 631, 0},
        {"http:" + std::string(1100, 'a') + "//h", "was", "was", 80, 0},
    };
    for (const auto& row : rows) {
        UrlParts parts{"was", -1, "was"};
        EXPECT_EQ(Url2host_port_location(row.url, parts), row.result) << row.url;
        EXPECT_EQ(parts.host, row.host) << row.url;
        EXPECT_EQ(parts.port, row.port) << row.url;
        EXPECT_EQ(parts.location, row.location) << row.url;
    }
}

TEST(OwnAddresses, AreThoseOfTheFirstInterfaceBesidesLoopback) {
    std::string name;
    Ipv4Address address{}, netmask{};
    EXPECT_EQ(myIPAddress(name, address, netmask), 0);
    EXPECT_EQ(name, "net0");
    EXPECT_EQ(address, (Ipv4Address{10, 77, 0, 1}));
    EXPECT_EQ(netmask, (Ipv4Address{255, 255, 255, 0}));
    FixedText<256> text;
    sockaddr_in6 six{};
    six.sin6_addr = {{{0xFE, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x0A}}};
    EXPECT_EQ(my_ntoa(text, six), 0);
    EXPECT_EQ(text.view(), "fe:80:0:0:0:0:0:0:0:0:0:0:0:0:0:a");
    EXPECT_EQ(GetMacAddress(nullptr, "en0"), 3);
    MacAddress mac{};
    EXPECT_EQ(myMacAddress("no such", mac) + myMacAddress("lo", mac), 0);
    EXPECT_EQ(mac, MacAddress{});
    myMacAddress("net0", mac);
    EXPECT_NE(mac, MacAddress{});
    sockaddr_in nameless{};
    nameless.sin_family = AF_INET;
    nameless.sin_addr.s_addr = htonl(0x0A4D0063);
    EXPECT_EQ(gethostnameFromSock(nameless, text), 10);
    EXPECT_EQ(text.view(), "10.77.0.99");
}

}  // namespace
}  // namespace tintoral
