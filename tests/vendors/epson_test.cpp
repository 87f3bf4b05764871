#include "vendors/epson.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
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

std::string built(const std::function<std::size_t(MutableBytes)>& build) {
    std::array<std::uint8_t, 128> buffer{};
    return hexOf(Bytes(buffer).first(build(buffer)));
}

// What a parser made of a reply; texts that it left alone keep "before".
struct Parsed {
    int result = 0;
    StatusText status{"before"};
    StatusText error{"before"};
    StatusText warning{"before"};
    StatusText revision{"before"};
    InkQuantities record;

    std::vector<InkEntry> inks() const {
        return {record.entries.begin(), record.entries.begin() + record.count};
    }
};

Parsed parsedST2(const std::string& reply) {
    Parsed p;
    p.result = parseST2(asBytes(reply), p.status, p.record);
    return p;
}

Parsed parsedBDCST(const std::string& reply, std::int8_t presetCount = 0) {
    Parsed p;
    p.record.count = presetCount;
    p.result = parseBDCST(asBytes(reply), p.status, p.error, p.record, p.warning, p.revision);
    return p;
}

TEST(EpsonBuilders, StatusInquiriesAndExits) {
    const auto inquiry = [](int variant) {
        return built([=](MutableBytes b) { return mkEpsonStatusInquire(b, variant); });
    };
    EXPECT_EQ(inquiry(0), kHeader + "4951010001"s);
    EXPECT_EQ(inquiry(1), kHeader + "534D02000001"s + "535402000001");
    EXPECT_EQ(inquiry(2), kHeader + "534D02000001"s + "535402000011");
    EXPECT_EQ(inquiry(3), "");

    const auto exit = [](int variant) {
        return built([=](MutableBytes b) { return mkEpsonExitCmd(b, variant); });
    };
    EXPECT_EQ(exit(0), kExitRemote);
    EXPECT_EQ(exit(1), "534D02000000"s + kExitRemote);
    EXPECT_EQ(exit(2), "535402000000534D02000000"s + kExitRemote);
    EXPECT_EQ(exit(3), exit(2));
}

TEST(EpsonBuilders, MaintenanceJobs) {
    const auto job = [](const char* model, int option) {
        return built([=](MutableBytes b) { return mkEpsonNozzleOption(b, model, option); });
    };
    const auto check = [](const std::string& pattern) {
        return kHeader + "4A530D00004E6F7A7A6C65436865636B00"s + pattern + kExitRemote + "0C1B40" +
               kEnterRemote + "4A45010000" + kExitRemote;
    };
    EXPECT_EQ(job("Stylus C84", 1), kHeader + "434802000000"s + kExitRemote + "0C1B40");
    EXPECT_EQ(job("Stylus C84", 2), check("4E4302000000"));
    for (const char* model : {"Stylus Photo R800", "PX-G900", "Stylus Photo R1800", "PX-G5000",
                              "PX-G5100", "Stylus Photo R2400", "PX-5500"}) {
        EXPECT_EQ(job(model, 2), check("4E4302000010")) << model;
    }
    EXPECT_EQ(job("stylus photo r800", 2), check("4E4302000000"));
    EXPECT_EQ(job("Stylus C84", 3), "");

    const auto d4Job = [](int option) {
        return built([=](MutableBytes b) { return mkEpsonD4NozzleOption(b, 0, option); });
    };
    EXPECT_EQ(d4Job(1), "6368010001");
    EXPECT_EQ(d4Job(2), "6E63010000");
    EXPECT_EQ(d4Job(3), "");
    EXPECT_EQ(built(mkEpsonD4ExitCmd), "6569010000");
}

TEST(EpsonBuilders, ClearTheStartAndNeverWriteHalfACommand) {
    std::array<std::uint8_t, 40> buffer{};
    buffer.fill(0xAA);
    EXPECT_EQ(mkEpsonNozzleOption(buffer, "", 9), 0U);
    EXPECT_EQ(hexOf(Bytes(buffer).subspan(30, 4)), "0000AAAA");
    EXPECT_EQ(mkEpsonStatusInquire(buffer, 2), 0U);
    EXPECT_EQ(mkEpsonD4NozzleOption(MutableBytes(buffer).first(3), 0, 1), 0U);
}

TEST(ParseST2, StatusAndLevels) {
    const auto p = parsedST2(
        "@BDC ST2\r\n\x16\0\x01\x01\x04\x63\x02zz\x0F\x0D\x03"
        "\x01\x00\x64\x01\x01\x32\x02\x05\x00\x01\x07\x07"s);
    EXPECT_EQ(p.result, 4);
    EXPECT_EQ(p.status.view(), "Idle");
    EXPECT_EQ(p.inks(), (std::vector<InkEntry>{{1, 100}, {4, 50}, {2, 0}, {137, 7}}));
}

TEST(ParseST2, RepliesThatHoldNoLevels) {
    const struct {
        std::string reply;
        const char* status;
    } cases[] = {
        {"", "before"},
        {"\0@BDC ST2\r\n\x03\0\x01\x01\x04"s, "before"},
        {"@BDC ST\r\nST:04;", "Online"},
        {"@BDC ST2\r\n", "Online"},
        {"@BDC ST2\r\n\0\0\x01\x01\x04"s, "Online"},
        {"@BDC ST2\r\n\x03\x80\x01\x01\x04"s, "Online"},        // length below 0
        {"@@EJL \0\r@BDC ST2\r\n\x03\0\x01\x01\x02"s, "Busy"},  // NULs before the marker
        {"@BDC ST2\r\n\x03\0\x01\x01\x2A"s, "Unknown"},
        {"@BDC ST2\r\n\xFF\x7F\x01\x01\x04\x0F\x7F\x03\x01"s, "Idle"},  // lengths that lie
        {"@BDC ST2\r\n\x20\0\x01\xFF\x04\x0F\x04\x03\x01\x01\x05"s, "Online"},
        {"@BDC ST2\r\n\x20\0\x01\0\x0F\0"s, "Online"},                        // empty fields
        {"@BDC ST2\r\n\x03\0\x01\x01\x04\x0F\x04\x03\x01\x01\x05"s, "Idle"},  // past the payload
    };
    for (const auto& c : cases) {
        const auto p = parsedST2(c.reply);
        EXPECT_EQ(p.result, 0) << c.reply;
        EXPECT_EQ(p.status.view(), c.status) << c.reply;
        EXPECT_EQ(p.record.count, 0);
    }
}

TEST(ParseST2, NoMoreThanTwentyInks) {
    std::string field = "\x03";
    for (int i = 0; i < 42; ++i) field += "\x01\x01\x05";
    const auto p = parsedST2("@BDC ST2\r\n\x81\0\x0F\x7F"s + field);
    EXPECT_EQ(p.result, 20);
    EXPECT_EQ(p.record.count, 20);
}

TEST(ParseBDCST, AllFields) {
    const auto p =
        parsedBDCST("@BDC ST\r\nST:04;ER:06;IQ:3C2A1F50;WR:02;RV:0123456789abcdefghijk;");
    EXPECT_EQ(p.result, 4);
    EXPECT_EQ(p.inks(), (std::vector<InkEntry>{{1, 60}, {4, 42}, {5, 31}, {6, 80}}));
    EXPECT_EQ(p.status.view(), "Idle");
    EXPECT_EQ(p.error.view(), "Paper out");
    EXPECT_EQ(p.warning.view(), "Magentaam");
    EXPECT_EQ(p.revision.view(), "0123456789abcdefgh");
}

TEST(ParseBDCST, CountsAndColors) {
    EXPECT_EQ(parsedBDCST("@BDC ST\rIQ:010203040506;").inks(),
              (std::vector<InkEntry>{{1, 1}, {4, 2}, {5, 3}, {6, 4}, {7, 5}, {8, 6}}));
    EXPECT_EQ(parsedBDCST("@EJL @BDC ST\rIQ:0A0B0C;").inks(),
              (std::vector<InkEntry>{{0, 10}, {0, 11}, {0, 12}}));

    const auto preset = parsedBDCST("@BDC ST\rIQ:3C2A1F50;", 6);
    EXPECT_EQ(preset.result, 4);
    EXPECT_EQ(preset.record.count, 6);
    EXPECT_EQ(parsedBDCST("@BDC ST\rST:04;", 6).record.count, 6);

    const auto crowd = parsedBDCST("@BDC ST\rIQ:" + std::string(400, '1') + ";");
    EXPECT_EQ(crowd.result, 20);
    EXPECT_EQ(crowd.record.count, 20);
    EXPECT_EQ(parsedBDCST("@BDC ST\rIQ:3C2A").result, 0);  // cut off
}

TEST(ParseBDCST, MarkersOnlyAsTheLastText) {
    EXPECT_EQ(parsedBDCST("@BDC ST\rIQ:3CWE\0;"s).inks()[1].level, kLevelWaitingExchange);
    EXPECT_NE(parsedBDCST("@BDC ST\rIQ:3CWE;").inks()[1].level, kLevelWaitingExchange);
}

TEST(ParseBDCST, TextsLeftAlone) {
    const auto unknown = parsedBDCST("@BDC ST\rST:05;ER:02;WR:06;");
    EXPECT_EQ(unknown.status.view(), "Online");
    EXPECT_EQ(unknown.error.view(), "before");
    EXPECT_EQ(unknown.warning.view(), "before");
    // "/:" would come to 0 if it were taken for digits.
    EXPECT_EQ(parsedBDCST("@BDC ST\rST:/:;").status.view(), "Online");
    EXPECT_EQ(parsedBDCST("@BDC ST\rST:0").status.view(), "Online");
    EXPECT_EQ(parsedBDCST("BDC ST\rST:04;").status.view(), "Online");
    EXPECT_EQ(parsedBDCST("@BDC ST\rRV:12").revision.view(), "12");
}

TEST(ParseBDCPS, StatusByte) {
    const auto parsed = [](const std::string& reply) { return parseBDCPS(asBytes(reply)); };
    EXPECT_EQ(parsed("@BDC PS\r\nST:04;"), static_cast<std::uint8_t>('0' * 10 + '4'));
    EXPECT_EQ(parsed("@BDC PS\r\nST:04;SM:12;"), static_cast<std::uint8_t>('1' * 10 + '2'));
    EXPECT_EQ(parsed("@BDC PS\r\nST:04;SM:1;"), static_cast<std::uint8_t>('0' * 10 + '4'));
    for (const char* reply : {"", "@BDC PS\n", "@BDC PS\rST:", "@BDC PS\rST:4", "@BDC PS\rST:;4"}) {
        EXPECT_EQ(parsed(reply), 0) << reply;
    }
}

// A laser reply whose byte at offset n is n, but for the format and the status code.
std::string laserReply(std::uint8_t format, std::size_t size, const std::string& code = "03EA") {
    std::vector<std::uint8_t> bytes(size);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i);
    bytes[0] = format;
    return "@EJL STATUS CODE=" + hexOf(bytes).replace(4, 4, code);
}

struct Laser : Parsed {
    std::uint32_t extra = 99;
    explicit Laser(const std::string& reply) {
        record.count = 3;
        result = parseEJLStatusCode(asBytes(reply), status, record, extra);
    }
};

TEST(ParseEJL, EveryFormat) {
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
        {1, 0x06070809, color},  {17, 0x06070809, color},   {33, 0x14151617, black},
        {34, 0x14151617, black}, {65, 0x14151617, black},   {49, 0x14151617, oil},
        {50, 0x14151617, oil},   {81, 0x34353637, longOil}, {97, 0x2C2D2E2F, drums},
        {98, 0x2C2D2E2F, drums}, {99, 0x2C2D2E2F, drums},
    };
    for (const auto& c : cases) {
        const Laser p(laserReply(c.format, 70));
        EXPECT_EQ(p.result, static_cast<int>(c.inks.size())) << int{c.format};
        EXPECT_EQ(p.inks(), c.inks) << int{c.format};
        EXPECT_EQ(p.extra, c.extra) << int{c.format};
        EXPECT_EQ(p.status.view(), "Busy");
    }
}

TEST(ParseEJL, AbsentSuppliesAndShortReplies) {
    std::string reply = laserReply(33, 30);
    reply.replace(reply.size() - 4, 4, "FFFF");
    EXPECT_EQ(Laser(reply).inks(),
              (std::vector<InkEntry>{{1, -1}}));  // the black one always, as meant
    EXPECT_EQ(Laser(laserReply(33, 29)).inks(), (std::vector<InkEntry>{{1, 28}}));

    const struct {
        std::string reply;
        const char* status;
    } none[] = {
        {"", ""},
        {"@EJL STATUS CODE=", ""},
        {"@EJL STATUS CODE=0100", ""},
        {laserReply(33, 28), "Busy"},
        {laserReply(2, 70), "Busy"},
        {laserReply(1, 4, "1770"), "Service Call Error"},
        {laserReply(1, 4, "FFFF"), "Unknown status"},
    };
    for (const auto& c : none) {
        const Laser p(c.reply);
        EXPECT_EQ(p.result, 0) << c.reply;
        EXPECT_EQ(p.record.count, 0) << c.reply;
        EXPECT_EQ(p.status.view(), c.status) << c.reply;
    }
    EXPECT_EQ(Laser("").extra, 0U);
}

TEST(EpsonWords, LengthOfALaserStatus) {
    StatusText text("something longer than the words that follow");
    EXPECT_EQ(statusCodeToString(4014, text), 20U);
    EXPECT_EQ(text.view(), "Illegal AUX I/F Card");
}

TEST(ParseEpsonReply, PicksTheParserByMarker) {
    const auto parsed = [](const std::string& reply) {
        Parsed p;
        p.result = parseEpsonReply(asBytes(reply), p.status, p.record, -7);
        return p;
    };
    EXPECT_EQ(parsed("@BDC ST2\r\n\x06\0\x0F\x04\x03\x01\x01\x05"s).result, 1);
    EXPECT_EQ(parsed(laserReply(33, 30)).result, 2);
    EXPECT_EQ(parsed("@BDC ST\r\nIQ:3C2A1F50;").result, 4);
    // The binary marker goes first, wherever it stands.
    EXPECT_EQ(parsed("@BDC ST\r\nIQ:3C2A1F50;@BDC ST2").result, 0);
    EXPECT_EQ(parsed("@BDC PS\r\nST:04;").result, -7);
    EXPECT_EQ(parsed("").result, -7);
}

}  // namespace
}  // namespace tintoral
