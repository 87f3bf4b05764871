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
    const Entries unknown{{keys::printerStatus, "unknown"}};
    const struct {
        Entries before;
        Entries changes;
    } cases[] = {
        {{{keys::kind, "USB"}}, unknown},
        {{{keys::kind, "bjnp:10.0.0.1"}, {keys::printerStatus, "Offline"}}, unknown},
        {{{keys::kind, "port9100:10.0.0.1"}, {keys::active, kYes}}, {{keys::active, kNo}}},
        {{{keys::kind, "lpd:10.0.0.1"},
          {keys::addedByAddress, kYes},
          {keys::printerStatus, "Offline"}},
         {{keys::active, kYes}, unknown[0]}},
    };
    for (const auto& c : cases) {
        PrinterRecord printer = recordOf(c.before);
        PrinterRecord expected = printer;
        for (const auto& [key, value] : c.changes) expected.set(key, value);
        prepareAtStart(printer);
        EXPECT_EQ(printer, expected) << printer.text(keys::kind);
    }
}

TEST(RecordRules, AKnownPrinterTakesOverItsNewAddress) {
    const Entries known{{keys::kind, "port9100:10.0.0.1"}, {keys::port, 9100}, {keys::ippURL, "u"}};
    const Entries shared{{keys::kind, "riousb:10.0.0.1"}, {keys::hostName, "h"}, {keys::port, 1}};
    const Entries fresh{{keys::ipAdrs, "10.0.0.2"}, {keys::port, 9101}, {keys::kind, "lpd:x"}};
    const Entries typedIn{{keys::kind, "lpd:10.0.0.1"}, {keys::addedByAddress, kYes}};
    Entries airPort = fresh;
    airPort.emplace_back(keys::serverType, server_types::airPort);
    const struct {
        const char* what;
        void (*copy)(const PrinterRecord&, PrinterRecord&);
        const Entries& from;
        const Entries& before;
        Entries changes;
        std::string_view removed;
    } cases[] = {
        {"selected", copySelectedValues, fresh, known, {fresh[0], fresh[1]}, ""},
        {"keeps its port", copySelectedValues, fresh, shared, {fresh[0]}, ""},
        {"added with another connection", copySelectedValues, typedIn, known, {typedIn[0]}, ""},
        {"even what is absent", copySelectedValues, airPort, shared, fresh, keys::hostName},
        {"found", copyFoundValues, fresh, known, {fresh[0], fresh[1], {keys::active, kYes}}, ""},
        {"only what is present",
         copyFoundValues,
         airPort,
         shared,
         {fresh[0], fresh[1], fresh[2], {keys::active, kYes}},
         ""},
    };
    for (const auto& c : cases) {
        PrinterRecord printer = recordOf(c.before);
        PrinterRecord expected = printer;
        for (const auto& [key, value] : c.changes) expected.set(key, value);
        expected.remove(c.removed);
        c.copy(recordOf(c.from), printer);
        EXPECT_EQ(printer, expected) << c.what;
    }
}

TEST(RecordRules, StatusLine) {
    const std::tuple<Entries, std::string, bool> cases[] = {
        {{}, "Unknown", true},
        {{{keys::printerStatus, "Idle"}, {keys::active, kYes}}, "Idle", true},
        {{{keys::printerStatus, "Idle"}, {keys::active, kNo}}, "Offline", false},
        {{{keys::printerStatus, "Offline"}, {keys::active, kYes}}, "Offline", false},
        {{{keys::printerStatus, "Online but can't get ink levels"}, {keys::active, kNo}},
         "Online but can't get ink levels",
         true},
    };
    for (const auto& [record, text, canUpdate] : cases) {
        const PrinterRecord printer = recordOf(record);
        EXPECT_EQ(statusLine(&printer).text, text);
        EXPECT_EQ(statusLine(&printer).canUpdate, canUpdate) << text;
    }
    EXPECT_EQ(statusLine(nullptr).text, "Printer is not selected");
}

TEST(RecordRules, LevelsAreStaleAfterTenMinutes) {
    const Date now = std::chrono::sys_days{std::chrono::year{2026} / 5 / 1};
    const auto aged = [&](std::chrono::seconds age) {
        return recordOf({{keys::inkDict, Dictionary{{std::string(keys::date), now - age}}}});
    };
    EXPECT_FALSE(levelsAreStale(aged(std::chrono::minutes(10)), now));
    EXPECT_TRUE(levelsAreStale(aged(std::chrono::seconds(601)), now));
    EXPECT_FALSE(levelsAreStale(aged(-std::chrono::days(400)), now)) << "the clock was set back";
}

}  // namespace
}  // namespace tintoral
