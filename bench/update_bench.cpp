// `update_bench ROUNDS [PRINTER_ID]`: asks the printers of $HOME's settings, or the one of that id,
// as the window does, in rounds. A line for each printer, its fields separated by tabs:
//
//   printer id | levels, no-levels or unreachable | pauses | silence | libusb | each round (µs)
//
// The pauses that a protocol demands (support/clock.h) are counted, not waited for. Silence is
// waited for, counted and taken off the rounds: the time-outs of those waits in which the printer
// said nothing, as it has nothing to say. So is what passes in libusb. What is left of a round is
// the program's, the system's and the printer's.
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

using Microseconds = std::chrono::duration<double, std::micro>;
using Steady = std::chrono::steady_clock;

struct Waits {
    std::chrono::microseconds silence{0};
    Microseconds libusb{0};
};
Waits waits;

// Calls a function of libusb. Its time is not ours: the bench's bus is emulated.
template <auto function, typename... Arguments>
auto inLibusb(Arguments... arguments) {
    const auto start = Steady::now();
    const auto result = function(arguments...);
    waits.libusb += Steady::now() - start;
    return result;
}

}  // namespace

// The linker puts these in the place of the functions that wait (bench/CMakeLists.txt).
extern "C" {
int __real_poll(pollfd* entries, nfds_t count, int timeout);
int __wrap_poll(pollfd* entries, nfds_t count, int timeout) {
    const int result = __real_poll(entries, count, timeout);
    if (result == 0) waits.silence += std::chrono::milliseconds(timeout);
    return result;
}

int __real_libusb_init(libusb_context** context);
int __wrap_libusb_init(libusb_context** context) {
    return inLibusb<__real_libusb_init>(context);
}

ssize_t __real_libusb_get_device_list(libusb_context* context, libusb_device*** list);
ssize_t __wrap_libusb_get_device_list(libusb_context* context, libusb_device*** list) {
    return inLibusb<__real_libusb_get_device_list>(context, list);
}

int __real_libusb_open(libusb_device* device, libusb_device_handle** handle);
int __wrap_libusb_open(libusb_device* device, libusb_device_handle** handle) {
    return inLibusb<__real_libusb_open>(device, handle);
}

int __real_libusb_claim_interface(libusb_device_handle* device, int interface);
int __wrap_libusb_claim_interface(libusb_device_handle* device, int interface) {
    return inLibusb<__real_libusb_claim_interface>(device, interface);
}

int __real_libusb_control_transfer(libusb_device_handle* device, uint8_t type, uint8_t request,
                                   uint16_t value, uint16_t index, unsigned char* data,
                                   uint16_t length, unsigned timeout);
int __wrap_libusb_control_transfer(libusb_device_handle* device, uint8_t type, uint8_t request,
                                   uint16_t value, uint16_t index, unsigned char* data,
                                   uint16_t length, unsigned timeout) {
    return inLibusb<__real_libusb_control_transfer>(device, type, request, value, index, data,
                                                    length, timeout);
}

int __real_libusb_bulk_transfer(libusb_device_handle* device, unsigned char endpoint,
                                unsigned char* data, int length, int* moved, unsigned timeout);
int __wrap_libusb_bulk_transfer(libusb_device_handle* device, unsigned char endpoint,
                                unsigned char* data, int length, int* moved, unsigned timeout) {
    const int result =
        inLibusb<__real_libusb_bulk_transfer>(device, endpoint, data, length, moved, timeout);
    if (result == LIBUSB_ERROR_TIMEOUT) {
        waits.silence += std::chrono::milliseconds(timeout);
        waits.libusb -= std::chrono::milliseconds(timeout);
    }
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
    Waits waits = {};  // of the last round
    std::vector<Microseconds> rounds = {};
};

void runRound(Series& series) {
    CountingClock clock;
    const ScopedClock scope(clock);
    const auto start = Steady::now();
    series.outcome = updatePrinter(*series.printer);
    const auto end = Steady::now();
    series.pauses = clock.paused();
    series.waits = std::exchange(waits, {});
    series.rounds.push_back(end - start - series.waits.silence - series.waits.libusb);
}

const char* nameOf(UpdateOutcome outcome) {
    if (outcome == UpdateOutcome::Levels) return "levels";
    return outcome == UpdateOutcome::NoLevels ? "no-levels" : "unreachable";
}

void print(const Series& series) {
    std::printf("%s\t%s\t%lld\t%lld\t%.0f", series.printer->text(keys::printerId).c_str(),
                nameOf(series.outcome), static_cast<long long>(series.pauses.count()),
                static_cast<long long>(series.waits.silence.count()), series.waits.libusb.count());
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
