#include "records/printer_table.h"

#include <gtest/gtest.h>

#include "support/temporary_folder.h"
#include "support/test_clock.h"

namespace tintoral {
namespace {

PrinterRecordPtr record(const char* id) {
    return std::make_shared<PrinterRecord>(Dictionary{{"printerId", id}, {"modelName", "X"}});
}

PrinterRecordPtr recordSeen(const char* id, std::chrono::seconds ago) {
    auto seen = record(id);
    seen->set(keys::date, currentDate() - ago);
    return seen;
}

std::string idsOf(const PrinterTable& table) {
    std::string ids;
    for (const auto& printer : table) ids += printer->text(keys::printerId) + " ";
    return ids;
}

TEST(PrinterTable, KeepsGoodRecordsInOrderThroughTheSettings) {
    const test::TemporaryFolder folder;
    UserDefaults defaults(folder / "file");
    defaults.setPrinterTable(Array{*record("b"), "no dictionary",
                                   Dictionary{{"modelName", "no id"}}, Dictionary{{"printerId", 5}},
                                   Dictionary{{"printerId", ""}},
                                   Dictionary{{"printerId", "a"}, {"unknown key", Array{1}}}});
    PrinterTable table = loadPrinterTable(defaults);
    EXPECT_EQ(idsOf(table), "b a ");
    table.push_back(record("c"));
    removePrinter(table, "b");
    storePrinterTable(table, defaults);
    EXPECT_EQ(idsOf(loadPrinterTable(defaults)), "a c ");
    ASSERT_TRUE(findPrinter(table, "a"));
    EXPECT_TRUE(findPrinter(table, "a")->contains("unknown key"));
    EXPECT_EQ(findPrinter(table, "a"), table[0]) << "records are shared, not copied";
    EXPECT_EQ(findPrinter(table, "b"), nullptr);
}

TEST(PrinterTable, ForgetsWhatWasNotSeenForMoreThan90WholeDays) {
    test::TestClock clock;
    const ScopedClock scope(clock);
    using std::chrono::days;
    using std::chrono::seconds;
    PrinterTable table{recordSeen("selected", days(4000)), recordSeen("91-days", days(91)),
                       recordSeen("almost-91", days(91) - seconds(1)),
                       recordSeen("in-the-future", -days(4000)), record("without-date")};
    table.back()->set("makerName", "HP");
    const ModelTable models(Dictionary{{"HP X", Dictionary{{"CommandType", "D4"}}}});
    prunePrinterTable(table, "selected", models);
    EXPECT_EQ(idsOf(table), "selected almost-91 in-the-future without-date ");
    EXPECT_EQ(table.back()->text(keys::commandType), "D4") << "merged on the way";
    prunePrinterTable(table, "", models);
    EXPECT_EQ(idsOf(table), "almost-91 in-the-future without-date ");
}

}  // namespace
}  // namespace tintoral
