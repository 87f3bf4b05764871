#include "app/about_panel_controller.h"

#include <QFile>
#include <QPixmap>

#include "app/dock_icon.h"
#include "app/raise_window.h"
#include "ui_AboutPanel.h"

// In a static library the linker would leave the resources out; the macro cannot stand in a
// namespace.
static void initReadMe() {
    Q_INIT_RESOURCE(tintoral);
}

namespace tintoral {
namespace {

QString title() {
    return QStringLiteral(
               "<h2>Tintoral %1</h2><p>How much ink or toner is left in your printers, and what "
               "state they are in.</p><p><a href=\"%2\">%2</a></p>")
        .arg(QStringLiteral(TINTORAL_VERSION),
             QStringLiteral(TINTORAL_PRODUCT_PAGE).toHtmlEscaped());
}

QString readMe() {
    initReadMe();
    QFile file(QStringLiteral(":/ReadMe.md"));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

}  // namespace

AboutPanelController::AboutPanelController(QWidget* parent)
    : QDialog(parent), ui_(std::make_unique<Ui::AboutPanel>()) {
    ui_->setupUi(this);
    ui_->pictureView->setPixmap(QPixmap::fromImage(applicationPicture()));
    ui_->titleField->setText(title());
    ui_->readMeView->setMarkdown(readMe());
}

AboutPanelController::~AboutPanelController() = default;

void AboutPanelController::showWindow() {
    raiseWindow(*this);
}

}  // namespace tintoral
