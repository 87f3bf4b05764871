#include "support/cups_server.h"

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace tintoral::test {
namespace {

constexpr const char* kStartScript = TINTORAL_SOURCE_DIR "/tests/support/cups/start_server.sh";

std::string printersConf(const std::vector<CupsQueue>& queues) {
    std::ostringstream out;
    for (const CupsQueue& queue : queues) {
        out << "<Printer " << queue.name << ">\nDeviceURI file:/dev/null\n"
            << "State " << queue.state << "\nAccepting Yes\n";
        if (!queue.message.empty()) out << "StateMessage " << queue.message << "\n";
        if (!queue.location.empty()) out << "Location " << queue.location << "\n";
        for (const std::string& attribute : queue.attributes)
            out << "Attribute " << attribute << "\n";
        out << "</Printer>\n";
    }
    return out.str();
}

bool answers() {
    return std::system("lpstat -h 127.0.0.1:631 -r 2>/dev/null | grep -q 'is running'") == 0;
}

}  // namespace

bool hasCupsServer() {
    return std::system("PATH=$PATH:/usr/sbin; command -v cupsd lpstat >/dev/null") == 0;
}

CupsServer::CupsServer(const std::vector<CupsQueue>& queues) {
    constexpr int kAttempts = 200;  // of 50 ms
    const std::string folder = folder_ / "";
    std::filesystem::create_directory(folder_ / "etc");
    writeFile(folder_ / "etc/printers.conf", printersConf(queues));
    pid_ = ::fork();
    if (pid_ == 0) {
        ::execl(kStartScript, kStartScript, folder.c_str(), nullptr);
        ::_exit(127);
    }
    for (int i = 0; i < kAttempts; ++i) {
        if (answers()) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    throw std::runtime_error("cupsd does not answer");
}

CupsServer::~CupsServer() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGTERM);
    ::waitpid(pid_, nullptr, 0);
}

}  // namespace tintoral::test
