#include "vendors/epson.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <numeric>
#include <string>
#include <vector>

namespace tintoral {
namespace {

using namespace std::string_literals;

constexpr const char* kHeader =
    "0000001B0140454A4C20313238342E340A40454A4C20202020200A1B40"
    "1B0140454A4C2049440D0A1B2852080000"
    "52454D4F544531";
constexpr const char* kEnterRemote = "1B0140454A4C2049440D0A1B285208000052454D4F544531";
constexpr const char* kExitRemote = "1B0000001B40";

std::string hexOf(Bytes bytes) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string hex;
    for (const std::uint8_t byte : bytes) {
        hex += kDigits[byte >> 4];
        hex += kDigits[byte & 0x0F];
    }
    return hex;
}

// A laser reply whose byte at offset n is n, but for the format and the status code.
std::string laserReply(std::uint8_t format, std::size_t size, const std::string& code = "03EA") {
    std::vector<std::uint8_t> bytes(size);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
    bytes[0] = format;
    return "@EJL STATUS CODE=" + hexOf(bytes).replace(4, 4, code);
}

std::vector<InkEntry> inksOf(const InkQuantities& record) {
    return {record.entries.begin(), record.entries.begin() + record.count};
}

TEST(EpsonBuilders, GiveEveryCommandByteForByte) {
    const std::string remoteEnd = kExitRemote + "0C1B40"s;
    const auto check = [&](const std::string& pattern) {
        return kHeader + "4A530D00004E6F7A7A6C65436865636B00"s + pattern + remoteEnd +
               kEnterRemote + "4A45010000" + kExitRemote;
    };
    using std::placeholders::_1;
    const struct {
        std::function<std::size_t(MutableBytes)> build;
        std::string hex;
    } rows[] = {
        {std::bind(mkEpsonStatusInquire, _1, 0), kHeader + "4951010001"s},
        {std::bind(mkEpsonStatusInquire, _1, 1), kHeader + "534D02000001535402000001"s},
        {std::bind(mkEpsonStatusInquire, _1, 2), kHeader + "534D02000001535402000011"s},
        {std::bind(mkEpsonStatusInquire, _1, 3), ""},
        {std::bind(mkEpsonExitCmd, _1, 0), kExitRemote},
        {std::bind(mkEpsonExitCmd, _1, 1), "534D02000000"s + kExitRemote},
        {std::bind(mkEpsonExitCmd, _1, 2), "535402000000534D02000000"s + kExitRemote},
        {std::bind(mkEpsonNozzleOption, _1, "Stylus C84", 1),
         kHeader + "434802000000"s + remoteEnd},
        {std::bind(mkEpsonNozzleOption, _1, "Stylus C84", 2), check("4E4302000000")},
        {std::bind(mkEpsonNozzleOption, _1, "PX-5500", 2), check("4E4302000010")},
        {std::bind(mkEpsonNozzleOption, _1, "px-5500", 2), check("4E4302000000")},
        {std::bind(mkEpsonD4NozzleOption, _1, 0, 1), "6368010001"},
        {std::bind(mkEpsonD4NozzleOption, _1, 0, 2), "6E63010000"},
        {mkEpsonD4ExitCmd, "6569010000"},
    };
    for (const auto& row : rows) {
        std::array<std::uint8_t, 128> buffer{};
        EXPECT_EQ(hexOf(Bytes(buffer).first(row.build(buffer))), row.hex);
    }
}

TEST(EpsonBuilders, ClearTheStartAndNeverWriteHalfACommand) {
    std::array<std::uint8_t, 40> buffer{};
    buffer.fill(0xAA);
    EXPECT_EQ(mkEpsonNozzleOption(buffer, "", 9), 0U);
    EXPECT_EQ(hexOf(Bytes(buffer).subspan(30, 4)), "0000AAAA");
    EXPECT_EQ(mkEpsonStatusInquire(buffer, 2), 0U);
    EXPECT_EQ(mkEpsonD4NozzleOption(MutableBytes(buffer).first(3), 0, 1), 0U);
}

TEST(EpsonReplies, GiveStatusAndInks) {
    const std::vector<InkEntry> four{{1, 60}, {4, 42}, {5, 31}, {6, 80}};
    const std::string crowd = "@BDC ST2\r\n\x81\0\x0F\x7F\x03"s;
    const struct {
        std::string reply;
        const char* status;
        std::vector<InkEntry> inks;
    } rows[] = {
        {"@BDC ST2\r\n\x16\0\x01\x01\x04\x63\x02zz\x0F\x0D\x03"
         "\x01\x00\x64\x01\x01\x32\x02\x05\x00\x01\x07\x07"s,
         "Idle",
         {{1, 100}, {4, 50}, {2, 0}, {137, 7}}},
        {"\0@BDC ST2\r\n\x03\0\x01\x01\x04"s, "before", {}},
        {"@BDC ST2\r\n\x03\x80\x01\x01\x04"s, "Online", {}},        // length below 0
        {"@@EJL \0\r@BDC ST2\r\n\x03\0\x01\x01\x02"s, "Busy", {}},  // NULs before the marker
        {"@BDC ST2\r\n\xFF\x7F\x01\x01\x04\x0F\x7F\x03\x01"s, "Idle", {}},  // lengths that lie
        {"@BDC ST2\r\n\x03\0\x01\x01\x04\x0F\x04\x03\x01\x01\x05"s, "Idle", {}},  // past the end
        {"@BDC ST\r\nIQ:3C2A1F50;@BDC ST2", "Online", {}},  // the binary marker goes first
        {"@BDC ST\r\nST:04;IQ:3C2A1F50;", "Idle", four},
        {"@BDC ST\rIQ:010203040506;", "Online", {{1, 1}, {4, 2}, {5, 3}, {6, 4}, {7, 5}, {8, 6}}},
        {"@EJL @BDC ST\rIQ:0A0B0C;", "Online", {{0, 10}, {0, 11}, {0, 12}}},
        {"@BDC ST\rST:/:;IQ:3C2A", "Online", {}},  // "/:" taken for digits would come to 0
        {laserReply(33, 28), "Busy", {}},
        {laserReply(33, 29), "Busy", {{1, 28}}},
        {laserReply(33, 28) + "FFFF", "Busy", {{1, -1}}},  // the black one always, as meant
        {laserReply(1, 4, "1770"), "Service Call Error", {}},
        {"@EJL STATUS CODE=0100", "", {}},
    };
    for (const auto& row : rows) {
        StatusText status("before");
        InkQuantities record;
        EXPECT_EQ(parseEpsonReply(asBytes(row.reply), status, record, -7),
                  static_cast<int>(row.inks.size()));
        EXPECT_EQ(status.view(), row.status) << row.reply;
        EXPECT_EQ(inksOf(record), row.inks) << row.reply;
    }
    StatusText status;
    InkQuantities record;
    EXPECT_EQ(parseEpsonReply(asBytes("@BDC PS\r\nST:04;"), status, record, -7), -7);
    // A marker counts only as the last text.
    parseEpsonReply(asBytes("@BDC ST\rIQ:3CWE\0;"s), status, record, -7);
    EXPECT_EQ(record.entries[1].level, kLevelWaitingExchange);
    parseEpsonReply(asBytes("@BDC ST\rIQ:3CWE;"), status, record, -7);
    EXPECT_NE(record.entries[1].level, kLevelWaitingExchange);
    for (const std::string& many :
         {crowd + std::string(126, '\1'), "@BDC ST\rIQ:" + std::string(400, '1') + ";"}) {
        EXPECT_EQ(parseEpsonReply(asBytes(many), status, record, -7), 20);
        EXPECT_EQ(record.count, 20);
    }
}

TEST(ParseBDCST, TextsAndCounts) {
    const struct {
        std::string reply;
        const char *error, *warning, *revision;
        std::int8_t presetCount, count;
    } rows[] = {
        {"@BDC ST\r\nER:06;WR:02;RV:0123456789abcdefghijk;", "Paper out", "Magentaam",
         "0123456789abcdefgh", 0, 0},
        {"@BDC ST\rER:02;WR:06;IQ:3C2A1F50;RV:12", "before", "before", "12", 6,
         6},  // unknown codes
    };
    for (const auto& row : rows) {
        StatusText status, error("before"), warning("before"), revision("before");
        InkQuantities record;
        record.count = row.presetCount;
        parseBDCST(asBytes(row.reply), status, error, record, warning, revision);
        EXPECT_EQ(error.view(), row.error);
        EXPECT_EQ(warning.view(), row.warning);
        EXPECT_EQ(revision.view(), row.revision);
        EXPECT_EQ(record.count, row.count);
    }
}

TEST(ParseBDCPS, StatusByte) {
    const auto parsed = [](const std::string& reply) { return parseBDCPS(asBytes(reply)); };
    EXPECT_EQ(parsed("@BDC PS\r\nST:04;"), static_cast<std::uint8_t>('0' * 10 + '4'));
    EXPECT_EQ(parsed("@BDC PS\r\nST:04;SM:12;"), static_cast<std::uint8_t>('1' * 10 + '2'));
    for (const char* reply : {"@BDC PS\rST:", "@BDC PS\rST:4"}) EXPECT_EQ(parsed(reply), 0);
}

TEST(ParseEJL, EveryLayout) {
    const std::vector<InkEntry> color{{1, 19},   {4, 16},   {5, 17},   {6, 18},  {146, 23},
                                      {147, 20}, {148, 21}, {149, 22}, {144, 24}};
    const std::vector<InkEntry> black{{1, 28}, {146, 29}};
    const std::vector<InkEntry> oil{{1, 28},   {4, 8},   {5, 7},   {6, 6},
                                    {146, 29}, {144, 9}, {145, 10}};
    const std::vector<InkEntry> longOil{{1, 63},   {4, 62},   {5, 61},  {6, 60},
                                        {146, 64}, {144, 65}, {145, 66}};
    const std::vector<InkEntry> drums{{1, 10},   {4, 11},   {5, 12},   {6, 13},   {144, 14},
                                      {145, 15}, {146, 16}, {147, 17}, {148, 18}, {149, 19}};
    const struct {
        std::uint8_t format;
        std::uint32_t extra;
        std::vector<InkEntry> inks;
    } cases[] = {
        {17, 0x06070809, color},   {33, 0x14151617, black}, {49, 0x14151617, oil},
        {81, 0x34353637, longOil}, {97, 0x2C2D2E2F, drums},
    };
    for (const auto& c : cases) {
        StatusText status;
        InkQuantities record;
        record.count = 3;
        std::uint32_t extra = 99;
        EXPECT_EQ(parseEJLStatusCode(asBytes(laserReply(c.format, 70)), status, record, extra),
                  static_cast<int>(c.inks.size()));
        EXPECT_EQ(inksOf(record), c.inks) << int{c.format};
        EXPECT_EQ(extra, c.extra) << int{c.format};
    }
}

}  // namespace
}  // namespace tintoral
