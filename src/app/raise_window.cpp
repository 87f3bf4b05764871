#include "app/raise_window.h"

#include <QApplication>
#include <QWidget>

namespace tintoral {

void raiseWindow(QWidget& window, const QByteArray& activationToken) {
    // The toolkit's Wayland part takes the token from here, and removes it.
    if (!activationToken.isEmpty() && QGuiApplication::platformName().startsWith(u"wayland"))
        qputenv("XDG_ACTIVATION_TOKEN", activationToken);
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    QWidget* dialog = QApplication::activeModalWidget();
    (dialog ? dialog : &window)->activateWindow();
}

}  // namespace tintoral
