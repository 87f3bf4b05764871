#include "support/nginx_server.h"

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <stdexcept>
#include <thread>

#include "transport/net/sockets.h"

namespace tintoral::test {
namespace {

constexpr const char* kAddress = "127.0.0.1";

std::string configuration(std::uint16_t port, const std::string& locations) {
    return R"(
daemon off; master_process off; pid nginx.pid; error_log stderr crit;
events { worker_connections 16; }
http {
    access_log off; keepalive_timeout 60;
    client_body_temp_path body; proxy_temp_path proxy; fastcgi_temp_path fastcgi;
    uwsgi_temp_path uwsgi; scgi_temp_path scgi;
    server { root .; listen )" +
           std::string(kAddress) + ":" + std::to_string(port) + ";" + locations + "} }\n";
}

void waitUntilListening(std::uint16_t port) {
    for (int i = 0; i < 100; ++i) {
        if (TcpOpenConnection(kAddress, port).valid()) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    throw std::runtime_error("nginx does not listen");
}

}  // namespace

NginxServer::NginxServer(const char* executable, std::uint16_t port, const std::string& locations,
                         const std::map<std::string, std::string>& files) {
    writeFile(folder_ / "conf", configuration(port, locations));
    for (const auto& [name, content] : files) writeFile(folder_ / name, content);
    const std::string prefix = folder_ / "";
    process_ = ::fork();
    if (process_ == 0) {
        ::execl(executable, executable, "-e", "stderr", "-p", prefix.c_str(), "-c", "conf",
                nullptr);
        ::_exit(127);
    }
    waitUntilListening(port);
}

NginxServer::~NginxServer() {
    if (process_ <= 0) return;
    ::kill(process_, SIGTERM);
    ::waitpid(process_, nullptr, 0);
}

}  // namespace tintoral::test
