#include "records/model_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <vector>

#include "ink/color_vocabulary.h"
#include "records/maintenance_items.h"
#include "records/model_merge.h"
#include "support/temporary_folder.h"
#include "vendors/canon.h"
#include "vendors/epson.h"
#include "vendors/hp.h"

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

// Whether a maintenance option reaches a printer of the maker as the bytes that it promises. HP has
// the cleaning command alone, and sends it whatever the option.
bool isSent(std::string_view maker, int option) {
    std::array<std::uint8_t, 256> job{};
    if (maker == "EPSON") return mkEpsonNozzleOption(job, "", option) > 0;
    if (maker == "Canon") return mkCanonNozzleOption(job, option) > 0;
    return maker == "HP" && option == kOptionCleaning && mkHPCleaningCmd("MLC,PCL,PML", job) > 0;
}

bool isOption(std::string_view maker, const std::string& title) {
    return std::ranges::any_of(kMaintenanceItems, [&](const MaintenanceItem& item) {
        return item.title == title && isSent(maker, item.option);
    });
}

bool isCommandType(std::string_view maker, const std::string& type) {
    using namespace epson_commands;
    constexpr std::array kTypes{d4, rc, rc1, rc0};
    return maker == "EPSON" && std::ranges::find(kTypes, type) != kTypes.end();
}

void expectSoundColors(const std::vector<std::string>& colors) {
    EXPECT_TRUE(!colors.empty() && colors.size() <= InkQuantities::kCapacity);
    EXPECT_EQ(std::set(colors.begin(), colors.end()).size(), colors.size()) << "a colour twice";
    for (const std::string& color : colors) {
        EXPECT_EQ(colorNameByColorID(colorIDByColorName(color)), color);
    }
}

void expectSoundEntry(std::string_view maker, const Dictionary& entry) {
    for (const auto& [key, value] : entry) {
        if (key == model_keys::commandType) {
            EXPECT_TRUE(isCommandType(maker, entry.text(key))) << entry.text(key);
        } else if (key == keys::colors) {
            expectSoundColors(entry.texts(key).value_or(std::vector<std::string>()));
        } else {
            EXPECT_EQ(key, model_keys::options);
            const auto titles = entry.texts(key).value_or(std::vector<std::string>());
            EXPECT_FALSE(titles.empty());
            for (const auto& title : titles) EXPECT_TRUE(isOption(maker, title)) << title;
        }
    }
}

TEST(ShippedModelTable, SaysOnlyWhatTheProgramCanUse) {
    const ModelTable table = ModelTable::load(TINTORAL_MODEL_TABLE);
    EXPECT_GE(table.entries().size(), 300U);
    for (const auto& [name, value] : table.entries()) {
        SCOPED_TRACE(name);
        const std::string maker = name.substr(0, name.find(' '));
        EXPECT_TRUE(std::set<std::string>({"Brother", "Canon", "EPSON", "HP"}).contains(maker));
        const auto* alias = value.as<std::string>();
        const Value* target = alias ? table.entries().find(*alias) : &value;
        const auto* entry = target ? target->as<Dictionary>() : nullptr;
        ASSERT_NE(entry, nullptr) << "no entry within one step";
        expectSoundEntry(maker, *entry);
    }
}

// What a record is called and what it is called in the table meet.
TEST(ShippedModelTable, KnowsTheModelsUnderTheNamesOfTheirRecords) {
    const ModelTable table = ModelTable::load(TINTORAL_MODEL_TABLE);
    for (const char* name :
         {"EPSON Stylus Photo R300", "EPSON Stylus COLOR 740", "EPSON XP-520 Series",
          "Canon iP4300", "Canon MG5200 series", "Canon MG5200", "HP deskjet 5550",
          "HP Deskjet 5550", "HP Photosmart C5100 series", "Brother HL-5250DN"}) {
        EXPECT_NE(table.find(name), nullptr) << name;
    }
}

}  // namespace
}  // namespace tintoral
