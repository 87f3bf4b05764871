#include "filter/command_filter.h"

#include <gtest/gtest.h>

#include "filter/canned_reply.h"
#include "filter/filter_streams.h"
#include "history/ink_history_store.h"
#include "support/temporary_folder.h"
#include "support/test_clock.h"
#include "vendors/canon.h"
#include "vendors/epson.h"
#include "vendors/hp.h"

namespace tintoral {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;

// What a builder writes, as text.
template <typename Builder>
std::string built(Builder builder) {
    std::array<std::uint8_t, 512> buffer{};
    const std::size_t length = builder(MutableBytes(buffer));
    return std::string(asText(Bytes(buffer).first(length)));
}

const std::string kEpsonClean =
    built([](auto b) { return mkEpsonNozzleOption(b, "Stylus Photo R800", 1); });
const std::string kEpsonTest =
    built([](auto b) { return mkEpsonNozzleOption(b, "Stylus Photo R800", 2); });
const std::string kCanonClean = built([](auto b) { return mkCanonNozzleOption(b, 1); });
const std::string kCanonTest = built([](auto b) { return mkCanonNozzleOption(b, 2); });
const std::string kHpClean = built([](auto b) { return mkHPCleaningCmd("PJL,PML", b); });

std::string epsonExchange(int variant) {
    return built([&](auto b) { return mkEpsonStatusInquire(b, variant); }) +
           built([&](auto b) { return mkEpsonExitCmd(b, variant); });
}

class CommandFilterTest : public testing::Test {
  protected:
    CommandFilterTest() {
        test::writeFile(
            tablePath_,
            formatPropertyList(Dictionary{
                {"EPSON Two",
                 Dictionary{{"CommandType", "D4"}, {"Colors", Array{"Black", "CMY Color"}}}},
                {"EPSON Two alias", "EPSON Two"},
                {"EPSON Many", Dictionary{{"CommandType", "D4"}, {"Colors", Array(200, "K")}}},
                {"EPSON RC1", Dictionary{{"CommandType", "RC1"}}},
                {"EPSON other", Dictionary{{"CommandType", "RC9"}}},
                {"EPSON RC0 series", Dictionary{}},
                {"Canon iP4300", Dictionary{{"usb_CMD", "BJL,BJRaster3"}}},
                {"Canon MG", Dictionary{{"usb_CMD", "BJL,IVEC"}}},
                {"HP Deskjet", Dictionary{}},
            }));
    }

    // What a stream of commands sends to the printer; its attributes are left in attributes_.
    std::string printed(std::string_view maker, std::string_view model, std::string_view commands) {
        std::FILE* input = ::tmpfile();
        std::fwrite(commands.data(), 1, commands.size(), input);
        std::rewind(input);
        CommandFilter filter({"USB", std::string(maker), std::string(model)}, tablePath_,
                             {printer_.file(), attributes_.file(), threeInks});
        filter.run(input);
        std::fclose(input);
        std::fflush(attributes_.file());
        return printer_.take();
    }
    std::string reported(std::string_view model) {
        EXPECT_EQ(printed("EPSON", model, "ReportLevels\n"), "");
        return attributes_.take();
    }

    test::TemporaryFolder folder_;
    test::ScopedEnvironment home_{"HOME", folder_.path().string()};
    test::TestClock clock_;
    ScopedClock scopedClock_{clock_};
    std::filesystem::path tablePath_ = folder_ / "printers.xml";
    CapturedStream printer_;
    CapturedStream attributes_;
};

TEST_F(CommandFilterTest, FindsTheCommandInALine) {
    const std::string longLine(5000, 'x');
    std::string manyCleans;  // wherever a reader cuts this line, a command begins before long
    for (int i = 0; i < 1000; ++i) manyCleans += "  Clean";
    const struct {
        std::string lines;
        std::string expected;
    } cases[] = {
        {"Clean\n", kEpsonClean},
        {"\t \r\vCLEANX\r\n\n \nPrintSelfTestPage", kEpsonClean + kEpsonTest},
        {"  # Clean\n#Clean\n#CUPS-COMMAND\nClea\nxClean\nPrint Clean\n", ""},
        {"Clean\0all\n\0Clean\nprintselftestpage\0"s, kEpsonClean + kEpsonTest},
        {"#" + longLine + "\nClean" + longLine + "\n", kEpsonClean},
        {"#" + manyCleans + "\n" + std::string(1023, ' ') + "Clean\nPrintSelfTestPage\n",
         kEpsonTest},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(printed("EPSON", "Stylus Photo R800", row.lines), row.expected)
            << row.lines.substr(0, 40);
    }
}

TEST_F(CommandFilterTest, SendsEachMakerItsOwnJobs) {
    const std::string_view both = "Clean\nPrintSelfTestPage\n";
    EXPECT_EQ(printed("EPSON", "Stylus Photo R800", both), kEpsonClean + kEpsonTest);
    EXPECT_EQ(printed("Canon", "iP4300", both), kCanonClean + kCanonTest);
    EXPECT_EQ(printed("HP", "Deskjet", both), kHpClean);
    for (const char* other : {"", "Epson", "EPSON2", "canon", "Brother"})
        EXPECT_EQ(printed(other, "x", both), "") << other;
}

TEST_F(CommandFilterTest, AsksEachMakerForItsLevels) {
    const std::string_view command = "ReportLevelsNow\n";
    // Found as "EPSON RC0 series"; no command type means RC0.
    EXPECT_EQ(printed("EPSON", "RC0", command), epsonExchange(0));
    EXPECT_EQ(printed("EPSON", "RC1", command), epsonExchange(1));
    EXPECT_EQ(printed("EPSON", "other", command), epsonExchange(2));
    EXPECT_EQ(clock_.pauses(), (std::vector<std::chrono::microseconds>{500ms, 500ms, 500ms}));
    const std::string ask = built([](auto b) { return mkCanonStatusInquire("iP4300", b, ""); });
    EXPECT_EQ(printed("Canon", "iP4300", command), ask + "\x1B[K\x0B\0\0\x1E\0\x09SSR=DF;"s);
    // For "IVEC" only NULs go out, and no exit command, as meant.
    EXPECT_EQ(printed("Canon", "MG", command), std::string(358, '\0'));
    EXPECT_EQ(clock_.pauses().size(), 5U);
    EXPECT_EQ(printed("HP", "Deskjet", command), "");
    EXPECT_EQ(printed("EPSON", "not in the table", command), "");
    EXPECT_EQ(attributes_.take(), "");
}

TEST_F(CommandFilterTest, ReportsTheLevelsAndAddsThemToAHistoryThatExists) {
    EXPECT_EQ(reported("Two alias"),
              "ATTR: marker-colors=#000000,#0000FF marker-levels=40,75 "
              "marker-names=\"Black\",\"CMY Color\" marker-types=ink,ink\n");
    EXPECT_NE(reported("Many").find("marker-levels=40,75,7,100,"), std::string::npos);
    prepareHistoryFolder();
    saveInkReadingsForPrinterId({{"Black", 50}, {"Colors", Array{"Black"}}}, "USB:EPSON Two");
    clock_.advance(24h);
    reported("Two");
    const Array colors{"Black", "CMY Color"};
    EXPECT_EQ(lastLevelForPrinterId("USB:EPSON Two"),
              (Dictionary{
                  {"Black", 40}, {"CMY Color", 75}, {"Date", currentDate()}, {"Colors", colors}}));
}

TEST_F(CommandFilterTest, ReportsNothingWithoutAReply) {
    const Dictionary printer{
        {"makerName", "EPSON"}, {"CommandType", "D4"}, {"Colors", Array{"Black"}}};
    const std::pair<D4InkQuery, int> cases[] = {
        {[](MutableBytes) { return 0; }, -1},
        {[](MutableBytes) { return 512; }, -1},  // the channel's failure: a length, but no reply
        {[](MutableBytes) { return 1 << 30; }, -1},  // more than the buffer holds
        {[](MutableBytes reply) {
             return int(ByteWriter(reply).text("@BDC ST2\r\n").le16(0).finish());
         },
         0},
    };
    for (const auto& [query, result] : cases) {
        EXPECT_EQ(
            ReportLevels(&printer, "USB:EPSON x", {printer_.file(), attributes_.file(), query}),
            result);
    }
    EXPECT_EQ(ReportLevels(nullptr, "USB: ", {printer_.file(), attributes_.file(), threeInks}), -1);
    std::fflush(attributes_.file());
    EXPECT_EQ(attributes_.take() + printer_.take(), "");
}

TEST(D4InkQuery, AsksForPacketModeOnStandardOutputInVain) {
    testing::internal::CaptureStdout();
    std::array<std::uint8_t, 4096> reply{};
    EXPECT_EQ(FilterPorts().d4InkQuery(reply), 512);  // no channel
    const std::string sent = testing::internal::GetCapturedStdout();
    EXPECT_TRUE(sent.starts_with("\0\0\0\x1B\x01@EJL 1284.4\n@EJL\n@EJL\n"s));
    EXPECT_EQ(sent.size() % 5, 0U);  // five times the same
}

TEST(ConnectionKind, FollowsTheScheme) {
    const std::pair<const char*, const char*> cases[] = {
        {"USB", "USB"},           {"usbx", "usbx"},  {"RioUSB", "AirPort"}, {"dnssd", "AirPort"},
        {"xDNSSDipp", "AirPort"}, {"ippLPD", "ipp"}, {"lpd", "Network"},    {"", ""},
    };
    for (const auto& [scheme, kind] : cases) EXPECT_EQ(connectionKind(scheme), kind);
}

}  // namespace
}  // namespace tintoral
