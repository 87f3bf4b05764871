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

std::ptrdiff_t linesOfCapturedStderr() {
    return std::ranges::count(testing::internal::GetCapturedStderr(), '\n');
}

TEST(UserDefaults, LieBelowTheConfigFolder) {
    const test::TemporaryFolder folder;
    const test::ScopedEnvironment home("HOME", folder.path().string());
    for (const auto& [variable, config] : {std::pair("/elsewhere", fs::path("/elsewhere")),
                                           {"", folder / ".config"},
                                           {"relative/folder", folder / ".config"}}) {
        const test::ScopedEnvironment environment("XDG_CONFIG_HOME", variable);
        EXPECT_EQ(userDefaultsPath(), config / "Tintoral/Tintoral.plist");
    }
}

TEST(UserDefaults, SurviveARestartTogetherWithUnknownKeys) {
    const test::TemporaryFolder folder;
    const auto path = folder / "a/b/Tintoral.plist";
    {
        UserDefaults defaults(path);
        defaults.setPrinterId("Network:X");
        defaults.setUseModelIcon(true);
        EXPECT_TRUE(defaults.synchronize());
        EXPECT_EQ(fs::status(folder / "a").permissions(), fs::perms(0700));
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

TEST(UserDefaults, ABadFileIsKeptAsideBeforeAnotherIsWrittenOrLeftAlone) {
    const struct {
        std::string content;
        bool readable;
        bool folderIsWritable;
        const char* kept;
    } cases[] = {
        {"<plist><dict>", true, true, "Tintoral.plist.damaged"},
        {formatPropertyList(Array{1}), true, true, "Tintoral.plist.damaged-2"},
        {"secret", false, true, "Tintoral.plist.damaged-3"},
        {"secret", false, false, "Tintoral.plist"},
    };
    const test::TemporaryFolder folder;
    const auto path = folder / "Tintoral.plist";
    for (const auto& c : cases) {
        fs::remove(path);
        writeFile(path, c.content);
        fs::permissions(path, fs::perms(c.readable ? 0666 : 0));
        fs::permissions(folder.path(), fs::perms(c.folderIsWritable ? 0777 : 0555));
        {
            const test::WithoutPrivileges nobody;
            if (!nobody.active()) GTEST_SKIP() << "cannot give up privileges";
            testing::internal::CaptureStderr();
            UserDefaults defaults(path);
            defaults.setPrinterId("new");
            EXPECT_EQ(defaults.synchronize(), c.folderIsWritable);
            EXPECT_EQ(linesOfCapturedStderr(), 1) << c.kept;
            EXPECT_EQ(UserDefaults(path).printerId(), c.folderIsWritable ? "new" : "");
        }
        fs::permissions(folder.path(), fs::perms(0700));
        fs::permissions(folder / c.kept, fs::perms(0600));
        EXPECT_EQ(readFile(folder / c.kept), c.content);
    }
}

TEST(UserDefaults, AFileThatIsOnlyOutOfReachStaysWhereItIs) {
    const test::TemporaryFolder folder;
    const auto path = folder / "Tintoral.plist";
    writeFile(path, formatPropertyList(Dictionary{{"VT1printerId", "old"}}));
    UserDefaults defaults = [&] {
        const test::NoMoreFiles none;
        return UserDefaults(path);
    }();
    EXPECT_EQ(defaults.saveFailure(), path.string() + ": Too many open files");
    defaults.setPrinterId("new");
    EXPECT_FALSE(defaults.synchronize());
    EXPECT_EQ(UserDefaults(path).printerId(), "old");
}

TEST(UserDefaults, AFailedSaveLeavesTheOldFileAndSaysSoOnce) {
    const test::TemporaryFolder folder;
    UserDefaults defaults(folder / "file");
    defaults.setPrinterId("old");
    ASSERT_TRUE(defaults.synchronize());
    defaults.setPrinterId(std::string(10000, 'n'));
    testing::internal::CaptureStderr();
    {
        const test::FullDisk full;
        EXPECT_FALSE(defaults.synchronize());
        EXPECT_FALSE(defaults.synchronize());
    }
    EXPECT_EQ(linesOfCapturedStderr(), 1);
    EXPECT_EQ(UserDefaults(folder / "file").printerId(), "old");
    EXPECT_TRUE(defaults.synchronize()) << "tried again when there is room";
    EXPECT_EQ(UserDefaults(folder / "file").printerId().size(), 10000U);
}

}  // namespace
}  // namespace tintoral
