#include "app/end_signals.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>

namespace tintoral {
namespace {

constexpr int kSignals[] = {SIGTERM, SIGINT, SIGHUP};

std::atomic<int> signalPipe = -1;
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler reads it");

void handleSignal(int) {
    const int before = errno;
    const char byte = 0;
    // A full pipe has the message already.
    [[maybe_unused]] const ssize_t written = ::write(signalPipe, &byte, 1);
    errno = before;
}

bool isIgnored(int signal) {
    struct sigaction present {};
    return ::sigaction(signal, nullptr, &present) == 0 && present.sa_handler == SIG_IGN;
}

void setHandler(int signal, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    if (!isIgnored(signal)) ::sigaction(signal, &action, nullptr);
}

}  // namespace

EndSignals::EndSignals(QWidget& window) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) return;
    reader_.reset(ends[0]);
    writer_.reset(ends[1]);
    signalPipe = writer_.get();
    notifier_.emplace(reader_.get(), QSocketNotifier::Read);
    QObject::connect(&*notifier_, &QSocketNotifier::activated, &window, [this, &window] {
        notifier_->setEnabled(false);
        window.close();
    });
    for (const int signal : kSignals) setHandler(signal, handleSignal);
}

EndSignals::~EndSignals() {
    for (const int signal : kSignals) setHandler(signal, SIG_DFL);
}

}  // namespace tintoral
