#include "hostile/hostile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <map>
#include <sstream>
#include <utility>

#include "monitor/update_cycle.h"
#include "support/measure.h"
#include "support/time_lapse.h"
#include "support/unique_fd.h"

namespace tintoral::hostile {
namespace {

using Steady = std::chrono::steady_clock;

constexpr int kLapse = 10;
constexpr double kMarginSeconds = 8;      // 0.8 s of a busy machine
constexpr unsigned kLongestSeconds = 30;  // real ones, then the case is killed
constexpr long kMemoryKiB = 48 * 1024;    // of a case, above what this process has
// Sentences that say nothing of a printer's own.
constexpr std::string_view kEmptyWords[] = {"",
                                            "Offline",
                                            "Online",
                                            "Online but can't get ink levels",
                                            "Unknown",
                                            "None",
                                            "Can't communicate to the printer.",
                                            "Can't get status"};

struct Running {
    const Case* what;
    UniqueFd report;
};

struct Outcome {
    bool ended = false;
    double seconds = 0;
    Answer answer;
};

// In the case's own process. The report: seconds, result, number of levels, levels, status.
[[noreturn]] void runHere(const Case& what, const Place& place, int report) {
    const UniqueFd nowhere(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    ::dup2(nowhere.get(), STDOUT_FILENO);
    ::dup2(nowhere.get(), STDERR_FILENO);
    ::alarm(kLongestSeconds);
    if (!what.hardship.empty()) test::startTimeLapse(kLapse);
    std::shared_ptr<void> peer = what.peer(place);
    const auto start = Steady::now();
    const Answer answer = what.ask(place);
    std::ostringstream text;
    text << std::chrono::duration<double>(Steady::now() - start).count() << ' ' << answer.result
         << ' ' << answer.levels.size();
    for (const int level : answer.levels) text << ' ' << level;
    text << ' ' << answer.status;
    const std::string said = text.str();
    peer.reset();
    const bool whole = ::write(report, said.data(), said.size()) == std::ssize(said);
    ::_exit(whole ? 0 : 1);
}

Outcome outcomeOf(const Running& running) {
    std::string text(4096, '\0');
    const ssize_t size = ::read(running.report.get(), text.data(), text.size());
    std::istringstream words(text.substr(0, static_cast<std::size_t>(std::max<ssize_t>(size, 0))));
    Outcome outcome;
    std::size_t levels = 0;
    words >> outcome.seconds >> outcome.answer.result >> levels;
    outcome.answer.levels.resize(levels);
    for (int& level : outcome.answer.levels) words >> level;
    outcome.ended = !words.fail();
    words.ignore();
    std::getline(words, outcome.answer.status);
    return outcome;
}

bool isWellKnown(const Answer& answer, const Answer& honest) {
    return answer.status == honest.status ||
           std::ranges::find(kEmptyWords, answer.status) != std::end(kEmptyWords);
}

void expectHarmless(const Case& what, const Outcome& outcome, int status, long memory) {
    SCOPED_TRACE(what.exchange + ", " + what.hardship);
    EXPECT_TRUE(outcome.ended && status == 0) << "wait status " << status;
    EXPECT_LE(outcome.seconds, what.boundSeconds + kMarginSeconds);
    EXPECT_LE(memory, kMemoryKiB);
    Answer expected = what.honest;
    if (what.mayStopEarly && std::cmp_less(outcome.answer.result, expected.levels.size())) {
        expected.result = outcome.answer.result;
        expected.levels.resize(static_cast<std::size_t>(std::max(expected.result, 0)));
    }
    if (what.hardship.empty() || outcome.answer.result > 0) {
        EXPECT_EQ(outcome.answer.result, expected.result);
        EXPECT_EQ(outcome.answer.levels, expected.levels);
    }
    EXPECT_TRUE(isWellKnown(outcome.answer, what.honest)) << outcome.answer.status;
}

struct Worst {
    double seconds = 0;
    double bound = 0;
    std::string hardship;
};

class Runner {
  public:
    explicit Runner(std::size_t sideBySide) : sideBySide_(sideBySide) {}

    void start(const Case& what) {
        if (running_.size() >= sideBySide_) finishOne();
        std::array<int, 2> ends{};
        ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
        const UniqueFd own(ends[1]);
        const Place place{
            "127.0." + std::to_string(2 + next_ / 250) + "." + std::to_string(1 + next_ % 250),
            static_cast<std::uint16_t>(10000 + next_)};
        ++next_;
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) runHere(what, place, own.get());
        running_.emplace(child, Running{&what, UniqueFd(ends[0])});
    }

    void finishAll() {
        while (!running_.empty()) finishOne();
        for (const auto& [exchange, worst] : worst_)
            std::printf("[ WORST    ] %-32s %6.1f s of %6.1f s: %s\n", exchange.c_str(),
                        worst.seconds, worst.bound, worst.hardship.c_str());
    }

  private:
    void finishOne() {
        int status = 0;
        rusage usage{};
        const pid_t child = ::wait4(-1, &status, 0, &usage);
        const auto found = running_.find(child);
        ASSERT_NE(found, running_.end());
        const Case& what = *found->second.what;
        const Outcome outcome = outcomeOf(found->second);
        running_.erase(found);
        expectHarmless(what, outcome, status, usage.ru_maxrss - ownMemory_);
        Worst& worst = worst_[what.exchange];
        if (outcome.seconds >= worst.seconds)
            worst = {outcome.seconds, what.boundSeconds, what.hardship};
    }

    static long memoryOfThisProcess() {
        rusage usage{};
        ::getrusage(RUSAGE_SELF, &usage);
        return usage.ru_maxrss;
    }

    std::size_t sideBySide_;
    std::map<pid_t, Running> running_;
    std::map<std::string, Worst> worst_;
    int next_ = 0;
    long ownMemory_ = memoryOfThisProcess();
};

}  // namespace

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

std::function<void(ByteVector&)> lyingBy(const LengthField& field, std::uint64_t value) {
    return [=](ByteVector& answer) {
        for (std::size_t i = 0; i < field.size && field.offset + i < answer.size(); ++i) {
            const std::size_t shift = 8 * (field.lowByteFirst ? i : field.size - 1 - i);
            answer[field.offset + i] = static_cast<std::uint8_t>(value >> shift);
        }
    };
}

void runAll(const std::vector<Case>& cases, std::size_t sideBySide) {
    Runner runner(sideBySide);
    for (const Case& what : cases) runner.start(what);
    runner.finishAll();
}

}  // namespace tintoral::hostile
