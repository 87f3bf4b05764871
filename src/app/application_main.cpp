// The window module's one entry, called by the executable when it is started as a window.
#include <QApplication>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "app/app_controller.h"
#include "app/end_signals.h"
#include "app/system_sources.h"

namespace {

// Without a display the toolkit would end the program with an abort and a page of advice.
void reportNoDisplay(QtMsgType type, const QMessageLogContext&, const QString&) {
    if (type != QtFatalMsg) return;
    std::fputs("Tintoral: the display cannot be opened\n", stderr);
    std::_Exit(EXIT_FAILURE);
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int applicationMain(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);  // what is said on standard error may have lost its reader
    QCoreApplication::setApplicationName(QStringLiteral("Tintoral"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TINTORAL_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral(TINTORAL_APP_ID));
    const QtMessageHandler usual = qInstallMessageHandler(reportNoDisplay);
    QApplication application(argc, argv);
    qInstallMessageHandler(usual);
    QApplication::setQuitOnLastWindowClosed(
        false);  // closing the main window quits; a dialog's close does not
    tintoral::AppController controller(tintoral::systemPrinterSources());
    const tintoral::EndSignals endSignals(controller.myWindow());
    QObject::connect(&application, &QGuiApplication::commitDataRequest, &controller,
                     &tintoral::AppController::keepSelection);
    controller.awakeFromNib();
    controller.myWindow().show();
    return QApplication::exec();
}
