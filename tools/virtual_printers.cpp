// Virtual printers on loopback addresses, for the demo and the end-to-end tests;
// tools/demo_home.cpp names the same ones. Runs until it is told to end.
#include <csignal>
#include <cstdio>
#include <deque>
#include <memory>

#include "support/tcp_peer.h"
#include "support/virtual_epson.h"

namespace tintoral::test {
namespace {

constexpr std::uint16_t kRawPort = 9100;

EpsonSetup withReply(int variant, EpsonReply reply, std::vector<EpsonInk> inks) {
    EpsonSetup setup;
    setup.replies.fill(EpsonReply::None);
    setup.replies[static_cast<std::size_t>(variant)] = reply;
    setup.inks = std::move(inks);
    setup.cleaningUsesInk = true;
    return setup;
}

struct Place {
    const char* address;
    const char* model;
    EpsonSetup setup;
};

std::vector<Place> places() {
    return {
        {"127.0.1.11", "Epson Stylus Photo R300, variant RC0, text reply",
         withReply(0, EpsonReply::Text, {{0, 81}, {1, 60}, {2, 44}, {3, 69}, {4, 30}, {5, 18}})},
        {"127.0.1.12", "Epson Stylus CX6400, variant RC1, binary reply",
         withReply(1, EpsonReply::Binary, {{0, 73}, {1, 9}, {2, 58}, {3, 36}})},
        {"127.0.1.13", "Epson Stylus Photo R800, variant RC, binary reply",
         withReply(2, EpsonReply::Binary,
                   {{0, 90}, {1, 52}, {2, 41}, {3, 35}, {9, 11}, {10, 66}, {11, 80}})},
        {"127.0.1.15", "Epson AcuLaser C1100, variant RC0, laser reply",
         withReply(0, EpsonReply::Laser, {{0, 62}, {1, 50}, {2, 47}, {3, 75}})},
    };
}

struct RawPortPrinter {
    explicit RawPortPrinter(const Place& place)
        : epson(place.setup),
          peer(place.address, kRawPort,
               {[this] { epson.connected(); },
                [this](Bytes bytes) { return epson.onReceive(bytes); }}) {
        std::printf("%s port %d: %s\n", place.address, kRawPort, place.model);
    }

    VirtualEpson epson;
    TcpPeer peer;
};

// SIGTERM and SIGINT, held back in every thread and waited for in the first one.
sigset_t endingSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    return signals;
}

}  // namespace
}  // namespace tintoral::test

int main() {
    using namespace tintoral::test;
    const sigset_t ending = endingSignals();
    pthread_sigmask(SIG_BLOCK, &ending, nullptr);
    std::deque<RawPortPrinter> printers;
    for (const Place& place : places()) printers.emplace_back(place);
    std::fflush(stdout);
    int signal = 0;
    sigwait(&ending, &signal);
}
