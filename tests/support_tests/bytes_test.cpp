#include <gtest/gtest.h>

#include <array>

#include "support/byte_reader.h"
#include "support/byte_writer.h"

namespace tintoral {
namespace {

TEST(ByteReader, ReadsEachWidthInItsByteOrder) {
    const std::array<std::uint8_t, 10> bytes{0xFE, 0x12, 0x34, 0x12, 0x34,
                                             0x89, 0xAB, 0xCD, 0xEF, 7};
    ByteReader reader(bytes);
    EXPECT_EQ(reader.s8(), -2);
    EXPECT_EQ(reader.be16(), 0x1234);
    EXPECT_EQ(reader.le16(), 0x3412);
    EXPECT_EQ(reader.be32(), 0x89ABCDEFU);
    EXPECT_EQ(reader.remaining(), 1U);
    EXPECT_EQ(reader.u8(), 7);
    EXPECT_TRUE(reader.atEnd() && !reader.failed());
}

TEST(ByteReader, FailsForGoodWhereALengthExceedsWhatIsLeft) {
    const std::array<std::uint8_t, 3> bytes{1, 2, 3};
    for (const std::size_t length : {std::size_t{4}, SIZE_MAX}) {
        ByteReader reader(bytes);
        EXPECT_TRUE(reader.take(length).empty());
        EXPECT_TRUE(reader.failed());
        EXPECT_EQ(reader.u8(), 0) << "the bytes that were left must not be read as something else";
    }
    ByteReader exact(bytes);
    EXPECT_EQ(exact.take(3).size(), 3U);
    EXPECT_FALSE(exact.failed());
}

TEST(ByteWriter, NeverYieldsHalfAMessage) {
    std::array<std::uint8_t, 5> storage{};
    ByteWriter writer(MutableBytes(storage).first(4));
    writer.be16(0x1234).u8(9).le16(0x5678);  // the last does not fit
    EXPECT_EQ(writer.finish(), 0U);
    EXPECT_EQ(writer.size(), 3U);
    writer.u8(1);  // would fit, but the message has a hole by now
    EXPECT_EQ(storage, (std::array<std::uint8_t, 5>{0x12, 0x34, 9, 0, 0}));
    ByteWriter exact{MutableBytes(storage)};
    EXPECT_EQ(exact.be32(0x01020304).text("x").finish(), 5U);
    EXPECT_EQ(storage, (std::array<std::uint8_t, 5>{1, 2, 3, 4, 'x'}));
}

}  // namespace
}  // namespace tintoral
