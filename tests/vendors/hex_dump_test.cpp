#include "support/hex_dump.h"

#include <gtest/gtest.h>

namespace tintoral {
namespace {

TEST(HexDump, OffsetsHexAndPrintableCharacters) {
    DumpText text("reply:\n");
    const std::string packet = std::string("@BDC ST2\r\n") + '\x7F' + "\xFF" + "012345";
    const std::string expected =
        "0000  40 42 44 43 20 53 54 32 0D 0A 7F FF 30 31 32 33  @BDC ST2....0123\n"
        "0010  34 35                                            45\n";
    EXPECT_EQ(sDumpPacket(text, asBytes(packet)), expected.size());
    EXPECT_EQ(text.view(), "reply:\n" + expected);
}

TEST(HexDump, WholeLinesOnly) {
    FixedText<160> text;
    sDumpPacket(text, asBytes(std::string(64, 'x')));
    EXPECT_EQ(text.size(), 2U * 72);
    EXPECT_EQ(text.view().back(), '\n');
}

}  // namespace
}  // namespace tintoral
