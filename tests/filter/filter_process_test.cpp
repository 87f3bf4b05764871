// The built executable as a child process: what it does with its arguments, its environment and its
// module.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>

#include "support/temporary_folder.h"

namespace tintoral {
namespace {

using test::readFile;

struct Ended {
    int status;  // the exit status; -1 when it was ended by a signal
    std::string output;
    std::string errors;
};

class FilterProcessTest : public testing::Test {
  protected:
    FilterProcessTest() {
        for (const char* folder : {"bin", "lib/tintoral", "share/tintoral"}) {
            std::filesystem::create_directories(folder_ / folder);
        }
        std::filesystem::copy_file(TINTORAL_EXECUTABLE, folder_ / "bin/tintoral");
    }

    // Runs the program with a shell's words, with nothing but `variables` in its environment.
    Ended run(const std::string& variables, const std::string& words) {
        const std::string path = folder_.path();
        const std::string line =
            "cd " + path + " && env -i " + variables + " bin/tintoral " + words + " > out 2> err";
        const int status = std::system(line.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(folder_ / "out"),
                readFile(folder_ / "err")};
    }

    void expectOneLine(const Ended& ended, const std::string& part, int status = 1) {
        EXPECT_EQ(ended.status, status);
        EXPECT_EQ(ended.output, "");
        EXPECT_EQ(std::ranges::count(ended.errors, '\n'), 1) << ended.errors;
        EXPECT_NE(ended.errors.find(part), std::string::npos) << ended.errors;
    }

    test::TemporaryFolder folder_;
};

TEST_F(FilterProcessTest, FewerThanSixArgumentsWantTheWindow) {
    expectOneLine(run("", "1 2 3 4"), "no display");
    expectOneLine(run("DISPLAY=", ""), "no display");
    expectOneLine(run("DISPLAY=:0", "1 2 3 4"), "No such file");
    for (const char* damaged : {"", "no module"}) {
        test::writeFile(folder_ / "lib/tintoral/libtintoral-window.so", damaged);
        expectOneLine(run("WAYLAND_DISPLAY=wayland-0", ""), "lib/tintoral/libtintoral-window.so");
    }
}

TEST_F(FilterProcessTest, TheModuleGetsTheArguments) {
    std::filesystem::copy_file(WINDOW_MODULE, folder_ / "lib/tintoral/libtintoral-window.so");
    EXPECT_EQ(run("QT_QPA_PLATFORM=offscreen", "x y").status, 42);
    EXPECT_EQ(run("DISPLAY=:0", "1 2 3 4 5 < /dev/null").status, 0);  // a filter again
}

TEST_F(FilterProcessTest, HelpAndVersionNeedNoDisplay) {
    const Ended version = run("", "--version");
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.output, "Tintoral " TINTORAL_VERSION "\n");
    EXPECT_NE(run("", "--help").output.find("CUPS command filter"), std::string::npos);
    EXPECT_EQ(run("", "1 2 3 4 --help < /dev/null").output, "");  // a filter has no options
}

TEST_F(FilterProcessTest, OptionsOfNobodyAreRefusedBeforeAnythingIsLoaded) {
    for (const char* unknown : {"-x", "--bogus", "x -", "--helpful", "--stylish --version"}) {
        expectOneLine(run("DISPLAY=:0", unknown), "unknown option '", 2);
    }
    for (const char* known :
         {"-session 1_2", "--platform offscreen", "-style=fusion", "-reverse", "-geometry -0-0"}) {
        expectOneLine(run("", known), "no display");
    }
}

// The first ReportLevels complains about a model table that cannot be used: so the stream was read.
TEST_F(FilterProcessTest, SixArgumentsReadStandardInputAndSevenAFile) {
    test::writeFile(folder_ / "share/tintoral/printers.xml", "damaged");
    test::writeFile(folder_ / "commands", "#CUPS-COMMAND\nClean all\nReportLevels\nReportLevels\n");
    test::writeFile(folder_ / "comments", "# ReportLevels\n");
    const struct {
        const char* words;
        bool reports;
    } cases[] = {
        {"1 2 3 4 5 < commands", true},
        {"1 2 3 4 5 < comments", false},
        {"1 2 3 4 5 commands < comments", true},
        {"1 2 3 4 5 comments < commands", false},
        {"1 2 3 4 5 comments 7 < commands", true},  // only exactly seven name a file
        {"1 2 3 4 5 / < commands", false},          // a folder opens, but holds no line
    };
    for (const auto& row : cases) {
        const Ended ended = run("DEVICE_URI=usb://x", row.words);
        EXPECT_EQ(ended.status, 0) << row.words;
        EXPECT_EQ(ended.output, "") << row.words;
        EXPECT_EQ(std::ranges::count(ended.errors, '\n'), row.reports ? 1 : 0)
            << row.words << ended.errors;
    }
}

TEST_F(FilterProcessTest, SaysWhatIsWrongWithItsSurroundings) {
    const Ended missing = run("DEVICE_URI=usb:", "1 2 3 4 5 missing");
    expectOneLine(missing, "No such file or directory");
    EXPECT_TRUE(missing.errors.starts_with("ERROR: Unable to open command file - "))
        << missing.errors;
    for (const char* variables : {"", "DEVICE_URI=", "DEVICE_URI=socket"}) {
        const Ended ended = run(variables, "1 2 3 4 5 < /dev/null");
        EXPECT_EQ(ended.status, 0);
        EXPECT_EQ(ended.errors, "ERROR: DEVICE_URI is not set or names no scheme\n");
    }
}

TEST_F(FilterProcessTest, MapsNoLibraryOfTheWindow) {
    ASSERT_EQ(std::system(("ldd " TINTORAL_EXECUTABLE " > " + (folder_ / "ldd").string()).c_str()),
              0);
    const std::string libraries = readFile(folder_ / "ldd");
    EXPECT_NE(libraries.find("libc.so"), std::string::npos) << libraries;
    for (const char* unwanted : {"Qt", "libX", "libxcb", "wayland", "libGL", "avahi", "glib"}) {
        EXPECT_EQ(libraries.find(unwanted), std::string::npos) << libraries;
    }
}

}  // namespace
}  // namespace tintoral
