// Virtual printers on loopback addresses, for the demo and the end-to-end tests;
// tools/demo_home.cpp names the same ones. Runs until it is told to end.
#include <csignal>
#include <cstdio>
#include <deque>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "simulators/tcp_peer.h"
#include "simulators/virtual_base_station.h"
#include "simulators/virtual_bjnp_printer.h"
#include "simulators/virtual_canon.h"
#include "simulators/virtual_d4_epson.h"
#include "simulators/virtual_epson.h"
#include "simulators/virtual_pjl_hp.h"

namespace tintoral::test {
namespace {

constexpr std::uint16_t kRawPort = 9100;
constexpr const char* kBjnpAddress = "127.0.1.19";
constexpr const char* kStationAddress = "::1";
constexpr std::uint16_t kStationPort = 10000;

EpsonSetup withReply(int variant, EpsonReply reply, std::vector<EpsonInk> inks) {
    EpsonSetup setup;
    setup.replies.fill(EpsonReply::None);
    setup.replies[static_cast<std::size_t>(variant)] = reply;
    setup.inks = std::move(inks);
    setup.cleaningUsesInk = true;
    return setup;
}

template <typename Printer, typename Setup>
TcpScript printerWith(Setup setup) {
    auto printer = std::make_shared<Printer>(std::move(setup));
    TcpScript script{.received = [printer](Bytes bytes) { return printer->onReceive(bytes); }};
    if constexpr (requires { printer->connected(); }) {
        script.opened = [printer] { printer->connected(); };
    }
    return script;
}

TcpScript epson(int variant, EpsonReply reply, std::vector<EpsonInk> inks) {
    return printerWith<VirtualEpson>(withReply(variant, reply, std::move(inks)));
}

TcpScript d4Epson(std::vector<EpsonInk> inks) {
    D4EpsonSetup setup;
    setup.inks = std::move(inks);
    return printerWith<VirtualD4Epson>(std::move(setup));
}

TcpScript canon(bool ivec, std::vector<CanonInk> inks) {
    return printerWith<VirtualCanon>(
        CanonSetup{.ivec = ivec, .inks = std::move(inks), .cleaningUsesInk = true});
}

// Like this one, a Brother says what it has to say unasked.
TcpScript brother() {
    constexpr std::string_view kGreeting = "@PJL USTATUS DEVICE\r\nCODE=10001\r\n\f";
    return {.received = [](Bytes) { return std::vector<std::uint8_t>(); },
            .greeting = {kGreeting.begin(), kGreeting.end()}};
}

struct Place {
    const char* address;
    const char* model;
    TcpScript printer;
};

std::vector<Place> places() {
    return {
        {"127.0.1.11", "Epson Stylus Photo R300, variant RC0, text reply",
         epson(0, EpsonReply::Text, {{0, 81}, {1, 60}, {2, 44}, {3, 69}, {4, 30}, {5, 18}})},
        {"127.0.1.12", "Epson Stylus CX6400, variant RC1, binary reply",
         epson(1, EpsonReply::Binary, {{0, 73}, {1, 9}, {2, 58}, {3, 36}})},
        {"127.0.1.13", "Epson Stylus Photo R800, variant RC, binary reply",
         epson(2, EpsonReply::Binary,
               {{0, 90}, {1, 52}, {2, 41}, {3, 35}, {9, 11}, {10, 66}, {11, 80}})},
        {"127.0.1.15", "Epson AcuLaser C1100, variant RC0, laser reply",
         epson(0, EpsonReply::Laser, {{0, 62}, {1, 50}, {2, 47}, {3, 75}})},
        {"127.0.1.16", "Canon iP4300, plain request",
         canon(false, {{"PBK", 64}, {"BK", 38}, {"M", 71}, {"C", 55}, {"Y", 20}})},
        {"127.0.1.17", "Canon MG5200, IVEC",
         canon(true, {{"PBK", 83}, {"BK", 47}, {"M", 29}, {"C", 92}, {"Y", 66}})},
        {"127.0.1.18", "Epson Stylus Photo R2400, packet mode (D4)",
         d4Epson({{0, 77}, {1, 58}, {2, 33}, {3, 61}, {4, 45}, {5, 24}, {8, 48}, {12, 68}})},
        {"127.0.1.20", "HP Officejet Pro K550, PML inside PJL; levels by SNMP",
         printerWith<VirtualPjlHp>(
             VirtualPjlHp::Texts{"Officejet Pro K550", "black cartridge", "cyan cartridge"})},
        {"127.0.1.21", "Brother MFC-8440, speaks unasked; levels by SNMP", brother()},
    };
}

// A base station that shares an Epson printer, as a TCP peer.
TcpScript baseStation(std::vector<EpsonInk> inks) {
    auto printer =
        std::make_shared<VirtualEpson>(withReply(2, EpsonReply::Binary, std::move(inks)));
    BaseStationSetup setup;
    setup.deviceID = "MFG:EPSON;CMD:ESCPL2,BDC;MDL:Stylus C86;CLS:PRINTER;SERN:F1A003;";
    setup.printer = [printer](Bytes bytes) { return Transfers{printer->onReceive(bytes)}; };
    return printerWith<VirtualBaseStation>(std::move(setup));
}

BjnpSetup bjnp() {
    BjnpSetup setup;
    setup.deviceID = "MFG:Canon;CMD:BJL,BJRaster3,BSCCe;MDL:MP640 series;CLS:PRINTER;";
    setup.status = "BST:00;CIR:PBK=71,BK=46,M=28,C=90,Y=63;DWS:NO;";
    return setup;
}

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
    const VirtualBjnpPrinter canon(kBjnpAddress, bjnp());
    std::deque<TcpPeer> peers;
    peers.emplace_back(kStationAddress, kStationPort,
                       baseStation({{0, 34}, {1, 76}, {2, 51}, {3, 87}}));
    std::printf("%s: Canon MP640 series, BJNP\n%s port %d: base station with an Epson Stylus C86\n",
                kBjnpAddress, kStationAddress, kStationPort);
    for (const Place& place : places()) {
        peers.emplace_back(place.address, kRawPort, place.printer);
        std::printf("%s port %d: %s\n", place.address, kRawPort, place.model);
    }
    std::fflush(stdout);
    int signal = 0;
    sigwait(&ending, &signal);
}
