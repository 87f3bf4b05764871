// A real cupsd on 127.0.0.1:631 of a private network, with queues that it believes to have had
// before it started. It wants to run as somebody else than root (NS_UID).
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "support/temporary_folder.h"

namespace tintoral::test {

// A queue that prints to /dev/null. `attributes` are "NAME VALUE,VALUE" as printers.conf keeps
// them.
struct CupsQueue {
    std::string name;
    std::string state = "Idle";  // or "Stopped"
    std::string message;
    std::string location;
    std::vector<std::string> attributes;
};

// False where no cupsd is installed.
bool hasCupsServer();

class CupsServer {
  public:
    // Starts the server and waits until it answers; throws std::runtime_error after 10 s.
    explicit CupsServer(const std::vector<CupsQueue>& queues);
    ~CupsServer();
    CupsServer(const CupsServer&) = delete;
    CupsServer& operator=(const CupsServer&) = delete;

  private:
    TemporaryFolder folder_;
    pid_t pid_ = -1;
};

}  // namespace tintoral::test
