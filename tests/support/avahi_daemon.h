// A real message bus and a real Avahi daemon on it, in the private network namespace of the test
// (netns.sh). Each is there from construction to destruction.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>

#include "support/temporary_folder.h"

namespace tintoral::test {

// False where one of the two is not installed.
bool hasAvahi();

// A child process that runs avahi_up.sh.
class AvahiChild {
  public:
    // Waits until `socket` takes connections; throws std::runtime_error after 10 s.
    AvahiChild(const char* what, std::filesystem::path socket);
    ~AvahiChild();
    AvahiChild(const AvahiChild&) = delete;
    AvahiChild& operator=(const AvahiChild&) = delete;

    // A frozen one takes connections and calls, and answers none.
    void freeze() const;
    void thaw() const;

  private:
    TemporaryFolder folder_;
    std::filesystem::path socket_;
    pid_t pid_;
};

class MessageBus : AvahiChild {
  public:
    MessageBus();
};

class AvahiDaemon : public AvahiChild {
  public:
    AvahiDaemon();
};

}  // namespace tintoral::test
