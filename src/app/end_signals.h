// The end of a session: SIGTERM, SIGINT and SIGHUP close the main window as its person would.
#pragma once

#include <QSocketNotifier>
#include <QWidget>
#include <optional>

#include "support/unique_fd.h"

namespace tintoral {

// While it lives, the first of these signals closes the window as soon as the main loop runs: an
// update that is under way is finished and kept. The same one again ends the program at once. A
// signal that the program was started to ignore (nohup) stays ignored. One object per program.
class EndSignals {
  public:
    explicit EndSignals(QWidget& window);
    ~EndSignals();
    EndSignals(const EndSignals&) = delete;
    EndSignals& operator=(const EndSignals&) = delete;

  private:
    UniqueFd reader_;
    UniqueFd writer_;
    std::optional<QSocketNotifier> notifier_;
};

}  // namespace tintoral
