// A real nginx in a folder of its own, as the user who runs the test.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <string>

#include "support/temporary_folder.h"

namespace tintoral::test {

class NginxServer {
  public:
    // Starts the executable on 127.0.0.1 and waits until it listens; throws std::runtime_error
    // after 5 s. `locations` are those of its only server, whose root holds the files (names and
    // contents).
    NginxServer(const char* executable, std::uint16_t port, const std::string& locations,
                const std::map<std::string, std::string>& files);
    ~NginxServer();
    NginxServer(const NginxServer&) = delete;
    NginxServer& operator=(const NginxServer&) = delete;

  private:
    TemporaryFolder folder_;
    pid_t process_ = -1;
};

}  // namespace tintoral::test
