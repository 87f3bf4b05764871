// Every exchange over USB with every kind of hostile printer.
#include <gtest/gtest.h>

#include <thread>

#include "hostile/hostile.h"
#include "support/sim_usb_printer.h"
#include "support/virtual_canon.h"
#include "support/virtual_d4_epson.h"
#include "support/virtual_epson.h"
#include "support/virtual_mlc_hp.h"
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

struct Hardship {
    std::string name;
    std::function<void(Peer&, Transfers&)> spoil;  // has each answer
    std::optional<std::uint16_t> deviceIDLength = std::nullopt;
};

struct Exchange {
    const char* name;
    double boundSeconds;
    Answer honest;
    const char* maker;
    const char* commands;  // the record's command set and command type
    SimUsbAnswer (*printer)();
    Answer (*ask)(const Exchange& exchange);
    LengthField length;
    int honestAnswers =
        0;  // each hardship begins after so many answers, 0, 1, 2, 4 ... at the most
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

std::vector<Hardship> hardshipsFor(const LengthField& length) {
    const auto without = [](auto happens) {
        return [=](Peer& peer, Transfers& answer) {
            happens(peer);
            answer.clear();
        };
    };
    const auto endless = [](const ByteVector& transfer) {
        return [=](Peer&, Transfers& answer) { answer.resize(answer.size() + 4000, transfer); };
    };
    std::vector<Hardship> all{
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
    for (const std::uint64_t lie : kLies) {
        const auto spoil = lyingBy(length, lie);
        const std::string name = "length " + std::to_string(static_cast<std::int64_t>(lie));
        all.push_back({name, [=](Peer&, Transfers& answer) { spoil(answer.front()); }});
        all.push_back({name + " of the device ID", nullptr, static_cast<std::uint16_t>(lie)});
    }
    return all;
}

SimUsbAnswer spoilt(Peer& peer, const Hardship& hardship, const SimUsbAnswer& honest,
                    int honestAnswers) {
    return [&peer, hardship, honest, left = honestAnswers](Bytes heard) mutable {
        Transfers answer = honest(heard);
        std::erase_if(answer, [](const ByteVector& transfer) { return transfer.empty(); });
        if (!answer.empty() && left-- < 1 && hardship.spoil) hardship.spoil(peer, answer);
        return answer;
    };
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

PrinterRecord recordOf(const Exchange& exchange) {
    const test::SimUsbSetup setup;
    return {{std::string(keys::serverType), server_types::usb},
            {std::string(keys::kind), "USB"},
            {std::string(keys::makerName), exchange.maker},
            {std::string(keys::modelName), "Pro9000"},
            {std::string(keys::usbCmd), exchange.commands},
            {std::string(keys::commandType), exchange.commands},
            {std::string(keys::vendorID), int{setup.vendor}},
            {std::string(keys::productID), int{setup.product}}};
}

Answer update(const Exchange& exchange) {
    return askRecord(recordOf(exchange));
}
Answer clean(const Exchange& exchange) {
    usbNozzleOptions(recordOf(exchange), kOptionCleaning);
    return {};
}
Answer cleanOverD4(const Exchange& exchange) {
    usbEpsonD4NozzelOptions(usbPrinterOfRecord(recordOf(exchange)), 0, kOptionCleaning);
    return {};
}

// ---- The table ----

std::vector<Exchange> exchanges() {
    const Answer epson{4, "Idle", {60, 42, 31, 80}};
    const Answer canon{5, "Idle", {75, 40, 62, 0, 18}};
    const Answer hp{2, "Idle", {75, 60}};
    constexpr LengthField kEpson{.offset = 10, .size = 2, .lowByteFirst = true};
    constexpr LengthField kPacket{2, 2};
    constexpr LengthField kFields{0, 2};
    using namespace test;
    return {
        {"USB, Epson, remote mode", 39, epson, "EPSON", "RC", inOneTransfer<VirtualEpson>, update,
         kEpson},
        {"USB, Epson, D4 channel", 87, epson, "EPSON", "D4", inPackets<VirtualD4Epson>, update,
         kPacket, 8},
        {"USB, Epson, D4, cleaning",
         48,
         {},
         "EPSON",
         "D4",
         inPackets<VirtualD4Epson>,
         cleanOverD4,
         kPacket,
         8},
        {"USB, Canon", 7.5, canon, "Canon", "BJL", inOneTransfer<VirtualCanon>, update, kFields},
        {"USB, Canon, IVEC", 7.5, canon, "Canon", "IVEC", ivecCanon, update, kFields},
        {"USB, HP", 64, hp, "HP", "", inPackets<VirtualMlcHp>, update, kPacket},
        {"USB, HP, MLC, cleaning",
         72,
         {},
         "HP",
         "MLC,PCL,PML",
         inPackets<VirtualMlcHp>,
         clean,
         kPacket,
         4},
    };
}

Case caseOf(const Exchange& exchange, const Hardship& hardship, int honestAnswers) {
    const auto peer = [=, &exchange](const Place&) -> std::shared_ptr<void> {
        auto made = std::make_shared<Peer>();
        const std::string maker = exchange.maker;
        made->printer = &made->bus.attach(
            {.deviceID = "MFG:" + maker + ";MDL:Pro9000;VSTATUS:IDLE,K0,KP075,C0,CP060;",
             .deviceIDLength = hardship.deviceIDLength});
        made->printer->answerWith(spoilt(*made, hardship, exchange.printer(), honestAnswers));
        return made;
    };
    std::string name = hardship.name;
    if (honestAnswers > 0) name += " after answer " + std::to_string(honestAnswers);
    return {exchange.name,   name, exchange.boundSeconds,
            exchange.honest, peer, [&exchange](const Place&) { return exchange.ask(exchange); }};
}

TEST(HostilePeers, OverUsb) {
    const std::vector<Exchange> all = exchanges();
    std::vector<Case> cases;
    for (const Exchange& exchange : all) {
        cases.push_back(caseOf(exchange, {}, 0));
        for (int honest = 0; honest <= exchange.honestAnswers; honest += std::max(honest, 1)) {
            for (const Hardship& hardship : hardshipsFor(exchange.length))
                cases.push_back(caseOf(exchange, hardship, honest));
        }
    }
    runAll(cases);
}

}  // namespace
}  // namespace tintoral::hostile
