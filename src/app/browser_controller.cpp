#include "app/browser_controller.h"

#include "app/add_by_address_dialog.h"
#include "app/notification_center.h"
#include "ui_PrinterBrowser.h"

namespace tintoral {

BrowserController::BrowserController(const ModelTable& models, QWidget* parent)
    : QDialog(parent), models_(models), ui_(std::make_unique<Ui::PrinterBrowser>()) {
    ui_->setupUi(this);
    connect(ui_->addByAddressButton, &QPushButton::clicked, this,
            &BrowserController::addByAddressPressed);
}

BrowserController::~BrowserController() = default;

void BrowserController::showWindow() {
    show();
    raise();
    activateWindow();
}

void BrowserController::addByAddressPressed() {
    AddByAddressDialog dialog(models_, isVisible() ? this : parentWidget());
    if (dialog.exec() != QDialog::Accepted) return;
    close();
    Q_EMIT NotificationCenter::defaultCenter().VTnewPrinterSelected(dialog.printer());
}

}  // namespace tintoral
