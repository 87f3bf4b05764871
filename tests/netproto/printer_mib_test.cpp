// The Printer MIB against a real net-snmp agent, and against peers that no agent would be.
#include "netproto/printer_mib.h"

#include <gtest/gtest.h>

#include "simulators/udp_peer.h"
#include "support/snmp_agent.h"

namespace tintoral {
namespace {

using test::SnmpAgent;
using test::SnmpPrinter;

constexpr const char* kHost = "10.77.0.11";

std::vector<int> levels(const InkQuantities& record) {
    std::vector<int> result;
    for (std::size_t i = 0; i < record.usableCount(); ++i)
        result.push_back(record.entries[i].level);
    return result;
}

// What one inquiry made of the printer at kHost.
struct Inquiry {
    StatusText status;
    InkQuantities record;
    SupplyNames names;
    int result;

    explicit Inquiry(std::string_view maker) {
        record.entries[0].colorID = 65;
        result = getInkStatusByPMib(maker, kHost, status, record, names);
    }
};

TEST(PrinterMib, ReadsARealAgentAndStopsAtTenSupplies) {
    if (!test::hasSnmpAgent()) GTEST_SKIP() << "no snmpd on this machine";
    SnmpPrinter printer;
    printer.supplies = {
        {"Black Cartridge", 70, 35}, {"Cyan", 100, -2}, {"Magenta", 100, -3}, {"Yellow", 100, 0}};
    SnmpAgent agent(kHost, printer);
    const Inquiry first("Acme");
    ASSERT_EQ(first.result, 4);
    EXPECT_EQ(first.status.view(), "Idle");
    EXPECT_EQ(levels(first.record), (std::vector<int>{50, -2, -3, 0}));
    EXPECT_EQ(first.record.entries[0].colorID, 65);  // colours are not this query's
    EXPECT_EQ(first.names[0].view(), "Yellow");      // the last description, as meant
    EXPECT_TRUE(first.names[1].empty());

    printer.deviceID = "MFG:HP;MDL:Deskjet;VSTATUS:$HB0,IDLE,K0,KP045,C1,CUT;";
    agent.change(printer);
    EXPECT_EQ(levels(Inquiry("HP").record), (std::vector<int>{45, 0}));
    EXPECT_EQ(Inquiry("Hewlett-Packard").result, 4);
    printer.deviceID = "MFG:HP;MDL:Deskjet;";
    agent.change(printer);
    const Inquiry withoutPens("HP");
    EXPECT_EQ(withoutPens.result, 4);
    EXPECT_TRUE(withoutPens.status.empty());  // lost, as meant
    printer.deviceID.clear();

    printer.status = 5;
    printer.errors = "c0";
    printer.supplies = {{std::string(200, 'x'), 0, 35}};
    agent.change(printer);
    StatusText status;
    pmibGetPrinterStatus(kHost, status, nullptr);
    EXPECT_EQ(status.view(), "noPaper,lowPaper,");
    InkQuantities record;
    SupplyRows rows;
    EXPECT_EQ(pmibGetSupplies(kHost, rows, record, nullptr), 1);
    EXPECT_EQ(record.entries[0].level, 35);
    EXPECT_EQ(rows[0].size(), 63U);

    for (int i = 2; i <= 12; ++i)
        printer.supplies.push_back({"Supply " + std::to_string(i), 100, i});
    agent.change(printer);
    EXPECT_EQ(pmibGetSupplies(kHost, rows, record, nullptr), 10);
    EXPECT_EQ(record.count, 10);
    EXPECT_EQ(rows[9].view(), "Supply 10");
    EXPECT_EQ(record.entries[10], InkEntry{});
    EXPECT_EQ(pmibGetColorant(kHost, rows, nullptr), 10);
}

TEST(PrinterMib, SilenceIsSaidPlainlyAndSoon) {
    const test::UdpPeer silent(kHost, 161, [](Bytes) { return std::nullopt; });
    const auto start = std::chrono::steady_clock::now();
    const Inquiry inquiry("Acme");
    EXPECT_EQ(inquiry.result, -1);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(600));
    EXPECT_EQ(inquiry.status.view(), "Can't communicate to the printer.");
    EXPECT_EQ(silent.requests().size(), 2U);
}

TEST(PrinterMib, APeerThatNeverLeavesTheColumnIsLeftAfterTenRounds) {
    const test::UdpPeer peer(kHost, 161, [](Bytes request) {
        SnmpMessage message;
        parseSnmpPacket(request, message);
        message.pduType = snmp_pdus::getResponse;
        for (SnmpVarBind& binding : message.varBinds) binding.valueType = ber_tags::integer;
        message.varBinds[6].value.number = 1;
        message.varBinds[7].value.number = 0x7FFFFFFF;
        test::Datagram answer(2048);
        answer.resize(mkSNMPSrcPacket(answer, message));
        return std::optional(answer);
    });
    InkQuantities record;
    SupplyRows rows;
    EXPECT_EQ(pmibGetSupplies(kHost, rows, record, nullptr), 10);
    EXPECT_EQ(record.entries[9].level, 100);
}

TEST(PrinterMib, StatusWordsAndLevels) {
    const auto words = [](int status, std::string_view errors) {
        StatusText text;
        printerStatusToString(status, errors, text);
        return std::string(text.view());
    };
    EXPECT_EQ(words(5, std::string_view("\0", 1)), "Unknown");
    EXPECT_EQ(words(1, "\x03"), "serviceRequestedoffline,");
    EXPECT_EQ(words(1, "\xff").size(), 63U);  // all of them are more than a status text holds
    EXPECT_EQ(supplyLevel(2, 3), 66);
    EXPECT_EQ(supplyLevel(300, 100), 100);
    EXPECT_EQ(supplyLevel(900, -2), 127);
    EXPECT_EQ(supplyLevel(-2147483647, 100), -128);
}

}  // namespace
}  // namespace tintoral
