#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>

#include <filesystem>

#include "support/file_replace.h"
#include "support/folders.h"
#include "support/hardships.h"
#include "support/property_list.h"
#include "support/report.h"
#include "support/temporary_folder.h"

namespace tintoral {
namespace {

namespace fs = std::filesystem;
using test::readFile;
using test::writeFile;

std::ptrdiff_t entriesIn(const fs::path& folder) {
    return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
}

TEST(ReplaceFile, ReplacesThroughLinksAndKeepsPermissions) {
    const test::TemporaryFolder folder;
    ASSERT_FALSE(replaceFile(folder / "new", "first"));
    EXPECT_EQ(fs::status(folder / "new").permissions(), fs::perms(0600));
    fs::permissions(folder / "new", fs::perms(0640));
    fs::create_symlink("new", folder / "link");
    ASSERT_FALSE(replaceFile(folder / "link", "second"));
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_EQ(readFile(folder / "new"), "second");
    EXPECT_EQ(fs::status(folder / "new").permissions(), fs::perms(0640));
}

TEST(ReplaceFile, LeavesTheOldFileWholeAndNoLitterWhenItFails) {
    const test::TemporaryFolder folder;
    writeFile(folder / "file", "old");
    {
        const test::FullDisk full;
        EXPECT_EQ(replaceFile(folder / "file", std::string(10000, 'x')), std::errc::file_too_large);
    }
    EXPECT_EQ(readFile(folder / "file"), "old");
    fs::create_directory(folder / "taken");
    EXPECT_EQ(replaceFile(folder / "taken", "x"), std::errc::is_a_directory);
    EXPECT_EQ(replaceFile(folder / "missing" / "file", "x"), std::errc::no_such_file_or_directory);
    EXPECT_EQ(entriesIn(folder.path()), 2);
}

TEST(ReadPropertyListFile, TellsAbsentUnreadableAndDamagedApart) {
    const test::TemporaryFolder folder;
    fs::create_directory(folder / "folder");
    ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0600), 0);
    writeFile(folder / "empty", "");
    writeFile(folder / "text", "no property list");
    fs::create_symlink("nowhere", folder / "dangling");
    fs::create_symlink("loop", folder / "loop");
    writeFile(folder / "large", "");
    fs::resize_file(folder / "large", (64 << 20) + 1);  // sparse
    const std::pair<const char*, FileState> cases[] = {
        {"missing", FileState::Absent},        {"dangling", FileState::Absent},
        {"folder", FileState::Unreadable},     {"fifo", FileState::Unreadable},
        {"loop", FileState::Unreadable},       {"empty", FileState::Damaged},
        {"text", FileState::Damaged},          {"large", FileState::Damaged},
        {"text/below", FileState::Unreadable},
    };
    for (const auto& [name, state] : cases) {
        const PropertyListFile file = readPropertyListFile(folder / name);
        EXPECT_EQ(file.state, state) << name;
        EXPECT_EQ(file.reason.empty(), state == FileState::Absent) << name;
    }
    ASSERT_FALSE(writePropertyListFile(folder / "text", Dictionary{{"k", -7}}));
    const PropertyListFile file = readPropertyListFile(folder / "text");
    EXPECT_EQ(file.state, FileState::Loaded);
    EXPECT_EQ(file.root, Value(Dictionary{{"k", -7}}));
}

TEST(KeepAside, NeverTakesANameThatIsInUse) {
    const test::TemporaryFolder folder;
    fs::create_symlink("nowhere", folder / "file.damaged");  // taken, though it leads nowhere
    for (const char* name : {"file.damaged-2", "file.damaged-3"}) {
        writeFile(folder / "file", name);
        EXPECT_EQ(keepAside(folder / "file"), folder / name);
        EXPECT_EQ(readFile(folder / name), name);
    }
    const std::string longest(255, 'n');
    writeFile(folder / longest, "kept");
    const auto aside = keepAside(folder / longest, folder / "made" / "for it");
    EXPECT_EQ(aside.parent_path(), folder / "made" / "for it");
    EXPECT_EQ(readFile(aside), "kept");
    EXPECT_TRUE(keepAside(folder / "absent").empty());
}

TEST(HomeFolder, ComesFromTheUserDatabaseOnlyWhereTheVariableNamesNone) {
    const test::TemporaryFolder folder;
    const test::ScopedEnvironment home("HOME", folder.path().string());
    EXPECT_EQ(homeFolder(), folder.path());
    {
        const test::ScopedEnvironment missing("HOME", folder / "missing");
        EXPECT_EQ(homeFolder(), "") << "never somebody's real home in its place";
    }
    const test::ScopedEnvironment relative("HOME", "relative");
    EXPECT_EQ(homeFolder(), ::getpwuid(::getuid())->pw_dir);
}

TEST(MakeFolders, MakesEachForItsOwnerAlone) {
    const test::TemporaryFolder folder;
    EXPECT_FALSE(makeFolders(folder / "a" / "b"));
    EXPECT_FALSE(makeFolders(folder / "a" / "b"));
    EXPECT_EQ(fs::status(folder / "a").permissions(), fs::perms(0700));
    writeFile(folder / "file", "");
    EXPECT_EQ(makeFolders(folder / "file" / "below"), std::errc::not_a_directory);
}

TEST(ReportLine, IsOneLine) {
    testing::internal::CaptureStderr();
    reportLine("name\nINFO: forged\x1B[2J");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Tintoral: nameINFO: forged[2J\n");
}

}  // namespace
}  // namespace tintoral
