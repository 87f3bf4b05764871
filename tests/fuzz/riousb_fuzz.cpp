// Whatever a base station says on a connection: each call ends, and no result is more than there is
// room for.
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cstdlib>

#include "fuzz_stream.h"
#include "transport/channels/d4_epson.h"
#include "transport/net/riousb_byte_stream.h"

namespace {

constexpr std::size_t kLongestInput = 65536;

// Both ends of a connection on which the input waits to be read, and then nothing more.
struct Peer {
    explicit Peer(tintoral::Bytes input) {
        std::array<int, 2> ends{-1, -1};
        if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) != 0) std::abort();
        ours = tintoral::UniqueFd(ends[0]);
        theirs = tintoral::UniqueFd(ends[1]);
        const std::size_t size = std::min(input.size(), kLongestInput);
        if (::send(theirs.get(), input.data(), size, MSG_DONTWAIT) != static_cast<ssize_t>(size))
            std::abort();
        ::shutdown(theirs.get(), SHUT_WR);
    }

    tintoral::UniqueFd ours;
    tintoral::UniqueFd theirs;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tintoral;
    using std::chrono::milliseconds;
    fuzz::StandingClock clock;
    const ScopedClock scope(clock);
    Peer peer(Bytes(data, size));
    auto connection = riousbOpenOn(std::move(peer.ours), "usb1");
    if (!connection) return 0;
    riousbWrite(*connection, asBytes("status"));
    std::array<std::uint8_t, 10> small{};
    if (riousbRead(*connection, small, milliseconds(300)) > static_cast<int>(small.size()))
        std::abort();
    FixedText<100> deviceID;
    const int length = riousbGetDeviceID(*connection, deviceID, milliseconds(300));
    if (length > 0 && static_cast<std::size_t>(length) != deviceID.size()) std::abort();
    RiousbByteStream stream(*connection);
    std::array<std::uint8_t, 1024> reply{};
    if (d4GetEpsonInkStatus(BaseStation{stream}, reply, nullptr) > static_cast<int>(reply.size()))
        std::abort();
    riousbClose(std::move(connection));
    return 0;
}
