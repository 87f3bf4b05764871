// Every exchange over UDP with every kind of hostile peer.
#include <gtest/gtest.h>

#include <thread>

#include "hostile/hostile.h"
#include "monitor/address_probe.h"
#include "netproto/bjnp.h"
#include "netproto/snmp.h"
#include "support/virtual_bjnp_printer.h"

namespace tintoral::hostile {
namespace {

using namespace std::chrono_literals;
using test::BjnpSetup;
using test::Datagram;
using test::UdpPeer;
using test::VirtualBjnpPrinter;

struct Hardship {
    std::string name;
    std::function<void(Datagram&)> spoil;  // has each answer
    int answers = 1;
    bool listens = true;
};

struct Exchange {
    const char* name;
    double boundSeconds;
    Answer honest;
    LengthField length;
    std::shared_ptr<void> (*peer)(const Place& place, const Hardship& hardship);
    Answer (*ask)(const Place& place);
    bool mayStopEarly = false;
};

std::vector<Hardship> hardshipsFor(const LengthField& length) {
    const auto late = [](std::chrono::milliseconds delay) {
        return [=](Datagram&) { std::this_thread::sleep_for(delay); };
    };
    std::vector<Hardship> all{
        {"silent", nullptr, 0},
        {"nobody listens", nullptr, 0, false},
        {"late by 90 ms", late(90ms)},
        {"late by 150 ms", late(150ms)},
        {"late by 700 ms", late(700ms)},
        {"empty", [](Datagram& answer) { answer.clear(); }},
        {"cut", [](Datagram& answer) { answer.resize(answer.size() / 2); }},
        {"one byte", [](Datagram& answer) { answer.resize(1); }},
        {"60000 bytes more", [](Datagram& answer) { answer.resize(60000, 'x'); }},
        {"garbage", [](Datagram& answer) { answer = noise(answer.size()); }},
        {"endless", [](Datagram&) {}, 10000},
        {"endless garbage", [](Datagram& answer) { answer = noise(1400); }, 10000},
    };
    for (const std::uint64_t lie : kLies)
        all.push_back(
            {"length " + std::to_string(static_cast<std::int64_t>(lie)), lyingBy(length, lie)});
    return all;
}

// ---- A printer with two supplies, over SNMP ----

// The successor of an object: the first two rows of a column, then what lies behind the table.
std::string successorOf(std::string_view oid) {
    if (oid.ends_with(".7.2")) return "1.3.6.1.2.1.99";
    if (oid.ends_with(".7.1")) return std::string(oid.substr(0, oid.size() - 1)) + "2";
    return std::string(oid) + ".7.1";
}

void tell(SnmpVarBind& binding) {
    binding.oid.assign(successorOf(binding.oid.view()));
    binding.valueType = ber_tags::integer;
    const std::string_view oid = binding.oid.view();
    if (oid.starts_with("1.3.6.1.2.1.25.3.5.1.1")) binding.value.number = 3;
    if (oid.starts_with("1.3.6.1.2.1.43.11.1.1.8")) binding.value.number = 100;
    if (oid.starts_with("1.3.6.1.2.1.43.11.1.1.9")) binding.value.number = 42;
    if (!oid.starts_with("1.3.6.1.2.1.25.3.2.1.3")) return;
    binding.valueType = ber_tags::octetString;
    binding.value.text.assign("Acme Color 100");
    binding.valueLength = static_cast<std::uint32_t>(binding.value.text.size());
}

Datagram snmpAnswer(Bytes request) {
    SnmpMessage message;
    const int bindings = parseSnmpPacket(request, message);
    message.pduType = snmp_pdus::getResponse;
    for (int i = 0; i < bindings; ++i) tell(message.varBinds[static_cast<std::size_t>(i)]);
    Datagram answer(2048);
    answer.resize(mkSNMPSrcPacket(answer, message));
    return answer;
}

std::shared_ptr<void> snmpPrinter(const Place& place, const Hardship& hardship) {
    const auto script = [hardship](Bytes request) {
        Datagram answer = snmpAnswer(request);
        if (hardship.spoil) hardship.spoil(answer);
        return std::optional(answer);
    };
    return std::make_shared<UdpPeer>(place.ipv4, 161, script, "", hardship.answers);
}

Answer askNetworkPrinter(const Place& place, std::string_view kind, std::string_view maker) {
    return askRecord({{std::string(keys::serverType), server_types::network},
                      {std::string(keys::kind), kind},
                      {std::string(keys::makerName), maker},
                      {std::string(keys::ipAdrs), place.ipv4}});
}

Answer askAcme(const Place& place) {
    return askNetworkPrinter(place, "lpd:x", "Acme");
}
Answer askHP(const Place& place) {
    return askNetworkPrinter(place, "lpd:x", "HP");
}
Answer askName(const Place& place) {
    const std::string name = askPrinterName(place.ipv4);
    return {name.empty() ? 0 : 1, name};
}

// ---- BJNP ----

std::shared_ptr<void> bjnpPrinter(const Place& place, const Hardship& hardship) {
    return std::make_shared<VirtualBjnpPrinter>(
        place.ipv4, BjnpSetup{.spoil = hardship.spoil, .answers = hardship.answers});
}

// The one printer in the network that is asked.
std::shared_ptr<void> foundPrinter(const Place&, const Hardship& hardship) {
    return std::make_shared<VirtualBjnpPrinter>(
        "10.77.0.11", BjnpSetup{.spoil = hardship.spoil, .answers = hardship.answers},
        "10.77.0.255");
}

Answer askBjnp(const Place& place) {
    return askNetworkPrinter(place, "bjnp:x", "Canon");
}

Answer discover(const Place&) {
    std::vector<BjnpPrinter> printers;
    const int count = bjnpDiscovery(printers);
    return {count, count > 0 ? std::string(printers[0].model.view()) : ""};
}

// ---- The table ----

Case caseOf(const Exchange& exchange, const Hardship& hardship) {
    const auto peer = [&exchange, hardship](const Place& place) {
        return hardship.listens ? exchange.peer(place, hardship) : nullptr;
    };
    return {exchange.name, hardship.name, exchange.boundSeconds, exchange.honest,
            peer,          exchange.ask,  exchange.mayStopEarly};
}

void runTable(std::initializer_list<Exchange> exchanges, std::size_t sideBySide) {
    std::vector<Case> cases;
    for (const Exchange& exchange : exchanges) {
        cases.push_back(caseOf(exchange, {}));
        for (const Hardship& hardship : hardshipsFor(exchange.length))
            cases.push_back(caseOf(exchange, hardship));
    }
    runAll(cases, sideBySide);
}

TEST(HostilePeers, OverUdp) {
    constexpr LengthField kBerLength{1, 1};
    constexpr LengthField kBjnpLength{12, 4};
    const Answer canon{5, "Idle", {75, 40, 62, 0, 18}};
    const Answer acme{2, "Idle", {42, 42}};
    runTable({{"SNMP", 2.4, acme, kBerLength, snmpPrinter, askAcme, true},
              {"SNMP, HP", 2.6, acme, kBerLength, snmpPrinter, askHP, true},
              {"SNMP, the name", 0.2, {1, "Acme Color 100"}, kBerLength, snmpPrinter, askName},
              {"BJNP", 3, canon, kBjnpLength, bjnpPrinter, askBjnp}},
             32);
    // All of them would hear each other's broadcasts.
    runTable({{"BJNP, discovery", 32.5, {1, "MP640 series"}, kBjnpLength, foundPrinter, discover}},
             1);
}

}  // namespace
}  // namespace tintoral::hostile
