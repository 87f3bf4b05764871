#include "support/avahi_daemon.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <thread>
#include <utility>

namespace tintoral::test {
namespace {

constexpr const char* kScript = TINTORAL_SOURCE_DIR "/tests/support/avahi_up.sh";
constexpr const char* kBusSocket = "/run/dbus/system_bus_socket";

}  // namespace

bool hasAvahi() {
    return std::system(
               "PATH=$PATH:/usr/sbin\n"
               "command -v avahi-daemon >/dev/null && command -v dbus-daemon >/dev/null") == 0;
}

AvahiChild::AvahiChild(const char* what, std::filesystem::path socket)
    : socket_(std::move(socket)) {
    using namespace std::chrono_literals;
    constexpr int kAttempts = 1000;
    std::filesystem::remove(socket_);
    const std::string folder = folder_.path();
    pid_ = ::fork();
    if (pid_ == 0) {
        ::execl(kScript, kScript, what, folder.c_str(), nullptr);
        ::_exit(127);
    }
    for (int i = 0; i < kAttempts; ++i) {
        if (std::filesystem::exists(socket_)) return;
        std::this_thread::sleep_for(10ms);
    }
    throw std::runtime_error(std::string("no ") + what);
}

AvahiChild::~AvahiChild() {
    if (pid_ > 0) {
        ::kill(pid_, SIGTERM);
        ::waitpid(pid_, nullptr, 0);
    }
    std::filesystem::remove(socket_);
}

void AvahiChild::freeze() const {
    ::kill(pid_, SIGSTOP);
}

void AvahiChild::thaw() const {
    ::kill(pid_, SIGCONT);
}

MessageBus::MessageBus() : AvahiChild("bus", kBusSocket) {}

AvahiDaemon::AvahiDaemon() : AvahiChild("daemon", "/run/avahi-daemon/socket") {}

}  // namespace tintoral::test
