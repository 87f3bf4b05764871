// Conditions that a test puts the program under while the object lives.
#pragma once

#include <sys/resource.h>
#include <unistd.h>

#include <csignal>

namespace tintoral::test {

// No file can grow beyond 4 KiB: a write past that fails as on a full disk.
class FullDisk {
  public:
    FullDisk() : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &previous_);
        rlimit limit = previous_;
        limit.rlim_cur = 4096;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() {
        ::setrlimit(RLIMIT_FSIZE, &previous_);
        std::signal(SIGXFSZ, handler_);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

  private:
    rlimit previous_{};
    void (*handler_)(int);
};

// No file, socket or pipe can be opened.
class NoMoreFiles {
  public:
    NoMoreFiles() {
        ::getrlimit(RLIMIT_NOFILE, &previous_);
        rlimit limit = previous_;
        limit.rlim_cur = 0;
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
    ~NoMoreFiles() { ::setrlimit(RLIMIT_NOFILE, &previous_); }
    NoMoreFiles(const NoMoreFiles&) = delete;
    NoMoreFiles& operator=(const NoMoreFiles&) = delete;

  private:
    rlimit previous_{};
};

// Permissions count, also for a test that root runs.
class WithoutPrivileges {
  public:
    WithoutPrivileges() : user_(::geteuid()) { active_ = user_ != 0 || ::seteuid(65534) == 0; }
    ~WithoutPrivileges() {
        if (user_ == 0 && ::seteuid(user_) != 0) ::_exit(1);
    }
    WithoutPrivileges(const WithoutPrivileges&) = delete;
    WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;
    bool active() const { return active_; }

  private:
    uid_t user_;
    bool active_;
};

}  // namespace tintoral::test
