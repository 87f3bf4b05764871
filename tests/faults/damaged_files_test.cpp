// What the program makes of its own files when they are damaged at any place.
#include <gtest/gtest.h>

#include "history/ink_history_store.h"
#include "monitor/record_rules.h"
#include "records/printer_table.h"
#include "support/temporary_folder.h"

namespace tintoral {
namespace {

namespace fs = std::filesystem;
using test::readFile;
using test::writeFile;

struct Damage {
    std::string content;
    bool isCut;
    std::size_t at;
};

// The file cut at each length, and with each byte in turn flipped or cleared.
std::vector<Damage> everyDamage(const std::string& whole) {
    std::vector<Damage> damages;
    for (std::size_t at = 0; at < whole.size(); ++at) {
        damages.push_back({whole.substr(0, at), true, at});
        for (const char other : {char(whole[at] ^ 1), '\0'}) {
            damages.push_back({whole, false, at});
            damages.back().content[at] = other;
        }
    }
    return damages;
}

Dictionary reading(int black) {
    return {{"Black", black}, {"Colors", Array{"Black"}}, {"Date", Date()}};
}

void saveSettings(const fs::path& path) {
    UserDefaults defaults(path);
    PrinterTable table;
    for (const char* id : {"USB:EPSON Stylus C64", "Network:Bureau d'été <3>"}) {
        table.push_back(std::make_shared<PrinterRecord>(
            PrinterRecord{{"printerId", id}, {"inkDict", reading(20)}, {"Date", Date()}}));
    }
    storePrinterTable(table, defaults);
    defaults.setPrinterId("USB:EPSON Stylus C64");
    ASSERT_TRUE(defaults.synchronize());
}

TEST(DamagedFiles, SettingsAreReadOrKeptAsideByteForByte) {
    const test::TemporaryFolder folder;
    const auto path = folder / "Tintoral.plist";
    const auto aside = folder / "Tintoral.plist.damaged";
    saveSettings(path);
    int read = 0;
    testing::internal::CaptureStderr();
    for (const auto& [content, isCut, at] : everyDamage(readFile(path))) {
        writeFile(path, content);
        const UserDefaults defaults(path);
        PrinterTable table = loadPrinterTable(defaults);
        for (const auto& printer : table) levelsAreStale(*printer, currentDate());
        if (isCut) {  // whole, or nothing: never the first printers alone
            EXPECT_EQ(table.size(), defaults.printerId().empty() ? 0U : 2U) << at;
        }
        read += fs::exists(path) ? 1 : 0;
        EXPECT_EQ(readFile(fs::exists(path) ? path : aside), content) << at;
        EXPECT_EQ(fs::exists(aside), !fs::exists(path)) << at;
        fs::remove(aside);
    }
    testing::internal::GetCapturedStderr();
    EXPECT_GT(read, 100) << "a damaged text is no damaged file";
}

TEST(DamagedFiles, AHistoryIsReadOrKeptAsideWhenItGrows) {
    const test::TemporaryFolder home;
    const test::ScopedEnvironment variable("HOME", home.path());
    prepareHistoryFolder();
    const auto path = historyFolder() / "X";
    const auto aside = home / "library/Application Support/Tintoral damaged/X.damaged";
    for (int i = 0; i < 3; ++i) ASSERT_TRUE(saveInkReadingsForPrinterId(reading(90 - i), "X"));
    testing::internal::CaptureStderr();
    for (const auto& [content, isCut, at] : everyDamage(readFile(path))) {
        writeFile(path, content);
        const auto history = inkHistory("X");
        const auto last = lastLevelForPrinterId("X");
        EXPECT_FALSE(isCut && (history || last)) << at;
        if (at % 8 != 0) continue;  // each of them waits for the disk
        EXPECT_TRUE(saveInkReadingsForPrinterId(reading(1), "X"));
        EXPECT_EQ(inkHistory("X")->size(), history ? history->size() + 1 : 1) << at;
        EXPECT_EQ(lastLevelForPrinterId("X")->integer("Black"), 1);
        EXPECT_EQ(fs::exists(aside) ? readFile(aside) : content, content) << at;
        EXPECT_EQ(fs::exists(aside), !history) << at;
        fs::remove(aside);
    }
    testing::internal::GetCapturedStderr();
}

}  // namespace
}  // namespace tintoral
