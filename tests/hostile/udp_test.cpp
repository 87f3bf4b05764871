#include <gtest/gtest.h>

#include <thread>

#include "hostile/hostile.h"
#include "monitor/address_probe.h"
#include "netproto/bjnp.h"
#include "netproto/snmp.h"
#include "simulators/virtual_bjnp_printer.h"

namespace tintoral::hostile {
namespace {

using namespace std::chrono_literals;
using test::Datagram;
using test::VirtualBjnpPrinter;

// ---- A printer with two supplies, over SNMP ----

// The successor of an object: the first two rows of a column, then what lies behind the table.
std::string successorOf(std::string_view oid) {
    if (oid.ends_with(".7.2")) return "1.3.6.1.2.1.99";
    if (oid.ends_with(".7.1")) return std::string(oid.substr(0, oid.size() - 1)) + "2";
    return std::string(oid) + ".7.1";
}

void tell(SnmpVarBind& binding) {
    binding.oid.assign(successorOf(binding.oid.view()));
    const std::string_view oid = binding.oid.view();
    binding.valueType = ber_tags::integer;
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

// ---- Peers that spoil each answer, and give it so many times ----

using MakePeer = std::shared_ptr<void> (*)(const Place& place, const Spoil& spoil, int answers);

std::shared_ptr<void> snmpPrinter(const Place& place, const Spoil& spoil, int answers) {
    const auto script = [spoil](Bytes request) {
        Datagram answer = snmpAnswer(request);
        spoil(answer);
        return std::optional(answer);
    };
    return std::make_shared<test::UdpPeer>(place.ipv4, 161, script, "", answers);
}

std::shared_ptr<void> bjnpPrinter(const Place& place, const Spoil& spoil, int answers) {
    return std::make_shared<VirtualBjnpPrinter>(
        place.ipv4, test::BjnpSetup{.spoil = spoil, .answers = answers});
}

// The one printer in the network that is asked.
std::shared_ptr<void> foundPrinter(const Place&, const Spoil& spoil, int answers) {
    return std::make_shared<VirtualBjnpPrinter>(
        "10.77.0.11", test::BjnpSetup{.spoil = spoil, .answers = answers}, "10.77.0.255");
}

std::vector<Hardship> peersOf(MakePeer make, const LengthField& length) {
    const auto lateBy = [](std::chrono::milliseconds delay) -> Spoil {
        return [=](Datagram&) { std::this_thread::sleep_for(delay); };
    };
    const Spoil nothing = [](Datagram&) {};
    struct Row {
        std::string name;
        Spoil spoil;
        int answers = 1;
    };
    std::vector<Row> rows{
        {"", nothing},
        {"silent", nothing, 0},
        {"late by 90 ms", lateBy(90ms)},
        {"late by 150 ms", lateBy(150ms)},
        {"late by 700 ms", lateBy(700ms)},
        {"empty", [](Datagram& answer) { answer.clear(); }},
        {"cut", [](Datagram& answer) { answer.resize(answer.size() / 2); }},
        {"60000 bytes", [](Datagram& answer) { answer.resize(60000, 'x'); }},
        {"garbage", [](Datagram& answer) { answer = noise(answer.size()); }},
        {"endless", nothing, 10000},
        {"endless garbage", [](Datagram& answer) { answer = noise(1400); }, 10000},
    };
    for (const Lie& lie : liesAbout(length)) rows.push_back({lie.name, lie.spoil});
    std::vector<Hardship> all{{"nobody listens", [](const Place&, int) { return nullptr; }}};
    for (const Row& row : rows) {
        all.push_back({row.name, [make, row](const Place& place, int) {
                           return make(place, row.spoil, row.answers);
                       }});
    }
    return all;
}

// ---- The program's side ----

std::function<Answer(const Place&)> updateOf(std::string_view kind, std::string_view maker) {
    return [=](const Place& place) {
        return askRecord({{std::string(keys::serverType), server_types::network},
                          {std::string(keys::kind), kind},
                          {std::string(keys::makerName), maker},
                          {std::string(keys::ipAdrs), place.ipv4}});
    };
}

Answer askName(const Place& place) {
    const std::string name = askPrinterName(place.ipv4);
    return {name.empty() ? 0 : 1, name};
}

Answer discover(const Place&) {
    std::vector<BjnpPrinter> printers;
    const int count = bjnpDiscovery(printers);
    return {count, count > 0 ? std::string(printers[0].model.view()) : ""};
}

TEST(HostilePeers, OverUdp) {
    const Answer acme{2, "Idle", {42, 42}};
    const Answer name{1, "Acme Color 100"};
    const Answer canon{5, "Idle", {75, 40, 62, 0, 18}};
    const auto snmp = peersOf(snmpPrinter, {1, 1});
    const auto bjnp = peersOf(bjnpPrinter, {12, 4});
    runAll({{"SNMP", 2.4, acme, updateOf("lpd:x", "Acme"), snmp, 0, true},
            {"SNMP, HP", 2.6, acme, updateOf("lpd:x", "HP"), snmp, 0, true},
            {"SNMP, the name", 0.2, name, askName, snmp},
            {"BJNP", 3, canon, updateOf("bjnp:x", "Canon"), bjnp}});
    // One by one, or all of them would hear each other's broadcasts.
    runAll(
        {{"BJNP, discovery", 32.5, {1, "MP640 series"}, discover, peersOf(foundPrinter, {12, 4})}},
        1);
}

}  // namespace
}  // namespace tintoral::hostile
