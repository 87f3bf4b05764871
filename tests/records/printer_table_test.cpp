#include "records/printer_table.h"

#include <gtest/gtest.h>

#include "support/temporary_folder.h"
#include "support/test_clock.h"

namespace tintoral {
namespace {

using std::chrono::days;
using std::chrono::seconds;

Dictionary seen(const char* id, seconds ago) {
    return Dictionary{{"printerId", id}, {"Date", currentDate() - ago}, {"unknown key", 1}};
}

std::string idsOf(const PrinterTable& table) {
    std::string ids;
    for (const auto& printer : table) ids += printer->text(keys::printerId) + " ";
    return ids;
}

TEST(PrinterTable, KeepsGoodRecordsInOrderAndForgetsThoseNotSeenFor91Days) {
    test::TestClock clock;
    const ScopedClock scope(clock);
    const test::TemporaryFolder folder;
    UserDefaults defaults(folder / "file");
    defaults.setPrinterTable(
        Array{seen("selected", days(4000)), "no dictionary", Dictionary{{"modelName", "no id"}},
              seen("91-days", days(91)), Dictionary{{"printerId", 5}}, seen("", days(0)),
              seen("almost", days(91) - seconds(1)), seen("future", -days(4000)),
              Dictionary{{"printerId", "dateless"}, {"makerName", "HP"}, {"modelName", "X"}}});
    PrinterTable table = loadPrinterTable(defaults);
    EXPECT_EQ(idsOf(table), "selected 91-days almost future dateless ");

    const ModelTable models(Dictionary{{"HP X", Dictionary{{"CommandType", "D4"}}}});
    prunePrinterTable(table, "selected", models);
    EXPECT_EQ(idsOf(table), "selected almost future dateless ");
    EXPECT_EQ(table.back()->text(keys::commandType), "D4") << "merged on the way";
    EXPECT_EQ(findPrinter(table, "almost"), table[1]) << "shared, not copied";
    EXPECT_TRUE(table[1]->contains("unknown key"));

    removePrinter(table, "future");
    storePrinterTable(table, defaults);
    EXPECT_EQ(idsOf(loadPrinterTable(defaults)), "selected almost dateless ");
}

}  // namespace
}  // namespace tintoral
