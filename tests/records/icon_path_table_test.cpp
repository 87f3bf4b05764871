#include "records/icon_path_table.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <map>

#include "support/temporary_folder.h"

namespace tintoral {
namespace {

IconPathEntry read(std::string_view ppd) {
    IconPathEntry entry;
    readPpdLines(ppd, entry);
    return entry;
}

TEST(ReadPpdLines, TakesTheLastOfTheFirst100Lines) {
    const IconPathEntry entry = read(
        "*PPD-Adobe: \"4.3\"\r\n*ModelName: \"Old\"\r\n  *ModelName:\"EPSON R300\" \"more\"\r\n"
        "*APPrinterIconPath: \"/usr/share/icon.png\"");
    EXPECT_EQ(entry.modelname, "EPSON R300");
    EXPECT_EQ(entry.iconPath, "/usr/share/icon.png");
    const std::pair<std::string, std::optional<std::string>> cases[] = {
        {"*ModelName: \"A\"\n*ModelName: B", std::nullopt},
        {"*ModelName: \"split\nover lines\"", std::nullopt},
        {std::string(99, '\n') + "*ModelName: \"A\"", "A"},
        {std::string(100, '\n') + "*ModelName: \"A\"", std::nullopt},
        {"*ModelName: \"Caf\xE9 \x1B[2J\"", "Caf\xC3\xA9 [2J"},
    };
    for (const auto& [ppd, name] : cases) EXPECT_EQ(read(ppd).modelname, name) << ppd;
}

TEST(IconPathTable, HasAnEntryForWhateverLiesInTheFolder) {
    const test::TemporaryFolder folder;
    test::writeFile(folder / "R300.ppd", "*ModelName: \"EPSON R300\"\n");
    test::writeFile(folder / "long.ppd", std::string(40000, '*') + "\n*ModelName: \"too far\"\n");
    std::filesystem::create_directory(folder / "folder");
    ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0600), 0);
    std::map<std::string, IconPathEntry> table;
    for (const auto& entry : makeIconPathTable(folder.path())) table[entry.queuename] = entry;
    EXPECT_EQ(table.size(), 4U);
    EXPECT_EQ(table["R300.ppd"].modelname, "EPSON R300");
    EXPECT_EQ(table["R300.ppd"].path, folder / "R300.ppd");
    for (const char* name : {"long.ppd", "folder", "fifo"})
        EXPECT_EQ(table[name].modelname, std::nullopt) << name;
    EXPECT_TRUE(makeIconPathTable(folder / "missing").empty());
}

}  // namespace
}  // namespace tintoral
