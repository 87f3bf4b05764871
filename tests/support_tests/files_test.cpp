#include <fcntl.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <atomic>
#include <filesystem>
#include <thread>

#include "support/file_replace.h"
#include "support/folders.h"
#include "support/hardships.h"
#include "support/property_list.h"
#include "support/temporary_folder.h"
#include "support/unique_fd.h"

namespace tintoral {
namespace {

namespace fs = std::filesystem;
using test::readFile;
using test::writeFile;

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
    EXPECT_EQ(replaceFile(folder / "missing" / "file", "x"), std::errc::no_such_file_or_directory);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 1);
}

TEST(ReplaceFile, RemovesWhatAKilledWriterLeftAndNothingElse) {
    const test::TemporaryFolder folder;
    for (const char* name : {".tintoral-killed", ".tintoral-inWork", ".tintoral-too-long", "other"})
        writeFile(folder / name, "x");
    fs::create_directory(folder / ".tintoral-folder");
    fs::create_symlink("other", folder / ".tintoral-linked");
    const UniqueFd writer(::open((folder / ".tintoral-inWork").c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_EQ(::flock(writer.get(), LOCK_EX), 0);
    ASSERT_FALSE(replaceFile(folder / "file", "new"));
    EXPECT_FALSE(fs::exists(folder / ".tintoral-killed"));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 6);
}

TEST(ReplaceFile, WritersInOneFolderLeaveEachOthersTemporaryFilesAlone) {
    constexpr int kWrites = 100;
    const test::TemporaryFolder folder;
    std::atomic<int> failures = 0;
    const auto writer = [&](const char* name) {
        for (int i = 0; i < kWrites; ++i) failures += replaceFile(folder / name, name) ? 1 : 0;
    };
    std::thread other(writer, "one");
    writer("two");
    other.join();
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 2);
}

TEST(ReadPropertyListFile, TellsAbsentUnreadableAndDamagedApart) {
    const test::TemporaryFolder folder;
    fs::create_directory(folder / "folder");
    ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0600), 0);
    writeFile(folder / "empty", "");
    writeFile(folder / "text", "no property list");
    fs::create_symlink("nowhere", folder / "dangling");
    writeFile(folder / "large", "");
    fs::resize_file(folder / "large", (64 << 20) + 1);  // sparse
    const std::pair<const char*, FileState> cases[] = {
        {"missing", FileState::Absent},        {"dangling", FileState::Absent},
        {"folder", FileState::Unreadable},     {"fifo", FileState::Unreadable},
        {"text/below", FileState::Unreadable}, {"empty", FileState::Damaged},
        {"text", FileState::Damaged},          {"large", FileState::Damaged},
    };
    for (const auto& [name, state] : cases) {
        const PropertyListFile file = readPropertyListFile(folder / name);
        EXPECT_EQ(file.state, state) << name;
        EXPECT_EQ(file.reason.empty(), state == FileState::Absent) << name;
    }
    ASSERT_FALSE(writePropertyListFile(folder / "text", Dictionary{{"k", -7}}));
    EXPECT_EQ(readPropertyListFile(folder / "text").root, Value(Dictionary{{"k", -7}}));
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
    const test::ScopedEnvironment missing("HOME", "/missing");
    EXPECT_EQ(homeFolder(), "") << "never somebody's real home in its place";
    const test::ScopedEnvironment relative("HOME", "relative");
    EXPECT_EQ(homeFolder(), ::getpwuid(::getuid())->pw_dir);
}

}  // namespace
}  // namespace tintoral
