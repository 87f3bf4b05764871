#include "history/ink_history_store.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cmath>
#include <limits>
#include <random>
#include <thread>

#include "support/hardships.h"
#include "support/temporary_folder.h"
#include "support/test_clock.h"

namespace tintoral {
namespace {

namespace fs = std::filesystem;
using test::readFile;
using test::writeFile;

constexpr Date kNow = std::chrono::sys_days{std::chrono::year{2026} / 5 / 1};

Date second(int number) {
    return kNow - std::chrono::hours(1) + std::chrono::seconds(number);
}

Dictionary reading(int black, int date) {
    return Dictionary{{"Black", black}, {"Colors", Array{"Black"}}, {"Date", second(date)}};
}

Array levelsOf(const Array& history) {
    Array levels;
    for (const Value& entry : history) {
        const auto* dictionary = entry.as<Dictionary>();
        levels.push_back(dictionary ? *dictionary->find("Black") : entry);
    }
    return levels;
}

// clang-format off
TEST(AddReading, MovesTheEndOfAnEqualRunOnlyWhereTheLastTwoShareADate) {
    const Dictionary undated{{"Black", 50}};
    const Dictionary otherColors{{"Black", 50}, {"Colors", Array{"K"}}, {"Date", second(1)}};
    const struct {
        const char* what;
        Array history;
        Dictionary added;
        std::size_t size;
    } cases[] = {
        {"second", {reading(50, 1)}, reading(50, 9), 2},
        {"equal run", {reading(50, 1), reading(50, 1)}, reading(50, 9), 2},
        {"as meant: dates of the last two", {reading(50, 1), reading(50, 2)}, reading(50, 9), 3},
        {"after the clock was set back", {reading(50, 9999)}, reading(50, 9), 2},
        {"no date to compare", {reading(50, 1), reading(50, 2)}, undated, 2},
        {"level of the last two", {reading(51, 1), reading(50, 1)}, reading(50, 1), 3},
        {"colours of the reading", {otherColors, otherColors}, reading(50, 9), 2},
        {"absent equals nothing", {undated, undated}, reading(50, 1), 3},
    };
    for (const auto& c : cases) {
        Array history = c.history;
        addReading(history, c.added, kNow);
        ASSERT_EQ(history.size(), c.size) << c.what;
        EXPECT_EQ(history.back().as<Dictionary>()->date("Date"), kNow) << c.what;
        EXPECT_EQ(history[0], c.history[0]) << c.what;
    }
}

TEST(AddReadingCompacted, RemovesTheMiddleWhereTheThreeSumsAgree) {
    constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
    const auto with = [](Value black, const char* key, Value value) {
        return Dictionary{{"Black", std::move(black)}, {key, std::move(value)}};
    };
    const struct {
        const char* what;
        Array history;
        Dictionary added;
        Array left;  // the levels of "Black"
    } cases[] = {
        {"three equal", {reading(50, 1), reading(50, 2)}, reading(50, 3), {50, 50}},
        {"long runs", {reading(9, 1), reading(5, 2), reading(5, 3), reading(5, 4)}, reading(4, 5), {9, 5, 4}},
        {"as meant: the third's own values", {with(1, "C", 2), with(2, "C", 1)}, with(9, "C", 9), {1, 9}},
        {"as meant: the third's keys", {with(1, "C", 2), with(1, "C", 2)}, reading(3, 3), {1, 1, 3}},
        {"as meant: Data left out", {with(1, "Data", 1), with(1, "Data", 2)}, with(1, "Data", 3), {1, 1}},
        {"as meant: Date is not", {with(1, "Date", 1), with(1, "Date", 2)}, with(1, "Date", 3), {1, 1, 1}},
        {"huge reals", {with(1, "k", 1e300), with(1, "k", -1e300)}, with(1, "k", std::nan("")), {1, 1, 1}},
        {"no overflow", {with(kMost, "k", kMost), with(kMost, "k", kMost)}, with(1, "k", 1), {kMost, 1}},
        {"no dictionary is lost", {"a", "b", "c"}, reading(0, 1), {"a", "b", "c", 0}},
    };
    for (const auto& c : cases) {
        Array history = c.history;
        addReadingCompacted(history, c.added);
        EXPECT_EQ(levelsOf(history), c.left) << c.what;
    }
}
// clang-format on

// A home folder, the clock at kNow, and standard error held back.
class InkHistoryStore : public testing::Test {
  protected:
    InkHistoryStore() { testing::internal::CaptureStderr(); }
    ~InkHistoryStore() override { testing::internal::GetCapturedStderr(); }

    fs::path support() const { return home_ / "library/Application Support"; }
    static std::ptrdiff_t entriesIn(const fs::path& folder) {
        return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
    }
    std::ptrdiff_t listed() const { return entriesIn(historyFolder()); }
    static Array entriesOf(const fs::path& path) {
        return std::get<Array>(readPropertyListFile(path).root.storage());
    }

    test::TemporaryFolder home_;
    test::ScopedEnvironment variable_{"HOME", home_.path().string()};
    test::TestClock clock_{kNow};
    ScopedClock scope_{clock_};
};

TEST_F(InkHistoryStore, BeginsAndContinuesOneFilePerPrinter) {
    EXPECT_FALSE(saveInkReadingsForPrinterId(reading(50, 1), "Network:X")) << "no folder yet";
    EXPECT_TRUE(fs::is_empty(home_.path()));
    prepareHistoryFolder();
    saveInkReadings(reading(50, 1), "Network:X");
    EXPECT_EQ(listed(), 0) << "the filter never begins a history";
    writeFile(historyFolder() / "Empty", formatPropertyList(Array()));
    saveInkReadings(reading(50, 1), "Empty");
    EXPECT_EQ(inkHistory("Empty")->size(), 1U);
    EXPECT_EQ(lastLevelForPrinterId("Network:X"), std::nullopt);
    EXPECT_TRUE(saveInkReadingsForPrinterId(reading(50, 1), "Network:X"));
    EXPECT_TRUE(saveInkReadingsForPrinterId(reading(49, 1), "Network:X"));
    EXPECT_EQ(lastLevelForPrinterId("Network:X")->date("Date"), kNow);
    saveInkReadings(reading(49, 2), "Network:X");
    EXPECT_EQ(levelsOf(entriesOf(support() / "Tintoral/Network:X")), (Array{50, 49, 49}));
    EXPECT_EQ(lastLevelForPrinterId("Network:X")->date("Date"), second(2))
        << "the filter's own date";
}

TEST_F(InkHistoryStore, NoNameLeadsOutOfTheFolderOrMakesOne) {
    prepareHistoryFolder();
    writeFile(support() / "outside", formatPropertyList(Array{reading(1, 1)}));
    const std::string longest(255, 'x');
    EXPECT_TRUE(saveInkReadingsForPrinterId(reading(50, 1), longest));
    const std::string names[] = {"",           ".",      "..",          "../outside",
                                 "USB:HP a/b", "/tmp/x", longest + "x", {"a\0b", 3}};
    for (const std::string& name : names) {
        EXPECT_FALSE(saveInkReadingsForPrinterId(reading(50, 1), name)) << name;
        saveInkReadings(reading(50, 1), name);
        EXPECT_EQ(lastLevelForPrinterId(name), std::nullopt) << name;
    }
    EXPECT_EQ(listed(), 1);
    EXPECT_EQ(entriesOf(support() / "outside").size(), 1U);
}

TEST_F(InkHistoryStore, ABadHistoryIsKeptOutsideTheFolderBeforeANewOneBegins) {
    prepareHistoryFolder();
    const auto path = historyFolder() / "X";
    const std::pair<std::string, const char*> bad[] = {
        {"<array>", "X.damaged"}, {formatPropertyList(Dictionary()), "X.damaged-2"}};
    for (const auto& [content, kept] : bad) {
        writeFile(path, content);
        saveInkReadings(reading(50, 1), "X");
        EXPECT_EQ(lastLevelForPrinterId("X"), std::nullopt);
        EXPECT_EQ(readFile(path), content) << "neither the filter nor a reading touches it";
        EXPECT_TRUE(saveInkReadingsForPrinterId(reading(50, 1), "X"));
        EXPECT_EQ(readFile(support() / "Tintoral damaged" / kept), content);
        EXPECT_EQ(entriesOf(path).size(), 1U);
        EXPECT_EQ(listed(), 1);
    }
    {
        const test::NoMoreFiles none;
        EXPECT_FALSE(saveInkReadingsForPrinterId(reading(49, 1), "X"));
    }
    EXPECT_EQ(entriesOf(path).size(), 1U) << "out of reach is not damaged";
    writeFile(path, "damaged");
    fs::remove_all(support() / "Tintoral damaged");
    writeFile(support() / "Tintoral damaged", "in the way");
    EXPECT_FALSE(saveInkReadingsForPrinterId(reading(50, 1), "X"));
    EXPECT_EQ(readFile(path), "damaged");
}

TEST_F(InkHistoryStore, KeepsForeignEntriesFollowsLinksAndSurvivesAFullDiskAndACrash) {
    prepareHistoryFolder();
    writeFile(home_ / "elsewhere", formatPropertyList(Array{"text", 5, Array(), reading(9, 1)}));
    fs::create_symlink(home_ / "elsewhere", historyFolder() / "X");
    EXPECT_TRUE(saveInkReadingsForPrinterId(reading(50, 1), "X"));
    saveInkReadings(reading(49, 1), "X");
    EXPECT_EQ(levelsOf(entriesOf(home_ / "elsewhere")), (Array{"text", 5, Array(), 9, 50, 49}));
    Dictionary large = reading(50, 1);
    large.set("Note", std::string(10000, 'n'));
    {
        const test::FullDisk full;
        EXPECT_FALSE(saveInkReadingsForPrinterId(large, "X"));
        const pid_t child = ::fork();
        if (child == 0) {  // dies in the middle of the write, leaving what it leaves
            std::signal(SIGXFSZ, SIG_DFL);
            saveInkReadingsForPrinterId(large, "X");
            ::_exit(0);
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status));
    }
    EXPECT_EQ(entriesOf(home_ / "elsewhere").size(), 6U);
    EXPECT_EQ(listed(), 1);
}

TEST_F(InkHistoryStore, XmlIsReadAndConvertedByTheNextWrite) {
    prepareHistoryFolder();
    const auto path = historyFolder() / "X";
    for (const bool filter : {false, true}) {
        writeFile(path, formatPropertyList(Array{"text", reading(50, 1)}));
        EXPECT_EQ(lastLevelForPrinterId("X"), reading(50, 1));
        if (filter) {
            saveInkReadings(reading(40, 2), "X");
        } else {
            EXPECT_TRUE(saveInkReadingsForPrinterId(reading(40, 2), "X"));
        }
        EXPECT_TRUE(readFile(path).starts_with("bplist00"));
        EXPECT_EQ(levelsOf(*inkHistory("X")), (Array{"text", 50, 40}));
    }
}

TEST_F(InkHistoryStore, IsWholeWheneverTheProgramIsKilled) {
    constexpr int kRounds = 15;
    constexpr int kAppends = 1000;
    prepareHistoryFolder();
    std::mt19937 random(1);
    std::size_t size = 0;
    for (int round = 0; round < kRounds; ++round) {
        const pid_t child = ::fork();
        if (child == 0) {
            for (int i = 0; i < kAppends; ++i)
                saveInkReadingsForPrinterId(reading(static_cast<int>(size) + i, 1), "X");
            ::_exit(0);
        }
        std::this_thread::sleep_for(std::chrono::microseconds(5000 + random() % 40000));
        ::kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        const auto history = inkHistory("X");
        ASSERT_TRUE(history || size == 0) << round;
        const Array levels = history ? levelsOf(*history) : Array();
        ASSERT_GE(levels.size(), size);
        size = levels.size();
        for (std::size_t i = 0; i < size; ++i) ASSERT_EQ(levels[i], Value(static_cast<int>(i)));
        EXPECT_LE(listed(), 1);
        EXPECT_LE(entriesIn(support()), 2) << "temporary files of killed programs pile up";
    }
    EXPECT_GT(size, 0U) << "killed before it wrote";
}

}  // namespace
}  // namespace tintoral
