#include "records/model_table.h"

#include <gtest/gtest.h>

#include "records/model_merge.h"
#include "support/temporary_folder.h"

namespace tintoral {
namespace {

Dictionary model(const char* name) {
    return Dictionary{{"name", name}};
}

TEST(ModelTable, FindsByNameSeriesAndOneAlias) {
    const ModelTable table(Dictionary{{"HP A", model("A")},
                                      {"HP B series", model("B")},
                                      {"HP alias", "HP A"},
                                      {"HP alias of alias", "HP alias"},
                                      {"HP number", 5},
                                      {"HP number series", model("behind the number")}});
    const std::pair<const char*, const char*> cases[] = {
        {"HP A", "A"},
        {"HP B", "B"},
        {"HP B series plus", ""},  // no " series" is added to the part before it
        {"HP alias series", "A"},
        {"HP alias of alias", ""},
        {"HP number", "behind the number"},
    };
    for (const auto& [key, name] : cases) {
        const Dictionary* entry = table.find(key);
        EXPECT_EQ(entry ? entry->text("name") : "", name) << key;
    }
}

TEST(ModelTable, IsEmptyWithOneLineWhereTheFileIsNoUse) {
    const test::TemporaryFolder folder;
    test::writeFile(folder / "damaged", "<plist><dict>");
    test::writeFile(folder / "array", formatPropertyList(Array{1}));
    for (const char* name : {"missing", "damaged", "array"}) {
        testing::internal::CaptureStderr();
        EXPECT_TRUE(ModelTable::load(folder / name).entries().empty());
        const std::string line = testing::internal::GetCapturedStderr();
        EXPECT_EQ(line.find('\n'), line.size() - 1) << line;
    }
}

TEST(ModelMerge, ReplacesTheCommandTypeByItsLopsidedRules) {
    // recorded, listed, afterwards; an empty text stands for an absent key
    const char* const cases[][3] = {
        {"", "RC", "RC"},     {"", "", ""},         {"RC1", "RC", "RC"}, {"RC1", "D4", "D4"},
        {"RC1", "", "RC1"},   {"RC", "D4", "D4"},   {"RC1", "X", "RC1"}, {"RC", "RC1", "RC"},
        {"RC0", "RC", "RC0"}, {"RC0", "D4", "RC0"}, {"D4", "RC", "D4"},
    };
    for (const auto& [recorded, listed, afterwards] : cases) {
        PrinterRecord record{{"makerName", "EPSON"}, {"modelName", "X"}};
        if (*recorded) record.set(keys::commandType, recorded);
        Dictionary entry;
        if (*listed) entry.set(model_keys::commandType, listed);
        updatePrinterDict(record, ModelTable(Dictionary{{"EPSON X", entry}}));
        EXPECT_EQ(record.text(keys::commandType), afterwards) << recorded << " / " << listed;
        EXPECT_EQ(record.contains(keys::commandType), *afterwards != '\0');
    }
}

TEST(ModelMerge, TakesColorsAndMaintenanceCommandsFromTheEntry) {
    const Array options{"Nozzle Cleaning", "Cleaning and Test Print", 5};
    const ModelTable table(
        Dictionary{{"HP X", Dictionary{{"Colors", Array{"Black"}}, {"options", options}}},
                   {"HP bare", Dictionary{{"Colors", "not an array"}}}});
    const PrinterRecord names{{"makerName", "HP"}, {"modelName", "X"}};
    const auto with = [&](const Dictionary& values) {
        PrinterRecord record = names;
        for (const auto& [key, value] : values) record.set(key, value);
        return record;
    };
    const PrinterRecord before =
        with({{"Colors", Array{"Old"}}, {"printNozzleCheckPattern", "YES"}});
    const std::pair<const char*, PrinterRecord> cases[] = {
        {"HP X", with({{"Colors", Array{"Black"}},
                       {"nozzleCleaning", "YES"},
                       {"cleaningAndTestPrint", "YES"}})},
        {"HP bare", with({{"Colors", Array{"Old"}}})},
        {"HP unknown", with({{"Colors", Array{"Old"}}})},
    };
    for (const auto& [key, expected] : cases) {
        PrinterRecord record = before;
        updatePrinterDict(record, table, key);
        EXPECT_EQ(record, expected) << key;
    }
}

}  // namespace
}  // namespace tintoral
