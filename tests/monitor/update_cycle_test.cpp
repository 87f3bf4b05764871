#include "monitor/update_cycle.h"

#include <gtest/gtest.h>

#include "support/test_clock.h"

namespace tintoral {
namespace {

PrinterRecord recordOf(std::string_view serverType = "Network",
                       std::string_view kind = "port9100:10.0.0.1") {
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
    inks.entries[0] = {1, 80};
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
    PrinterRecord printer = recordOf();
    ASSERT_EQ(updatePrinter(printer, kTable), UpdateOutcome::Levels);
    EXPECT_EQ(printer.text(keys::printerStatus), "Idle[2J");
    const Array colors{"Black", "none", "Yellow"};
    EXPECT_EQ(*printer.dictionary(keys::inkDict), (Dictionary{{"Black", 80},
                                                              {"none", 5},
                                                              {"Yellow", -3},
                                                              {"Colors", colors},
                                                              {"Date", currentDate()}}));
    EXPECT_EQ(printer.date(keys::date), currentDate());
    EXPECT_EQ(*printer.find(keys::colors), Value(colors));
}

TEST(UpdateCycle, KnownColorsPrefillTheRecordAndNameTheLevels) {
    answer = 3;
    PrinterRecord printer = recordOf();
    printer.set(keys::colors, std::vector<std::string>{"Photo Black", "Cyan", "Magenta", "Red"});
    printer.set(keys::rgbColors, std::vector<std::string>{"#010203"});
    ASSERT_EQ(updatePrinter(printer, kTable), UpdateOutcome::Levels);
    EXPECT_EQ(seen.count, 4);
    EXPECT_EQ(seen.entries[0], (InkEntry{65, 100}));
    const Dictionary& inkDict = *printer.dictionary(keys::inkDict);
    EXPECT_EQ(inkDict.integer("Photo Black"), 80);
    EXPECT_EQ(inkDict.integer("Red"), 0);
    EXPECT_EQ(inkDict.texts(keys::rgbColors), std::vector<std::string>{"#010203"});
    printer.set(keys::colors, std::vector<std::string>(300, "Red"));
    ASSERT_EQ(updatePrinter(printer, kTable), UpdateOutcome::Levels);
    EXPECT_EQ(seen.count, 20) << "more colours than a record holds";
}

TEST(UpdateCycle, FailuresKeepTheLastLevels) {
    PrinterRecord printer = recordOf();
    printer.set(keys::inkDict, Dictionary{{"Black", 12}});
    for (const auto& [result, outcome, status] :
         {std::tuple(-1, UpdateOutcome::Unreachable, "Offline"),
          {0, UpdateOutcome::NoLevels, "Online but can't get ink levels"}}) {
        answer = result;
        EXPECT_EQ(updatePrinter(printer, kTable), outcome);
        EXPECT_EQ(printer.text(keys::printerStatus), status);
        EXPECT_EQ(*printer.dictionary(keys::inkDict), (Dictionary{{"Black", 12}}));
    }
}

TEST(UpdateCycle, ColorsThatAreNoListAreReplaced) {
    answer = 3;
    PrinterRecord printer = recordOf();
    printer.set(keys::colors, "Black");
    EXPECT_EQ(updatePrinter(printer, kTable), UpdateOutcome::Levels);
    EXPECT_EQ(printer.array(keys::colors)->size(), 3U);
}

TEST(UpdateCycle, DispatchGoesByServerTypeAndKind) {
    answer = 3;
    PrinterRecord withdrawn = recordOf("AirPort", "riousb:10.0.0.1");
    withdrawn.set(keys::active, kNo);
    const std::pair<PrinterRecord, int> cases[] = {
        {recordOf(), 3},          {recordOf("Network", "lpd:10.0.0.1"), 0},
        {recordOf("network"), 0}, {recordOf("AirPort", "riousb:10.0.0.1"), 3},
        {withdrawn, -1},
    };
    for (auto [printer, result] : cases) {
        InkQuantities inks;
        StatusText status;
        EXPECT_EQ(queryPrinter(printer, inks, status, kTable), result);
    }
}

TEST(UpdateCycle, AnnouncedHPStatusNeedsNoConnection) {
    PrinterRecord printer = recordOf("AirPort", "port9101:10.0.0.1");
    printer.set(keys::makerName, "HP");
    printer.set(keys::usbVStatus, "$HB0$NC0,ff,DN,IDLE,CUT,K0,C0,DP,NR,KP045,CP090");
    ASSERT_EQ(updatePrinter(printer), UpdateOutcome::Levels);
    EXPECT_EQ(printer.text(keys::printerStatus), "Idle");
    EXPECT_EQ(printer.dictionary(keys::inkDict)->integer("Black"), 45);
}

}  // namespace
}  // namespace tintoral
