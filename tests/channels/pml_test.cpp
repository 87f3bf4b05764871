#include "transport/channels/pml.h"

#include <gtest/gtest.h>

#include <array>

#include "support/byte_streams.h"

namespace tintoral {
namespace {

using namespace test;

std::string element(std::uint8_t type, const PMLArgument& value) {
    std::array<std::uint8_t, 300> out{};
    return hexOf(Bytes(out).first(makePMLBER(out, type, value)));
}

TEST(PML, ElementsAreWritten) {
    const std::string text(256, 'x');
    const struct {
        std::uint8_t type;
        PMLArgument value;
        std::string bytes;
    } rows[] = {
        {0, "2.11.1.1.6.1.1", "0007020B0101060101"},
        {0, "", "0000"},
        {0, "1..300.x",
         "00040100"
         "2C00"},
        {4, 0x01020304, "040401020304"},
        {8, -2, "0804FFFFFFFE"},
        {32, 5, "200400000005"},
        {16, "ink", "1003696E6B"},
        {20, "ink", "14"},
        {12, 7, "0C"},
        {99, 7, "63"},
        {4, "7", ""},  // a text is no number
        {16, 7, ""},
        {16, text, ""},  // its length would not fit a byte
    };
    for (const auto& row : rows)
        EXPECT_EQ(element(row.type, row.value), row.bytes) << int{row.type};
    std::array<std::uint8_t, 5> small{};
    EXPECT_EQ(makePMLBER(small, 4, 1), 0U);
}

TEST(PML, ElementsAreRead) {
    const struct {
        const char* bytes;
        std::size_t size;
        std::int32_t number;
        std::string text;
    } rows[] = {
        {"0007020B0101060101FF", 9, 0, "2.11.1.1.6.1.1"},
        {"0400", 2, 0, ""},
        {"0401FE", 3, -2, ""},
        {"0802FFFE", 4, 0xFFFE, ""},
        {"2003FFFFFE", 5, 0xFFFFFE, ""},
        {"0404FFFFFFFE", 6, -2, ""},
        {"04060000000799FF", 8, 7, ""},
        {"1003696E6B", 5, 0, "ink"},
        {"14026100", 4, 0, std::string("a\0", 2)},
        {"0C0105", 3, 0, ""},
        {"0405FFFFFFFE", 0, 0, ""},  // runs past the end
        {"10FF61", 0, 0, ""},
        {"04", 0, 0, ""},
        {"", 0, 0, ""},
    };
    for (const auto& row : rows) {
        PMLValue value;
        value.number = 77;
        EXPECT_EQ(parsePMLBER(bytesOfHex(row.bytes), value), row.size) << row.bytes;
        EXPECT_EQ(value.number, row.number) << row.bytes;
        EXPECT_EQ(value.text.view(), row.text) << row.bytes;
    }
    PMLValue longest;
    ByteVector identifier(257, 0xFF);
    identifier[0] = 0;
    EXPECT_EQ(parsePMLBER(identifier, longest), 257U);
    EXPECT_EQ(longest.text.size(), 255U * 4 - 1);
}

TEST(PML, OnlySetRequestsCarryAValue) {
    std::array<std::uint8_t, 32> out{};
    const auto request = [&](std::uint8_t command) {
        return hexOf(Bytes(out).first(makePMLRequest(out, command, "1.1.3.2", 4, 100)));
    };
    EXPECT_EQ(request(kPMLGet), "00000401010302");
    EXPECT_EQ(request(kPMLSet), "04000401010302040400000064");
    EXPECT_EQ(makePMLRequest(MutableBytes(out).first(12), kPMLSet, "1.1.3.2", 4, 100), 0U);
}

TEST(PML, RepliesAreReadOrRefused) {
    PMLResponse response;
    EXPECT_EQ(parsePMLResponse(bytesOfHex("8000 000401010302 10024142"), response), 0);
    EXPECT_EQ(response.object.view(), "1.1.3.2");
    EXPECT_EQ(response.value.type, 16);
    EXPECT_EQ(response.value.text.view(), "AB");
    EXPECT_EQ(response.value.length, 2U);

    EXPECT_EQ(parsePMLResponse(bytesOfHex("8081 000401010302"), response), -1);
    EXPECT_EQ(response.status, -127);
    EXPECT_EQ(response.value.length, 6U);
    EXPECT_EQ(response.value.number, 0);

    for (const auto* malformed : {"", "80", "8000", "8000 04020102 0401FF", "8000 00FF01",
                                  "8000 000101 1009FF", "8000 000101"}) {
        EXPECT_EQ(parsePMLResponse(bytesOfHex(malformed), response), -1) << malformed;
        EXPECT_EQ(response.value.text.view(), "") << malformed;
    }
}

}  // namespace
}  // namespace tintoral
