#include "diagnostics/report.h"

#include <gtest/gtest.h>

#include "support/hex_dump.h"

namespace tintoral {
namespace {

const ReportHead kHead{"1.2", "Some\nSystem",
                       std::chrono::sys_days{std::chrono::year{2026} / 3 / 14}};

std::string dumpOf(std::string_view bytes) {
    FixedText<4096> dump;
    sDumpPacket(dump, asBytes(bytes));
    return std::string(dump.view());
}

bool holds(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

TEST(DiagnosticReport, HeadAndRecordStayOneLineEachWhateverThePrinterSays) {
    PrinterRecord printer{{"printerName", "Evil\nPhase 9: all well\x1B[2J"},
                          {"Colors", std::vector<std::string>{"Cyan", "Bl\nack"}},
                          {"port", 9100},
                          {"Date", kHead.time},
                          {"inkDict", Dictionary{{"Cyan", 40}}}};
    EXPECT_EQ(diagnosticReport(kHead, printer, "\nPhase 1: x\nA\n", SerialNumbers::Shown),
              "Tintoral 1.2\nSystem: SomeSystem\nTime: 2026-03-14 00:00:00 UTC\nPrinter:\n"
              "  Colors: [Cyan, Black]\n  Date: 2026-03-14 00:00:00 UTC\n  inkDict: {Cyan: 40}\n"
              "  port: 9100\n  printerName: EvilPhase 9: all well[2J\n\nPhase 1: x\nA\n");
}

TEST(DiagnosticReport, SerialNumbersAreLeftOutOfTextsAndDumps) {
    const PrinterRecord printer{{"serialID", "X7"},
                                {"usb_S", "MDL:C84;sern:QQ42ZZ;VSN:keep;STATE:ok"}};
    // The field goes over three lines of the dump.
    const std::string dump = dumpOf("MFG:EPSON;SN:0123456789ABCDEFGHIJKLMNOP;CLS:PRINTER;");
    const std::string phases = "Device ID = SN:AB1234;MDL:C84;\n" + dump + "ID 'SERN:55'\n";
    const auto hidden = diagnosticReport(kHead, printer, phases, SerialNumbers::Hidden);
    const auto shown = diagnosticReport(kHead, printer, phases, SerialNumbers::Shown);
    const std::string masked = "SN:" + std::string(26, '*') + ";CLS:PRINTER;";
    EXPECT_TRUE(holds(hidden, dumpOf("MFG:EPSON;" + masked))) << hidden;
    EXPECT_TRUE(holds(shown, dump));
    EXPECT_TRUE(holds(hidden, "SN:******;MDL:C84;"));
    EXPECT_TRUE(holds(hidden, "ID 'SERN:**'"));
    EXPECT_TRUE(holds(hidden, "sern:******;VSN:keep;STATE:ok"));
    EXPECT_TRUE(holds(hidden, "serialID: (left out)\n"));
    EXPECT_TRUE(holds(shown, "serialID: X7\n"));
}

TEST(DiagnosticReport, TheRecordsSerialNumberIsHiddenWhereverItStands) {
    const PrinterRecord printer{{"serialID", "VNB3K12345"}, {"hostName", "hp-VNB3K12345.local"}};
    const std::string dump = dumpOf("0123456789/VNB3K12345/");
    const std::string phases = "1.3.6 = 'VNB3K12345'\n" + dump + dump;
    const auto hidden = diagnosticReport(kHead, printer, phases, SerialNumbers::Hidden);
    EXPECT_FALSE(holds(hidden, "3K12345"));
    const std::string masked = dumpOf("0123456789/**********/");
    EXPECT_TRUE(holds(hidden, "hp-**********.local"));
    EXPECT_TRUE(holds(hidden, masked + masked)) << hidden;
    const PrinterRecord stars{{"serialID", "****"}};
    EXPECT_TRUE(holds(diagnosticReport(kHead, stars, "****\n", SerialNumbers::Hidden), "\n****\n"));
}

TEST(DiagnosticMail, BodyIsCutBetweenCharactersAndNamesTheFile) {
    EXPECT_EQ(mailBody(std::string(1800, 'x'), "/tmp/r.txt"), std::string(1800, 'x'));
    const std::string ending =
        "\n\nThe whole report is in the file /tmp/r.txt; please attach it to this mail.\n";
    for (const std::size_t shift : {0U, 1U}) {  // one of the two cuts falls into a character
        std::string report(shift, 'x');
        while (report.size() < 4000) report += "\u00E9";
        const std::string body = mailBody(report, "/tmp/r.txt");
        EXPECT_TRUE(body.ends_with(ending));
        const std::size_t kept = body.size() - ending.size();
        EXPECT_EQ(kept % 2, shift);
        EXPECT_LE(body.size(), kLongestMailBody);
        EXPECT_GE(body.size(), kLongestMailBody - 1);
    }
    const auto longPath = "/" + std::string(200, 'a') + "/" + std::string(200, 'b');
    const std::string body = mailBody(std::string(1801, 'x'), longPath);
    EXPECT_LE(body.size(), kLongestMailBody);
    EXPECT_TRUE(holds(body, " file " + std::string(200, 'b') + ";"));
}

TEST(DiagnosticMail, UrlIsPercentEncoded) {
    EXPECT_EQ(mailtoUrl("help+ink@example.com", "50% & more?", "a\nb\r\n\u00E9=#"),
              "mailto:help%2Bink@example.com?subject=50%25%20%26%20more%3F"
              "&body=a%0D%0Ab%0D%0A%C3%A9%3D%23");
}

}  // namespace
}  // namespace tintoral
