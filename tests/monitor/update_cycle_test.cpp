#include "monitor/update_cycle.h"

#include <gtest/gtest.h>

#include "support/test_clock.h"

namespace tintoral {
namespace {

PrinterRecord recordOf(std::string_view serverType, std::string_view kind) {
    return {{std::string(keys::printerId), "Network:Printer"},
            {std::string(keys::serverType), serverType},
            {std::string(keys::kind), kind},
            {std::string(keys::active), kYes}};
}

// What a virtual printer is told to answer, and what it was asked with.
int answer = 0;
InkQuantities seen;

int virtualPrinter(PrinterRecord&, InkQuantities& inks, BoundedText& status) {
    seen = inks;
    status.assign("Idle\n\x1b[2J");
    if (answer < 1) return answer;
    inks.clear();
    for (const InkEntry entry : {InkEntry{1, 80}, InkEntry{0, 5}, InkEntry{6, -3}}) {
        setIQByColorID(inks, entry.colorID, entry.level);
    }
    inks.entries[1] = {0, 5};
    inks.entries[2] = {6, -3};
    inks.count = 3;
    return answer;
}

constexpr std::array kTable{DispatchRow{"Network", "por", false, virtualPrinter},
                            DispatchRow{"AirPort", "", true, virtualPrinter}};

TEST(UpdateCycle, FirstLevelsNameTheInksAndAreKept) {
    test::TestClock clock;
    const ScopedClock scoped(clock);
    answer = 3;
    PrinterRecord printer = recordOf("Network", "port9100:10.0.0.1");
    ASSERT_EQ(updatePrinter(printer, kTable), UpdateOutcome::Levels);
    EXPECT_EQ(printer.text(keys::printerStatus), "Idle[2J");
    EXPECT_EQ(printer.texts(keys::colors), (std::vector<std::string>{"Black", "none", "Yellow"}));
    EXPECT_EQ(printer.date(keys::date), currentDate());
    const Dictionary& inkDict = *printer.dictionary(keys::inkDict);
    EXPECT_EQ(inkDict.integer("Black"), 80);
    EXPECT_EQ(inkDict.integer("none"), 5);
    EXPECT_EQ(inkDict.integer("Yellow"), -3);
    EXPECT_EQ(inkDict.date(keys::date), currentDate());
}

TEST(UpdateCycle, KnownColorsPrefillTheRecordAndNameTheLevels) {
    answer = 3;
    PrinterRecord printer = recordOf("Network", "port9100:10.0.0.1");
    printer.set(keys::colors, std::vector<std::string>{"Photo Black", "Cyan", "Magenta", "Red"});
    printer.set(keys::rgbColors, std::vector<std::string>{"#010203"});
    ASSERT_EQ(updatePrinter(printer, kTable), UpdateOutcome::Levels);
    EXPECT_EQ(seen.count, 4);
    EXPECT_EQ(seen.entries[0], (InkEntry{65, 100}));
    const Dictionary& inkDict = *printer.dictionary(keys::inkDict);
    EXPECT_EQ(inkDict.integer("Photo Black"), 80);
    EXPECT_EQ(inkDict.integer("Red"), 0);
    EXPECT_EQ(inkDict.texts(keys::rgbColors), std::vector<std::string>{"#010203"});
}

TEST(UpdateCycle, MoreColorsThanARecordHolds) {
    answer = 3;
    PrinterRecord printer = recordOf("Network", "port9100:10.0.0.1");
    std::vector<std::string> colors;
    for (int i = 0; i < 300; ++i) colors.push_back("Ink " + std::to_string(i));
    printer.set(keys::colors, colors);
    ASSERT_EQ(updatePrinter(printer, kTable), UpdateOutcome::Levels);
    EXPECT_EQ(seen.count, 20);
}

TEST(UpdateCycle, FailuresKeepTheLastLevels) {
    PrinterRecord printer = recordOf("Network", "port9100:10.0.0.1");
    printer.set(keys::inkDict, Dictionary{{"Black", 12}});
    answer = -1;
    EXPECT_EQ(updatePrinter(printer, kTable), UpdateOutcome::Unreachable);
    EXPECT_EQ(printer.text(keys::printerStatus), "Offline");
    answer = 0;
    EXPECT_EQ(updatePrinter(printer, kTable), UpdateOutcome::NoLevels);
    EXPECT_EQ(printer.text(keys::printerStatus), "Online but can't get ink levels");
    EXPECT_EQ(printer.dictionary(keys::inkDict)->integer("Black"), 12);
}

TEST(UpdateCycle, DispatchGoesByServerTypeAndKind) {
    answer = 3;
    InkQuantities inks;
    StatusText status;
    const auto ask = [&](PrinterRecord printer) {
        return queryPrinter(printer, inks, status, kTable);
    };
    EXPECT_EQ(ask(recordOf("Network", "port9100:10.0.0.1")), 3);
    EXPECT_EQ(ask(recordOf("Network", "lpd:10.0.0.1")), 0);
    EXPECT_EQ(ask(recordOf("network", "port9100:10.0.0.1")), 0);
    PrinterRecord withdrawn = recordOf("AirPort", "riousb:10.0.0.1");
    EXPECT_EQ(ask(withdrawn), 3);
    withdrawn.set(keys::active, kNo);
    EXPECT_EQ(ask(withdrawn), -1);
}

TEST(UpdateCycle, AnnouncedHPStatusNeedsNoConnection) {
    PrinterRecord printer = recordOf("AirPort", "port9101:10.0.0.1");
    printer.set(keys::makerName, "HP");
    EXPECT_EQ(updatePrinter(printer), UpdateOutcome::NoLevels);
    printer.set(keys::usbVStatus, "$HB0$NC0,ff,DN,IDLE,CUT,K0,C0,DP,NR,KP045,CP090");
    ASSERT_EQ(updatePrinter(printer), UpdateOutcome::Levels);
    EXPECT_EQ(printer.text(keys::printerStatus), "Idle");
    EXPECT_EQ(printer.dictionary(keys::inkDict)->integer("Black"), 45);
    EXPECT_EQ(printer.dictionary(keys::inkDict)->integer("CMY Color"), 90);
}

}  // namespace
}  // namespace tintoral
