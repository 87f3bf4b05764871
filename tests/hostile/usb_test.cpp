#include <gtest/gtest.h>

#include <thread>

#include "hostile/hostile.h"
#include "simulators/sim_usb_printer.h"
#include "simulators/virtual_canon.h"
#include "simulators/virtual_d4_epson.h"
#include "simulators/virtual_epson.h"
#include "simulators/virtual_mlc_hp.h"
#include "transport/usb/usb_ink_status.h"
#include "vendors/epson.h"

namespace tintoral::hostile {
namespace {

using namespace std::chrono_literals;
using test::SimUsbAnswer;
using test::SimUsbPrinter;
using Transfers = std::vector<ByteVector>;

struct Peer {
    test::SimUsbBus bus;
    SimUsbPrinter* printer = nullptr;
    std::jthread drip;
};

struct BadManners {
    std::string name;
    std::function<void(Peer&, Transfers&)> spoil;  // has each answer
    std::optional<std::uint16_t> deviceIDLength = std::nullopt;
};

// ---- Hardships ----

void dripWithoutEnd(Peer& peer) {
    if (peer.drip.joinable()) return;
    peer.drip = std::jthread([&peer](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            peer.printer->say({'x'});
            std::this_thread::sleep_for(100ms);
        }
    });
}

void splitIntoBytes(Peer&, Transfers& answer) {
    Transfers bytes;
    for (const ByteVector& transfer : answer)
        for (const std::uint8_t byte : transfer) bytes.push_back({byte});
    answer = bytes;
}

std::vector<BadManners> mannersFor(const LengthField& length) {
    const auto without = [](auto happens) {
        return [=](Peer& peer, Transfers& answer) {
            happens(peer);
            answer.clear();
        };
    };
    const auto endless = [](const ByteVector& transfer) {
        return [=](Peer&, Transfers& answer) { answer.resize(answer.size() + 1000, transfer); };
    };
    std::vector<BadManners> all{
        {"", [](Peer&, Transfers&) {}},
        {"silent", without([](Peer&) {})},
        {"a byte at a time", splitIntoBytes},
        {"drips without end", [](Peer& peer, Transfers&) { dripWithoutEnd(peer); }},
        {"garbage", [](Peer&, Transfers& answer) { answer = {noise(answer.front().size())}; }},
        {"endless", endless(noise(512))},
        {"endless zeros", endless(ByteVector(512))},
        {"endless empty packets", endless({})},
        {"stalls when read", without([](Peer& peer) { peer.printer->haltIn(); })},
        {"stalls when written to", [](Peer& peer, Transfers&) { peer.printer->haltOut(); }},
        {"takes no more", [](Peer& peer, Transfers&) { peer.printer->takeNoWrites(true); }},
        {"unplugged", without([](Peer& peer) { peer.printer->unplug(); })},
    };
    for (const Lie& lie : liesAbout(length))
        all.push_back({lie.name, [=](Peer&, Transfers& answer) { lie.spoil(answer.front()); }});
    for (const std::uint16_t lie : std::initializer_list<std::uint16_t>{0, 1, 0xFFFF})
        all.push_back({"device ID of length " + std::to_string(lie), all.front().spoil, lie});
    return all;
}

SimUsbAnswer spoilt(Peer& peer, const BadManners& manners, const SimUsbAnswer& honest,
                    int honestAnswers) {
    return [&peer, manners, honest, left = honestAnswers](Bytes heard) mutable {
        Transfers answer = honest(heard);
        std::erase_if(answer, [](const ByteVector& transfer) { return transfer.empty(); });
        if (!answer.empty() && left-- < 1) manners.spoil(peer, answer);
        return answer;
    };
}

std::vector<Hardship> peersOf(const std::string& maker, SimUsbAnswer (*printer)(),
                              const LengthField& length) {
    std::vector<Hardship> all;
    for (const BadManners& manners : mannersFor(length)) {
        all.push_back(
            {manners.name, [=](const Place&, int honestAnswers) {
                 auto peer = std::make_shared<Peer>();
                 peer->printer = &peer->bus.attach(
                     {.deviceID = "MFG:" + maker + ";MDL:Pro9000;VSTATUS:IDLE,K0,KP075,C0,CP060;",
                      .deviceIDLength = manners.deviceIDLength});
                 peer->printer->answerWith(spoilt(*peer, manners, printer(), honestAnswers));
                 return peer;
             }});
    }
    return all;
}

// ---- Printers that mean well ----

template <typename Printer>
SimUsbAnswer inOneTransfer() {
    const auto printer = std::make_shared<Printer>();
    return [printer](Bytes heard) { return Transfers{printer->onReceive(heard)}; };
}
template <typename Printer>
SimUsbAnswer inPackets() {
    const auto printer = std::make_shared<Printer>();
    return [printer](Bytes heard) { return printer->transfersFor(heard); };
}
SimUsbAnswer ivecCanon() {
    const auto printer = std::make_shared<test::VirtualCanon>(test::CanonSetup{.ivec = true});
    return [printer](Bytes heard) { return Transfers{printer->onReceive(heard)}; };
}

// ---- The program's side ----

PrinterRecord recordOf(std::string_view maker, std::string_view commands) {
    const test::SimUsbSetup setup;
    return {{std::string(keys::serverType), server_types::usb},
            {std::string(keys::kind), "USB"},
            {std::string(keys::makerName), maker},
            {std::string(keys::modelName), "Pro9000"},
            {std::string(keys::usbCmd), commands},
            {std::string(keys::commandType), commands},
            {std::string(keys::vendorID), int{setup.vendor}},
            {std::string(keys::productID), int{setup.product}}};
}

std::function<Answer(const Place&)> updateOf(std::string_view maker, std::string_view commands) {
    return [=](const Place&) { return askRecord(recordOf(maker, commands)); };
}

Answer cleanOverMlc(const Place&) {
    usbNozzleOptions(recordOf("HP", "MLC,PCL,PML"), kOptionCleaning);
    return {};
}

Answer cleanOverD4(const Place&) {
    usbEpsonD4NozzelOptions(usbPrinterOfRecord(recordOf("EPSON", "D4")), 0, kOptionCleaning);
    return {};
}

TEST(HostilePeers, OverUsb) {
    using namespace test;
    const Answer epson{4, "Idle", {60, 42, 31, 80}};
    const Answer canon{5, "Idle", {75, 40, 62, 0, 18}};
    const auto remote = peersOf("EPSON", inOneTransfer<VirtualEpson>,
                                {.offset = 10, .size = 2, .lowByteFirst = true});
    const auto d4 = peersOf("EPSON", inPackets<VirtualD4Epson>, {2, 2});
    const auto mlc = peersOf("HP", inPackets<VirtualMlcHp>, {2, 2});
    const auto plain = peersOf("Canon", inOneTransfer<VirtualCanon>, {0, 2});
    runAll({{"USB, Epson, remote mode", 39, epson, updateOf("EPSON", "RC"), remote},
            {"USB, Epson, D4 channel", 87, epson, updateOf("EPSON", "D4"), d4, 8},
            {"USB, Epson, D4 channel, cleaning", 48, {}, cleanOverD4, d4, 8},
            {"USB, Canon", 7.5, canon, updateOf("Canon", "BJL"), plain},
            {"USB, Canon, IVEC", 7.5, canon, updateOf("Canon", "IVEC"),
             peersOf("Canon", ivecCanon, {0, 2})},
            {"USB, HP", 64, {2, "Idle", {75, 60}}, updateOf("HP", ""), mlc},
            {"USB, HP, MLC channel, cleaning", 72, {}, cleanOverMlc, mlc, 4}});
}

}  // namespace
}  // namespace tintoral::hostile
