// One window for each person's settings: a later start hands over to the window that is open.
//
// Two files in the session's runtime folder ($XDG_RUNTIME_DIR, or beside the settings where that is
// unset):
//
//   tintoral-HASH.lock     locked (flock) by the process with the window; free when it is killed
//   tintoral-HASH.socket   on which that process hears of later starts; for its user alone
//
// HASH is of the path of the settings, so that with another home folder there is another window. A
// later start sends one line, "raise TOKEN\n", and ends; TOKEN, which may be empty, is the one with
// which the desktop started it (XDG activation, startup notification), and lets the window take the
// focus.
#pragma once

#include <QByteArray>
#include <filesystem>
#include <functional>
#include <memory>

#include "support/unique_fd.h"

class QObject;

namespace tintoral {

class SingleInstance {
  public:
    using RaiseHandler = std::function<void(const QByteArray& activationToken)>;

    // `settings` is the file of the settings, which need not exist; an empty path stands for none,
    // and then nothing is shared or guarded.
    explicit SingleInstance(const std::filesystem::path& settings);

    // To be called once, before there is an application object. True when the open window has been
    // told to come to the front: this process has nothing left to do. It has been told even when it
    // is busy and obeys later. False when this process shall open a window: the first one, or one
    // without a guard, after a line on standard error, where the folder cannot be written, the path
    // is too long for a socket, or the other process has not answered for 5 s.
    bool handOver();

    // Hears later starts on the application's main loop while the result lives, and calls `raise`
    // for each; null when this process is not guarded. What is not such a line is ignored; a caller
    // is dropped after 4096 bytes or 5 s.
    std::unique_ptr<QObject> listen(const RaiseHandler& raise) const;

  private:
    enum class Lock { Mine, Taken, Impossible };
    Lock tryLock();
    bool tellOther() const;

    std::filesystem::path lockPath_;
    std::filesystem::path socketPath_;
    UniqueFd lock_;  // valid: this process has the window
};

}  // namespace tintoral
