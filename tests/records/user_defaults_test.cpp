#include "records/user_defaults.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/hardships.h"
#include "support/temporary_folder.h"

namespace tintoral {
namespace {

namespace fs = std::filesystem;
using test::readFile;
using test::writeFile;

// Standard error while it lives; lines() tells how many lines were written.
class Captured {
  public:
    Captured() { testing::internal::CaptureStderr(); }
    std::ptrdiff_t lines() {
        const std::string text = testing::internal::GetCapturedStderr();
        return std::ranges::count(text, '\n');
    }
};

TEST(UserDefaults, LieBelowTheConfigFolder) {
    const test::TemporaryFolder folder;
    const test::ScopedEnvironment home("HOME", folder.path().string());
    const test::ScopedEnvironment config("XDG_CONFIG_HOME", "/elsewhere");
    EXPECT_EQ(userDefaultsPath(), "/elsewhere/Tintoral/Tintoral.plist");
    for (const char* unusable : {"", "relative/folder"}) {
        const test::ScopedEnvironment none("XDG_CONFIG_HOME", unusable);
        EXPECT_EQ(userDefaultsPath(), folder / ".config/Tintoral/Tintoral.plist");
        const test::ScopedEnvironment noHome("HOME", "/nonexistent");
        testing::internal::CaptureStderr();
        UserDefaults homeless;
        homeless.setPrinterId("x");
        EXPECT_FALSE(homeless.synchronize());
        EXPECT_EQ(homeless.printerId(), "x");
        EXPECT_NE(testing::internal::GetCapturedStderr(), "");
    }
}

TEST(UserDefaults, SurviveARestartTogetherWithUnknownKeys) {
    const test::TemporaryFolder folder;
    const auto path = folder / "a/b/Tintoral.plist";
    {
        Captured error;
        UserDefaults defaults(path);
        defaults.setPrinterId("Network:X");
        defaults.setUseModelIcon(true);
        defaults.setPrinterTable(Array{Dictionary{{"printerId", "Network:X"}}});
        EXPECT_TRUE(defaults.synchronize());
        EXPECT_EQ(fs::status(folder / "a").permissions(), fs::perms(0700));
        EXPECT_EQ(error.lines(), 0);
    }
    auto root = *readPropertyListFile(path).root.as<Dictionary>();
    root.set("later version's key", Array{1, "two"});
    root.set("VT1printerTable", "not a table");
    ASSERT_FALSE(writePropertyListFile(path, root));
    UserDefaults again(path);
    EXPECT_EQ(again.printerId(), "Network:X");
    EXPECT_TRUE(again.useModelIcon());
    EXPECT_TRUE(again.printerTable().empty());
    again.setPrinterId("other");
    EXPECT_TRUE(again.synchronize());
    root.set("VT1printerId", "other");
    EXPECT_EQ(readPropertyListFile(path).root, Value(root));
}

TEST(UserDefaults, ABadFileIsKeptAsideBeforeAnotherIsWritten) {
    const test::TemporaryFolder folder;
    const auto path = folder / "Tintoral.plist";
    const std::pair<std::string, const char*> bad[] = {
        {"<plist><dict>", "Tintoral.plist.damaged"},
        {formatPropertyList(Array{1}), "Tintoral.plist.damaged-2"}};
    for (const auto& [content, kept] : bad) {
        writeFile(path, content);
        Captured error;
        UserDefaults defaults(path);
        EXPECT_EQ(error.lines(), 1) << content;
        EXPECT_FALSE(fs::exists(path));
        defaults.setPrinterId(kept);
        EXPECT_TRUE(defaults.synchronize());
        EXPECT_EQ(UserDefaults(path).printerId(), kept);
        EXPECT_EQ(readFile(folder / kept), content);
    }
}

TEST(UserDefaults, AnUnreadableFileIsKeptAsideOrLeftAlone) {
    const test::TemporaryFolder folder;
    const auto path = folder / "Tintoral.plist";
    for (const bool folderIsWritable : {false, true}) {
        writeFile(path, "secret");
        fs::permissions(path, fs::perms::none);
        fs::permissions(folder.path(), fs::perms(folderIsWritable ? 0777 : 0555));
        {
            const test::WithoutPrivileges nobody;
            if (!nobody.active()) GTEST_SKIP() << "cannot give up privileges";
            Captured error;
            UserDefaults defaults(path);
            defaults.setPrinterId("new");
            EXPECT_EQ(defaults.synchronize(), folderIsWritable);
            EXPECT_EQ(error.lines(), 1);
        }
        fs::permissions(folder.path(), fs::perms(0700));
        const auto kept = folder / (folderIsWritable ? "Tintoral.plist.damaged" : "Tintoral.plist");
        fs::permissions(kept, fs::perms(0600));
        EXPECT_EQ(readFile(kept), "secret");
    }
}

TEST(UserDefaults, AFailedSaveLeavesTheOldFileAndSaysSoOnce) {
    const test::TemporaryFolder folder;
    UserDefaults defaults(folder / "file");
    defaults.setPrinterId("old");
    ASSERT_TRUE(defaults.synchronize());
    defaults.setPrinterId(std::string(10000, 'n'));
    Captured error;
    {
        const test::FullDisk full;
        EXPECT_FALSE(defaults.synchronize());
        EXPECT_FALSE(defaults.synchronize());
    }
    EXPECT_EQ(error.lines(), 1);
    EXPECT_EQ(UserDefaults(folder / "file").printerId(), "old");
    EXPECT_TRUE(defaults.synchronize()) << "tried again when there is room";
    EXPECT_EQ(UserDefaults(folder / "file").printerId().size(), 10000U);
}

}  // namespace
}  // namespace tintoral
