// The IPP client against the print server's own sample printer, which wants an Avahi daemon.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <string>
#include <thread>

#include "netproto/ipp.h"
#include "support/avahi_daemon.h"

namespace tintoral {
namespace {

// ippeveprinter on port 8631, ended when this goes.
class SamplePrinter {
  public:
    SamplePrinter() : pid_(::fork()) {
        if (pid_ != 0) return;
        ::execlp(IPPEVEPRINTER_EXECUTABLE, "ippeveprinter", "-r", "off", "-p", "8631", "-d",
                 spool_.path().c_str(), "Sample", nullptr);
        ::_exit(127);
    }
    ~SamplePrinter() {
        ::kill(pid_, SIGTERM);
        ::waitpid(pid_, nullptr, 0);
    }
    SamplePrinter(const SamplePrinter&) = delete;
    SamplePrinter& operator=(const SamplePrinter&) = delete;

  private:
    test::TemporaryFolder spool_;
    pid_t pid_;
};

struct Answer {
    int result = 0;
    StatusText status;
    DumpText dump;
};

// Asks until the printer, which takes a moment to start, tells its state; 10 s at the most.
Answer ask() {
    Answer answer;
    for (int attempt = 0; attempt < 100 && answer.status.empty(); ++attempt) {
        InkQuantities inks;
        SupplyNames names;
        SupplyNames colors;
        answer.dump.clear();
        answer.result = ippGetPrinterStatusAndQuantities(
            "ipp://127.0.0.1:8631/ipp/print", answer.status, inks, names, colors, &answer.dump);
        if (answer.status.empty()) std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return answer;
}

TEST(IppEvePrinter, TellsItsStateButNoLevels) {
    const test::MessageBus bus;
    const test::AvahiDaemon daemon;
    const SamplePrinter printer;
    const Answer answer = ask();
    EXPECT_EQ(answer.status.view(), "Idle");
    EXPECT_EQ(answer.result, 0);
    EXPECT_NE(answer.dump.view().find("Printer State = 3\n"), std::string_view::npos)
        << answer.dump.c_str();
}

}  // namespace
}  // namespace tintoral
