// The printer-selection window.
//
// Printers that announce themselves are listed here when their discovery lands; until then the
// window offers what needs none: adding a printer by its address. A choice is announced as
// VTnewPrinterSelected.
#pragma once

#include <QDialog>
#include <memory>

#include "records/model_table.h"

namespace Ui {
class PrinterBrowser;
}

namespace tintoral {

class BrowserController : public QDialog {
    Q_OBJECT

  public:
    // `models` fills the list of makers and models; it outlives this window.
    BrowserController(const ModelTable& models, QWidget* parent);
    ~BrowserController() override;

  public Q_SLOTS:
    void showWindow();
    void addByAddressPressed();

  private:
    const ModelTable& models_;
    std::unique_ptr<Ui::PrinterBrowser> ui_;
};

}  // namespace tintoral
