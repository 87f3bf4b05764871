#include "diagnostics/diagnosis.h"

#include <gtest/gtest.h>

#include "simulators/tcp_peer.h"
#include "simulators/virtual_base_station.h"
#include "simulators/virtual_bjnp_printer.h"
#include "simulators/virtual_canon.h"
#include "simulators/virtual_d4_epson.h"
#include "simulators/virtual_epson.h"
#include "simulators/virtual_ipp_printer.h"
#include "simulators/virtual_mlc_hp.h"
#include "simulators/virtual_pjl_hp.h"
#include "support/measure.h"
#include "support/snmp_agent.h"
#include "support/test_clock.h"

namespace tintoral {
namespace {

using namespace std::chrono_literals;

constexpr const char* kAddress = "10.77.0.12";
constexpr const char* kNobody = "10.77.0.13";
constexpr const char* kNoService = "127.0.0.9";

PrinterRecord recordOf(std::string_view serverType, std::string_view kind, std::string_view maker,
                       const char* address = kAddress) {
    return {{"serverType", serverType}, {"kind", kind}, {"makerName", maker},
            {"modelName", "X1"},        {"port", 9100}, {"ipAdrs", address}};
}

std::vector<std::string> titlesOf(const PrinterRecord& printer) {
    std::vector<std::string> titles;
    for (const DiagnosticPhase& phase : diagnosticPhases(printer)) titles.push_back(phase.title);
    return titles;
}

// What the phases with that text in their title wrote.
std::string reportOf(const PrinterRecord& printer, std::string_view title = "") {
    std::string report;
    for (const DiagnosticPhase& phase : diagnosticPhases(printer)) {
        if (phase.title.find(title) != std::string::npos) phase.run(report);
    }
    return report;
}

bool holds(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

template <typename Printer>
test::TcpScript scriptOf(Printer& printer) {
    test::TcpScript script{.received = [&](Bytes bytes) { return printer.onReceive(bytes); }};
    if constexpr (requires { printer.connected(); }) script.opened = [&] { printer.connected(); };
    return script;
}

PrinterRecord recordAtStation(std::string_view maker, std::string_view commandSet) {
    PrinterRecord printer = recordOf("AirPort", "riousb:x", maker);
    printer.set(keys::hostName, "::1");
    printer.set(keys::port, 10000);
    printer.set(keys::usbPrinterName, "usb1");
    printer.set(keys::usbCmd, commandSet);
    return printer;
}

TEST(Diagnosis, PhasesFollowTheConnectionAndTheMaker) {
    struct Row {
        std::string_view serverType, kind, maker;
        std::size_t count;
        std::string_view first;
    };
    const std::vector<Row> rows{
        {"USB", "USB", "EPSON", 7, "Opening the printer and reading its device ID"},
        {"USB", "USB", "Canon", 4, "Opening the printer and reading its device ID"},
        {"Network", "port9100:10.0.0.1", "Lexmark", 8, "Connecting to the raw port"},
        {"Network", "port9100:10.0.0.1", "EPSON", 13, "Connecting to the raw port"},
        {"Network", "lpd:10.0.0.1", "HP", 8, "Reading the description over SNMP"},
        {"AirPort", "lpd:10.0.0.1", "EPSON", 11, "Connecting to the raw port"},
        {"AirPort", "riousb:x", "HP", 5, "Opening the printer at the base station"},
        {"Network", "bjnp:10.0.0.1", "Canon", 3, "Reading the device ID over BJNP"},
        {"Network", "ipp:x", "HP", 9, "Asking for state and markers over IPP"},
        {"Mac cups1.4", "ipp:x", "HP", 2, "Asking for state and markers over IPP"},
        {"", "", "HP", 2, "Looking at how the printer is connected"},
    };
    for (const Row& row : rows) {
        const auto titles = titlesOf(recordOf(row.serverType, row.kind, row.maker));
        EXPECT_EQ(titles.size(), row.count) << row.serverType << row.kind << row.maker;
        EXPECT_EQ(titles.front(), row.first);
        EXPECT_EQ(titles.back(), "Looking up the maintenance that the model offers");
    }
    const auto phases = diagnosticPhases(recordOf("Network", "bjnp:x", "Canon"));
    EXPECT_EQ(phases[1].progress, "Phase 2...");
}

TEST(Diagnosis, EpsonOnTheRawPort) {
    test::TestClock clock;
    const ScopedClock scope(clock);  // the pauses in remote mode
    test::VirtualEpson epson;
    const test::TcpPeer peer(kAddress, 9100, scriptOf(epson));
    PrinterRecord printer = recordOf("Network", "port9100:x", "EPSON");
    EXPECT_TRUE(holds(reportOf(printer, "Connecting"), "Port 9100: connected in "));
    const std::string levels = reportOf(printer, "mode RC");
    EXPECT_TRUE(holds(levels, "Phase 3: ")) << levels;
    EXPECT_TRUE(holds(levels, "Result = 4\nStatus = Idle\n"));
    EXPECT_TRUE(holds(levels, "\nResult = 0\n"));  // RC1 and RC0 are not answered
    const std::string diagnosis = reportOf(printer, "maker's diagnosis");
    EXPECT_TRUE(holds(diagnosis, "Epson RC response = ")) << diagnosis;
    EXPECT_TRUE(holds(diagnosis, "40 42 44 43 20 53 54 32"));
    EXPECT_TRUE(holds(diagnosis, "Number of Ink levels = 4"));
    EXPECT_TRUE(epson.jobs().empty());
}

TEST(Diagnosis, EpsonOnTheD4Channel) {
    test::TestClock clock;
    const ScopedClock scope(clock);  // the pauses on the channel
    test::VirtualD4Epson epson;
    const test::TcpPeer peer(kAddress, 9100, scriptOf(epson));
    PrinterRecord printer = recordOf("Network", "port9100:x", "EPSON");
    printer.set(keys::usbCmd, "ESCPL2,BDC,D4");
    const std::string levels = reportOf(printer, "D4 channel");
    EXPECT_TRUE(holds(levels, "Result = 4\nStatus = Idle\n")) << levels;
    const std::string diagnosis = reportOf(printer, "maker's diagnosis");
    EXPECT_TRUE(holds(diagnosis, "Epson D4 response = ")) << diagnosis;
    EXPECT_TRUE(holds(diagnosis, "Number of Ink levels = 4"));
    EXPECT_EQ(epson.commands(), (std::vector<std::string>{"st", "st"}));
    EXPECT_FALSE(epson.inPacketMode());
}

TEST(Diagnosis, CanonOnTheRawPort) {
    test::VirtualCanon canon;
    const test::TcpPeer peer(kAddress, 9100, scriptOf(canon));
    const PrinterRecord printer = recordOf("Network", "port9100:x", "Canon");
    EXPECT_TRUE(holds(reportOf(printer, "Asking for the levels"), "Result = 5\n"));
    EXPECT_TRUE(holds(reportOf(printer, "diagnosis"), "Number of Ink levels = 5"));
}

TEST(Diagnosis, HPOnTheRawPort) {
    test::VirtualPjlHp hp({"OJ 6310", "black", "color"});
    const test::TcpPeer peer(kAddress, 9100, scriptOf(hp));
    PrinterRecord printer = recordOf("Network", "port9100:x", "HP");
    const std::string diagnosis = reportOf(printer, "maker's diagnosis");
    EXPECT_TRUE(holds(diagnosis, "PJL/PML Modelname = 007\n")) << diagnosis;
    EXPECT_TRUE(holds(diagnosis, "  black\nPJL/PML SUPPLIES DESCRIPTION = 005\n"));
    EXPECT_TRUE(holds(diagnosis, "  color\n"));
    EXPECT_TRUE(holds(reportOf(printer, "announced"), "None was announced.\n"));
    printer.set(keys::usbS, "0000000000000000241000025420000");  // the second pen is cut off
    EXPECT_TRUE(holds(reportOf(printer, "announced"), "Result = 1\n"));
    printer.set(keys::usbVStatus, "$HB0$NC0,ff,DN,IDLE,CUT,K0,KP037,C0,CP064");
    EXPECT_TRUE(holds(reportOf(printer, "announced"), "Result = 2\nStatus = Idle\n"));
}

TEST(Diagnosis, HPAtABaseStation) {
    test::TestClock clock;
    const ScopedClock scope(clock);
    test::VirtualMlcHp hp;
    test::VirtualBaseStation station(
        {.printer = [&](Bytes heard) { return hp.transfersFor(heard); },
         .deviceID = "MFG:HP;MDL:X1;VSTATUS:$HB0$NC0,ff,DN,IDLE,CUT,K0,KP037,C0,CP064;"});
    const test::TcpPeer peer("::1", 10000, scriptOf(station));
    const auto diagnosisFor = [](std::string_view commandSet) {
        return reportOf(recordAtStation("HP", commandSet), "maker's diagnosis");
    };
    const std::string diagnosis = diagnosisFor("MLC,PCL,PML");
    EXPECT_TRUE(holds(diagnosis, "MLC/PML Modelname\n0000  80 00 00 04")) << diagnosis;
    EXPECT_TRUE(holds(diagnosis, "ck (45)\n"));
    EXPECT_TRUE(
        holds(reportOf(recordAtStation("HP", "PCL"), "Asking"), "Result = 2\nStatus = Idle\n"));
    EXPECT_TRUE(holds(diagnosisFor("PCL"), "no diagnosis is known for the command set = PCL\n"));
}

TEST(Diagnosis, BrotherIsListenedToOnTheRawPort) {
    test::TcpScript script;
    script.received = [](Bytes) { return std::vector<std::uint8_t>(); };
    const Bytes said = asBytes("@PJL USTATUS\x1B[2J");
    script.greeting.assign(said.begin(), said.end());
    const test::TcpPeer peer(kAddress, 9100, script);
    const std::string report = reportOf(recordOf("Network", "port9100:x", "Brother"), "Listening");
    EXPECT_TRUE(holds(report, "@PJL USTATUS.[2J\n")) << report;
}

TEST(Diagnosis, CanonOverBjnpWhoseTextsStayInTheirLines) {
    test::BjnpSetup setup;
    setup.deviceID = "MFG:Canon;\nPhase 9: all well\x1B[2J;SN:\xE9;";
    const test::VirtualBjnpPrinter canon(kAddress, setup);
    const std::string report = reportOf(recordOf("Network", "bjnp:x", "Canon"));
    EXPECT_TRUE(holds(report, "Device ID = MFG:Canon;Phase 9: all well[2J;SN:\u00E9;\n")) << report;
    EXPECT_TRUE(holds(report, " 4D 46 47 3A 43 61 6E 6F 6E"));
    EXPECT_TRUE(holds(report, "Status text = BST:00;CIR:PBK=75"));
    EXPECT_TRUE(holds(report, "Result = 5\n"));
    EXPECT_TRUE(canon.openSessions().empty());
    EXPECT_TRUE(holds(reportOf(recordOf("Network", "bjnp:x", "Canon", "name.local"), "device ID"),
                      "no dotted address = name.local\n"));
}

TEST(Diagnosis, CanonAtABaseStation) {
    test::VirtualCanon canon;
    test::VirtualBaseStation station(
        {.printer = test::inOneTransfer(canon), .deviceID = "MFG:Canon;MDL:X1;"});
    const test::TcpPeer peer("::1", 10000, scriptOf(station));
    PrinterRecord printer = recordAtStation("Canon", "");
    const std::string report = reportOf(printer);
    EXPECT_TRUE(holds(report, "Opened in ")) << report;
    EXPECT_TRUE(holds(report, "Device ID = MFG:Canon;MDL:X1;\n"));
    EXPECT_TRUE(holds(report, "Number of Ink levels = 5"));
    printer.set(keys::usbPrinterName, "other");
    EXPECT_TRUE(holds(reportOf(printer, "Opening"), "does not open the printer = other\n"));
}

TEST(Diagnosis, PrinterMibIsDumped) {
    if (!test::hasSnmpAgent()) GTEST_SKIP() << "no SNMP agent";
    test::SnmpPrinter served;
    served.supplies = {{"Cyan Toner", 100, 40}};
    served.deviceID = "MFG:HP;MDL:X1;VSTATUS:$HB0$NC0,ff,DN,IDLE,CUT,K0,KP037,C0,CP064;";
    served.furtherObjects = ".1.3.6.1.4.1.2435.2.3.9.4.2.1.5.5.8.0 octet 63 01 04\n";
    const test::SnmpAgent agent(kAddress, served);
    const std::string report = reportOf(recordOf("Network", "lpd:x", "HP"));
    EXPECT_TRUE(holds(report, "Description = Acme Color 100\n")) << report;
    EXPECT_TRUE(holds(report, "0 = Cyan Toner\n"));
    EXPECT_TRUE(holds(report, "oid = 1.3.6.1.2.1.43.11.1.1"));
    EXPECT_TRUE(holds(report, "Device ID = MFG:HP;MDL:X1;VSTATUS:"));
    EXPECT_TRUE(holds(report, "oid = 1.3.6.1.4.1.2435.2.3.9.4.2.1.5.5.8.0v = 'c"));
}

TEST(Diagnosis, StateAndMarkersOverIpp) {
    constexpr int kName = 0x42;
    constexpr int kInteger = 0x21;
    constexpr int kEnum = 0x23;
    const test::VirtualIppPrinter queue(
        kAddress,
        test::ippAnswer(test::ippMessage({{kEnum, "printer-state", {test::ippInteger(3)}},
                                          {kName, "marker-names", {"Cyan\nPhase 9: all well"}},
                                          {kName, "marker-types", {"ink"}},
                                          {kName, "cups-version", {"1.4.2"}},
                                          {kName, "marker-colors", {"#00FFFF"}},
                                          {kInteger, "marker-levels", {test::ippInteger(40)}}})));
    PrinterRecord printer = recordOf("Mac cups1.4", "ipp:x", "Acme");
    EXPECT_TRUE(holds(reportOf(printer, "IPP"), "no IPP address"));
    printer.set(keys::ippURL, std::string("http://") + kAddress + ":631/printers/x");
    const std::string report = reportOf(printer, "IPP");
    EXPECT_TRUE(holds(report, "marker-names = CyanPhase 9: all well\n")) << report;
    EXPECT_TRUE(holds(report, "marker-levels = 40\n"));
    EXPECT_TRUE(holds(report, "Result = 1\n"));
}

TEST(Diagnosis, NobodyThereEndsSoonAndSaysSo) {
    for (const char* kind : {"port9100:x", "lpd:x", "bjnp:x", "ipp:x", "riousb:x"}) {
        PrinterRecord printer = recordOf("Network", kind, "Canon", kNoService);
        printer.set(keys::ippURL, std::string("http://") + kNoService + ":631/x");
        printer.set(keys::hostName, "::1");
        std::string report;
        EXPECT_LT(test::timed([&] { report = reportOf(printer); }), 20s) << kind;
        EXPECT_FALSE(report.empty());
        EXPECT_FALSE(holds(report, "Result = 1")) << report;
    }
    EXPECT_TRUE(holds(reportOf(recordOf("Network", "port9100:x", "Canon", kNobody), "Connecting"),
                      "Port 9100: no connection after "));
}

TEST(Diagnosis, MaintenanceIsLookedUpAndNotRun) {
    PrinterRecord printer = recordOf("Network", "port9100:x", "EPSON");
    printer.set(keys::nozzleCleaning, kYes);
    const std::string report = reportOf(printer, "maintenance");
    EXPECT_TRUE(holds(report, "Nozzle Cleaning: listed for this model; the job has 68 bytes"));
    EXPECT_TRUE(holds(report, "Print Nozzle Check Pattern: not listed for this model\n"));
    printer.set(keys::kind, "bjnp:x");
    EXPECT_TRUE(holds(reportOf(printer, "maintenance"),
                      "Nozzle Cleaning: listed for this model, but not sent over this"));
}

}  // namespace
}  // namespace tintoral
