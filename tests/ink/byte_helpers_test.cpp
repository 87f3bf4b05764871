#include "ink/byte_helpers.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace tintoral {
namespace {

TEST(ByteHelpers, HexPairsAreReadLeniently) {
    EXPECT_EQ(hTob("ff"), -1);
    EXPECT_EQ(hTob("ZA"), 0x3A);  // 'Z' is 35, four bits of which are kept
    EXPECT_EQ(hTob("0g"), 16);    // the second value is not masked
    EXPECT_EQ(hTob("5"), 0x50);
    EXPECT_EQ(hTob(""), 0);
}

TEST(ByteHelpers, HexToBinRepeatsTheNibbleBeforeABadCharacter) {
    std::array<std::uint8_t, 3> output{};
    EXPECT_EQ(hexToBin("A?zf9", output), 3U);
    EXPECT_EQ(output, (std::array<std::uint8_t, 3>{0xAA, 0xAF, 0x90}));
    EXPECT_EQ(hexToBin("?1020304", output), 3U);
    EXPECT_EQ(output, (std::array<std::uint8_t, 3>{0x01, 0x02, 0x03}));
}

TEST(ByteHelpers, OnlyOneByteIntegersAreSigned) {
    const std::vector<std::uint8_t> ones(5, 0xFF);
    EXPECT_EQ(b2i(Bytes(ones).first(1)), -1);
    EXPECT_EQ(b2i(Bytes(ones).first(2)), 65535);
    EXPECT_EQ(b2i(Bytes(ones).first(4)), -1);
    EXPECT_EQ(b2i(ones), 0);
    EXPECT_EQ(b2i(asBytes("\x01\x02\x03\x04")), 0x01020304);
}

TEST(ByteHelpers, SearchStopsOnePositionEarly) {
    EXPECT_EQ(bisearch(asBytes("xIQ:y"), "IQ:"), 1U);
    EXPECT_EQ(bisearch(asBytes("xxIQ:"), "IQ:"), std::nullopt);
}

}  // namespace
}  // namespace tintoral
