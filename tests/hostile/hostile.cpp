#include "hostile/hostile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <map>
#include <utility>

#include "monitor/update_cycle.h"
#include "support/measure.h"
#include "support/time_lapse.h"
#include "support/unique_fd.h"

namespace tintoral::hostile {
namespace {

constexpr double kMarginSeconds = 3;      // of a busy machine
constexpr unsigned kLongestSeconds = 40;  // real ones, then the case is killed
constexpr long kMemoryKiB = 96L * 1024;   // of a case, above what this process has
// Sentences that say nothing of a printer's own.
constexpr std::string_view kEmptyWords[] = {
    "",        "Offline", "Online",           "Online but can't get ink levels",
    "Unknown", "None",    "Can't get status", "Can't communicate to the printer."};

struct Case {
    const Exchange& exchange;
    const Hardship& hardship;
    int honestAnswers;

    bool meansWell() const { return hardship.name.empty(); }
    int timeLapse() const {
        return meansWell() ? 1 : std::clamp(static_cast<int>(exchange.boundSeconds / 4), 1, 10);
    }
    std::string name() const {
        return exchange.name + (", " + hardship.name) + " after " + std::to_string(honestAnswers);
    }
};

// What the program and its libraries print is not what the test prints.
class Muted {
  public:
    Muted() : output_(::dup(STDOUT_FILENO)), nowhere_(::open("/dev/null", O_WRONLY | O_CLOEXEC)) {
        ::dup2(nowhere_.get(), STDOUT_FILENO);
        ::dup2(nowhere_.get(), STDERR_FILENO);
    }
    ~Muted() {
        std::fflush(stdout);
        ::dup2(output_.get(), STDOUT_FILENO);
    }

  private:
    UniqueFd output_;
    UniqueFd nowhere_;
};

void expectHarmless(const Case& what, const Answer& answer) {
    Answer expected = what.exchange.honest;
    EXPECT_TRUE(answer.status == expected.status ||
                std::ranges::find(kEmptyWords, answer.status) != std::end(kEmptyWords))
        << answer.status;
    if (answer.result <= 0 && !what.meansWell()) return;
    if (what.exchange.mayStopEarly && std::cmp_less(answer.result, expected.levels.size())) {
        expected.result = answer.result;
        expected.levels.resize(answer.levels.size());
    }
    EXPECT_EQ(answer.result, expected.result);
    EXPECT_EQ(answer.levels, expected.levels);
}

// In the case's own process.
[[noreturn]] void runHere(const Case& what, const Place& place, double& seconds) {
    Answer answer;
    {
        const Muted muted;
        ::alarm(kLongestSeconds);
        test::startTimeLapse(what.timeLapse());
        const auto peer = what.hardship.peer(place, what.honestAnswers);
        seconds =
            static_cast<double>(test::timed([&] { answer = what.exchange.ask(place); }).count()) /
            1000;
    }
    const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
    const int failuresOfOthers = test.result()->total_part_count();
    SCOPED_TRACE(what.name());
    expectHarmless(what, answer);
    EXPECT_LE(seconds, what.exchange.boundSeconds + kMarginSeconds * what.timeLapse());
    std::fflush(stdout);
    ::_exit(test.result()->total_part_count() > failuresOfOthers ? 1 : 0);
}

class Runner {
  public:
    explicit Runner(std::size_t sideBySide) : sideBySide_(sideBySide) {
        seconds_ =
            static_cast<double*>(::mmap(nullptr, kMostCases * sizeof(double),
                                        PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    }
    ~Runner() { ::munmap(seconds_, kMostCases * sizeof(double)); }
    Runner(const Runner&) = delete;
    Runner& operator=(const Runner&) = delete;

    void start(const Case& what) {
        if (running_.size() >= sideBySide_) finishOne();
        ASSERT_LT(next_, kMostCases);
        const Place place{
            "127.0." + std::to_string(2 + next_ / 250) + "." + std::to_string(1 + next_ % 250),
            static_cast<std::uint16_t>(10000 + next_)};
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) runHere(what, place, seconds_[next_]);
        running_.emplace(child, std::pair(what, next_++));
    }

    void finishAll() {
        while (!running_.empty()) finishOne();
        for (const auto& [name, worst] : worst_)
            std::printf("[ WORST    ] %6.1f s  %s\n", worst.first, worst.second.c_str());
    }

  private:
    static constexpr std::size_t kMostCases = 4096;

    void finishOne() {
        int status = 0;
        rusage usage{};
        const auto ended = running_.find(::wait4(-1, &status, 0, &usage));
        ASSERT_NE(ended, running_.end());
        const auto [what, index] = ended->second;
        running_.erase(ended);
        EXPECT_EQ(status, 0) << what.name();
        EXPECT_LE(usage.ru_maxrss - ownMemory_, kMemoryKiB) << what.name();
        auto& worst = worst_[what.exchange.name];
        worst = std::max(worst, std::pair(seconds_[index], what.name()));
    }

    static long memoryOfThisProcess() {
        rusage usage{};
        ::getrusage(RUSAGE_SELF, &usage);
        return usage.ru_maxrss;
    }

    std::size_t sideBySide_;
    double* seconds_;  // of each case, shared with its process
    std::map<pid_t, std::pair<Case, std::size_t>> running_;
    std::map<std::string, std::pair<double, std::string>> worst_;
    std::size_t next_ = 0;
    long ownMemory_ = memoryOfThisProcess();
};

}  // namespace

void runAll(const std::vector<Exchange>& exchanges, std::size_t sideBySide) {
    Runner runner(sideBySide);
    for (const Exchange& exchange : exchanges) {
        for (int honest = 0; honest <= exchange.honestAnswers; honest += std::max(honest, 1)) {
            for (const Hardship& hardship : exchange.hardships)
                runner.start({exchange, hardship, honest});
        }
    }
    runner.finishAll();
}

Answer askRecord(PrinterRecord record) {
    InkQuantities inks;
    StatusText status;
    const int result = queryPrinter(record, inks, status);
    if (inks.count == 0 && result > 0) inks.count = static_cast<std::int8_t>(result);  // IPP
    return {result, std::string(status.view()),
            result > 0 ? test::levelsOf(inks) : std::vector<int>()};
}

ByteVector noise(std::size_t size) {
    ByteVector bytes(size);
    std::uint32_t state = 12345;
    for (std::uint8_t& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<std::uint8_t>(state >> 24);
    }
    return bytes;
}

std::vector<Lie> liesAbout(const LengthField& field) {
    std::vector<Lie> lies;
    for (const std::uint32_t value : {0U, 1U, 0x10U, 0x80000000U, 0xFFFFFFFFU}) {
        lies.push_back(
            {"length " + std::to_string(value), [=](ByteVector& answer) {
                 for (std::size_t i = 0; i < field.size && field.offset + i < answer.size(); ++i) {
                     const std::size_t shift = 8 * (field.lowByteFirst ? i : field.size - 1 - i);
                     answer[field.offset + i] = static_cast<std::uint8_t>(value >> shift);
                 }
             }});
    }
    return lies;
}

}  // namespace tintoral::hostile
