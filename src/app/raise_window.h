// Brings a window to the person.
#pragma once

#include <QByteArray>

class QWidget;

namespace tintoral {

// Shows the window, also when it is minimised or covered, and asks for the focus, for the dialog in
// front of it where one is open. `activationToken` is the desktop's permission to take the focus;
// without one (empty) a desktop may only say that the window wants attention.
void raiseWindow(QWidget& window, const QByteArray& activationToken = {});

}  // namespace tintoral
