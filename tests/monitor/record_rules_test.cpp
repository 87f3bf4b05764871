#include "monitor/record_rules.h"

#include <gtest/gtest.h>

namespace tintoral {
namespace {

using Entries = std::vector<std::pair<std::string_view, Value>>;

PrinterRecord recordOf(const Entries& entries) {
    PrinterRecord printer;
    for (const auto& [key, value] : entries) printer.set(key, value);
    return printer;
}

TEST(RecordRules, AtStartNetworkPrintersAreAbsentUnlessAddedByAddress) {
    PrinterRecord usb = recordOf({{keys::kind, "USB"}, {keys::active, kYes}});
    PrinterRecord bjnp = recordOf({{keys::kind, "bjnp:10.0.0.1"}});
    PrinterRecord network = recordOf({{keys::kind, "port9100:10.0.0.1"}, {keys::active, kYes}});
    PrinterRecord typed = recordOf({{keys::kind, "lpd:10.0.0.1"}, {keys::addedByAddress, kYes}});
    for (PrinterRecord* printer : {&usb, &bjnp, &network, &typed}) prepareAtStart(*printer);
    EXPECT_EQ(usb.text(keys::printerStatus), "unknown");
    EXPECT_EQ(usb.text(keys::active), kYes);
    EXPECT_EQ(bjnp.text(keys::printerStatus), "unknown");
    EXPECT_EQ(network.text(keys::active), kNo);
    EXPECT_EQ(typed.text(keys::active), kYes);
}

TEST(RecordRules, SelectingAKnownPrinterRefreshesItsAddress) {
    const PrinterRecord chosen = recordOf({{keys::ipAdrs, "10.0.0.2"},
                                           {keys::port, 9101},
                                           {keys::kind, "lpd:x"},
                                           {keys::serialID, "S"}});
    PrinterRecord known =
        recordOf({{keys::kind, "port9100:10.0.0.1"}, {keys::port, 9100}, {keys::ippURL, "u"}});
    copySelectedValues(chosen, known);
    EXPECT_EQ(known.text(keys::ipAdrs), "10.0.0.2");
    EXPECT_EQ(known.integer(keys::port), 9101);
    EXPECT_EQ(known.text(keys::serialID), "S");
    EXPECT_EQ(known.text(keys::ippURL), "u");
    EXPECT_EQ(known.text(keys::kind), "port9100:10.0.0.1");

    PrinterRecord shared = recordOf({{keys::kind, "riousb:10.0.0.1"}, {keys::port, 10000}});
    copySelectedValues(chosen, shared);
    EXPECT_EQ(shared.integer(keys::port), 10000);
}

TEST(RecordRules, AnAirPortPrinterTakesOverEvenWhatIsAbsent) {
    const PrinterRecord chosen = recordOf({{keys::serverType, server_types::airPort},
                                           {keys::kind, "lpd:10.0.0.2"},
                                           {keys::port, 515}});
    PrinterRecord known =
        recordOf({{keys::kind, "riousb:10.0.0.1"}, {keys::hostName, "base"}, {keys::port, 1}});
    copySelectedValues(chosen, known);
    EXPECT_EQ(known.text(keys::kind), "lpd:10.0.0.2");
    EXPECT_EQ(known.integer(keys::port), 515);
    EXPECT_FALSE(known.contains(keys::hostName));
}

TEST(RecordRules, AFoundPrinterIsActiveAtItsNewAddress) {
    PrinterRecord known = recordOf({{keys::active, kNo}, {keys::kind, "port9100:10.0.0.1"}});
    const Entries fresh{
        {keys::ipAdrs, "10.0.0.3"}, {keys::usbS, "S:03"}, {keys::kind, "riousb:10.0.0.3"}};
    copyFoundValues(recordOf(fresh), known);
    EXPECT_EQ(known.text(keys::active), kYes);
    EXPECT_EQ(known.text(keys::ipAdrs), "10.0.0.3");
    EXPECT_EQ(known.text(keys::usbS), "S:03");
    EXPECT_EQ(known.text(keys::kind), "port9100:10.0.0.1");

    PrinterRecord airPort = recordOf(fresh);
    airPort.set(keys::serverType, server_types::airPort);
    copyFoundValues(airPort, known);
    EXPECT_EQ(known.text(keys::kind), "riousb:10.0.0.3");
}

TEST(RecordRules, StatusLine) {
    struct Case {
        Entries record;
        std::string text;
        bool canUpdate;
    };
    const Case cases[] = {
        {{}, "Unknown", true},
        {{{keys::printerStatus, "Idle"}}, "Idle", true},
        {{{keys::printerStatus, "Idle"}, {keys::active, kYes}}, "Idle", true},
        {{{keys::printerStatus, "Idle"}, {keys::active, kNo}}, "Offline", false},
        {{{keys::printerStatus, "Offline"}, {keys::active, kYes}}, "Offline", false},
        {{{keys::printerStatus, "Online but can't get ink levels"}, {keys::active, kNo}},
         "Online but can't get ink levels",
         true},
    };
    for (const Case& c : cases) {
        const PrinterRecord printer = recordOf(c.record);
        EXPECT_EQ(statusLine(&printer).text, c.text);
        EXPECT_EQ(statusLine(&printer).canUpdate, c.canUpdate) << c.text;
    }
    EXPECT_EQ(statusLine(nullptr).text, "Printer is not selected");
    EXPECT_FALSE(statusLine(nullptr).canUpdate);
}

TEST(RecordRules, LevelsAreStaleAfterTenMinutes) {
    const Date now = std::chrono::sys_days{std::chrono::year{2026} / 5 / 1};
    const auto aged = [&](std::chrono::seconds age) {
        return recordOf({{keys::inkDict, Dictionary{{std::string(keys::date), now - age}}}});
    };
    EXPECT_FALSE(levelsAreStale(aged(std::chrono::minutes(9)), now));
    EXPECT_FALSE(levelsAreStale(aged(std::chrono::minutes(10)), now));
    EXPECT_TRUE(levelsAreStale(aged(std::chrono::minutes(11)), now));
    EXPECT_FALSE(levelsAreStale(PrinterRecord(), now));
}

}  // namespace
}  // namespace tintoral
