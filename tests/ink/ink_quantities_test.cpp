#include "ink/ink_quantities.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tintoral {
namespace {

TEST(SetIQ, UpdatesAKnownColorAndAppendsANewOneUntilTheRecordIsFull) {
    InkQuantities record;
    const int inSignedForm = 137 - 256;
    setIQByColorID(record, inSignedForm, 10);
    setIQByColorID(record, 5, 20);
    setIQByColorID(record, inSignedForm, 30);
    EXPECT_EQ(record.count, 2);
    EXPECT_EQ(record.entries[0], (InkEntry{137, 30}));
    EXPECT_EQ(record.entries[1], (InkEntry{5, 20}));
    setIQByColorID(record, 137, 40);  // not found in this form
    EXPECT_EQ(record.count, 3);
    for (int id = 20; id <= 50; ++id) setIQByColorID(record, id, id);
    EXPECT_EQ(record.count, 20);
    EXPECT_EQ(record.entries.back(), (InkEntry{36, 36}));
    EXPECT_EQ(record.padding, 0);
    record.count = 100;
    EXPECT_EQ(record.usableCount(), 20U);
}

TEST(SetIQ, OldColorsAfterTheCountAreSteppedOverUpToSlotEleven) {
    const struct {
        int count;
        std::size_t occupied;  // slots below this one hold an old colour
        std::size_t slot;
    } rows[] = {{2, 5, 5},    {2, 20, 11}, {10, 20, 11}, {11, 20, 11},
                {12, 20, 12}, {-3, 0, 0},  {-3, 2, 2}};
    for (const auto& row : rows) {
        InkQuantities record;
        record.count = static_cast<std::int8_t>(row.count);
        for (std::size_t i = 0; i < row.occupied; ++i) record.entries[i] = {99, 1};
        setIQByColorID(record, 4, 50);
        EXPECT_EQ(record.entries[row.slot], (InkEntry{4, 50})) << row.count << ", " << row.occupied;
        EXPECT_EQ(record.count, static_cast<int>(row.slot) + 1);
    }
}

TEST(EpsonInkField, EntriesAreReadWhole) {
    const std::vector<std::uint8_t> field{3, 1, 0, 40, 2, 1, 50, 1, 7, 0xF6, 9, 9};
    InkQuantities record;
    EXPECT_EQ(biInkStatusToIQ(field, record), 3);
    EXPECT_EQ(record.count, 3);
    EXPECT_EQ(record.entries[0], (InkEntry{1, 40}));
    EXPECT_EQ(record.entries[1],
              (InkEntry{2, 50}));  // a cartridge of several colours, whatever its code
    EXPECT_EQ(record.entries[2], (InkEntry{137, -10}));
    EXPECT_EQ(record.entries[3], (InkEntry{0, 0}));
}

TEST(EpsonInkField, OddEntrySizesWriteNothingAndNoneMoreThanTwentyEntries) {
    const std::vector<std::uint8_t> zeros(10, 0);
    for (const auto& [size, count] : {std::pair{0, 0}, {1, 0}, {2, 0}, {10, 0}, {0xFF, -9}}) {
        std::vector<std::uint8_t> field = zeros;
        field[0] = static_cast<std::uint8_t>(size);
        InkQuantities record;
        EXPECT_EQ(biInkStatusToIQ(field, record), count) << size;
        EXPECT_EQ(record.count, count);
        EXPECT_EQ(record.entries, InkQuantities().entries);
    }
    InkQuantities record;
    EXPECT_EQ(biInkStatusToIQ({}, record), 0);
    // 1 - 250 as a byte would be 7, and say that there is ink.
    EXPECT_LT(biInkStatusToIQ(std::vector<std::uint8_t>(250, 0xFF), record), 0);
    EXPECT_EQ(record.usableCount(), 0U);
    EXPECT_EQ(biInkStatusToIQ(std::vector<std::uint8_t>(255, 3), record), 20);
    EXPECT_EQ(record.count, 20);
    EXPECT_EQ(record.padding, 0);
}

TEST(EpsonTextReply, PairsOfDigitsAreLevelsAndMarkersCountOnlyAtTheEndOfTheText) {
    using namespace std::string_view_literals;
    InkQuantities record;
    EXPECT_EQ(parseIQ(asBytes("@BDC ST\r\nIQ:3C4A;\f"), record), 2);
    EXPECT_EQ(record.entries[0], (InkEntry{0, 60}));
    EXPECT_EQ(record.entries[1], (InkEntry{0, 74}));
    for (const std::string_view reply : {"", "IQ", "IQ:", "IQ:3C4A", "QI:3C4A;"}) {
        EXPECT_EQ(parseIQ(asBytes(reply), record), 0) << reply;
        EXPECT_EQ(record.count, 0);
    }
    EXPECT_EQ(parseIQ(asBytes("IQ:" + std::string(1000, '1') + ";"), record), 20);
    EXPECT_EQ(record.padding, 0);
    for (const auto& [reply, count, level] : {std::tuple{"IQ:RERE;"sv, 2, -66},  // as hex digits
                                              {"IQ:RE\0;"sv, 1, -4},
                                              {"IQ:WE\0;"sv, 1, -3},
                                              {"IQ:CI\0;"sv, 1, -2}}) {
        EXPECT_EQ(parseIQ(asBytes(reply), record), count) << reply;
        EXPECT_EQ(record.entries[0].level, level) << reply;
    }
}

TEST(Reports, ListEveryEntryOnALineOfItsOwn) {
    InkQuantities record;
    setIQByColorID(record, 144, -2);
    FixedText<2048> text("> ");
    const std::string_view expected =
        "> Number of Ink levels = 1 \n 0 144=  -2 %  Waste Toner Box\n";
    EXPECT_EQ(sdumpInkQuantities(text, 1, record), expected.size() - 2);
    EXPECT_EQ(text.view(), expected);
    sdumpInkQuantities(text, 1000, record);
    EXPECT_TRUE(text.view().ends_with(" 19  0=   0 %  None\n"));
}

}  // namespace
}  // namespace tintoral
