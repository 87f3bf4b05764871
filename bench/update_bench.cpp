// `update_bench ROUNDS [PRINTER_ID]`: asks the printers of $HOME's settings, or the one of that id,
// as the window does, in rounds. A line for each printer, its fields separated by tabs:
//
//   printer id | levels, no-levels or unreachable | pauses | silence | each round, all in µs
//
// The pauses that a protocol demands (support/clock.h) are counted, not waited for. Silence is
// waited for, counted and taken off the rounds: the time-outs of those waits in which the printer
// said nothing, as it has nothing to say. What is left of a round is the program's, the system's
// and the printer's.
#include <libusb.h>
#include <poll.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "monitor/update_cycle.h"
#include "records/printer_table.h"

namespace {

std::chrono::microseconds silence{0};

}  // namespace

// The linker puts these in the place of the functions that wait (bench/CMakeLists.txt).
extern "C" {
int __real_poll(pollfd* entries, nfds_t count, int timeout);
int __wrap_poll(pollfd* entries, nfds_t count, int timeout) {
    const int result = __real_poll(entries, count, timeout);
    if (result == 0) silence += std::chrono::milliseconds(timeout);
    return result;
}

int __real_libusb_bulk_transfer(libusb_device_handle* device, unsigned char endpoint,
                                unsigned char* data, int length, int* moved, unsigned timeout);
int __wrap_libusb_bulk_transfer(libusb_device_handle* device, unsigned char endpoint,
                                unsigned char* data, int length, int* moved, unsigned timeout) {
    const int result = __real_libusb_bulk_transfer(device, endpoint, data, length, moved, timeout);
    if (result == LIBUSB_ERROR_TIMEOUT) silence += std::chrono::milliseconds(timeout);
    return result;
}
}

namespace tintoral {
namespace {

constexpr int kMostRounds = 1000;

class CountingClock final : public Clock {
  public:
    std::chrono::sys_time<std::chrono::milliseconds> now() override {
        return std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
    }
    void pause(std::chrono::microseconds duration) override { paused_ += duration; }
    std::chrono::microseconds paused() const { return paused_; }

  private:
    std::chrono::microseconds paused_{0};
};

struct Series {
    PrinterRecordPtr printer;
    UpdateOutcome outcome = UpdateOutcome::Unreachable;
    std::chrono::microseconds pauses{0};
    std::chrono::microseconds silence{0};
    std::vector<std::chrono::duration<double, std::micro>> rounds = {};
};

void runRound(Series& series) {
    CountingClock clock;
    const ScopedClock scope(clock);
    const auto start = std::chrono::steady_clock::now();
    series.outcome = updatePrinter(*series.printer);
    const auto end = std::chrono::steady_clock::now();
    series.pauses = clock.paused();
    series.silence = std::exchange(silence, {});
    series.rounds.emplace_back(end - start - series.silence);
}

const char* nameOf(UpdateOutcome outcome) {
    if (outcome == UpdateOutcome::Levels) return "levels";
    return outcome == UpdateOutcome::NoLevels ? "no-levels" : "unreachable";
}

void print(const Series& series) {
    std::printf("%s\t%s\t%lld\t%lld", series.printer->text(keys::printerId).c_str(),
                nameOf(series.outcome), static_cast<long long>(series.pauses.count()),
                static_cast<long long>(series.silence.count()));
    for (const auto round : series.rounds) std::printf("\t%.1f", round.count());
    std::puts("");
}

std::vector<Series> seriesOf(std::string_view onlyId) {
    std::vector<Series> all;
    for (const PrinterRecordPtr& printer : loadPrinterTable(UserDefaults())) {
        if (onlyId.empty() || printer->text(keys::printerId) == onlyId) all.push_back({printer});
    }
    return all;
}

int run(int rounds, std::string_view onlyId) {
    std::vector<Series> all = seriesOf(onlyId);
    for (int round = 0; round < rounds; ++round) {
        for (Series& series : all) runRound(series);
    }
    for (const Series& series : all) print(series);
    return all.empty() ? 1 : 0;
}

}  // namespace
}  // namespace tintoral

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 0;
    if (rounds < 1 || rounds > tintoral::kMostRounds || argc > 3) {
        std::fputs("usage: update_bench ROUNDS [PRINTER_ID]\n", stderr);
        return 2;
    }
    return tintoral::run(rounds, argc > 2 ? argv[2] : "");
}
