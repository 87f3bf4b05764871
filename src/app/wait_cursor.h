// While it lives, the pointer shows that the program is waiting for a printer.
#pragma once

#include <QGuiApplication>

namespace tintoral {

class WaitCursor {
  public:
    WaitCursor() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    ~WaitCursor() { QGuiApplication::restoreOverrideCursor(); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;
};

}  // namespace tintoral
