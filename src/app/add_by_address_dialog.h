// "Add by address…": names a printer that announces nothing, asks at the address who answers, and
// adds it.
#pragma once

#include <QDialog>
#include <memory>

#include "monitor/address_probe.h"
#include "records/model_table.h"

namespace Ui {
class AddByAddressDialog;
}

namespace tintoral {

class AddByAddressDialog : public QDialog {
    Q_OBJECT

  public:
    // `models` offers makers and models to choose from; it outlives the dialog.
    AddByAddressDialog(const ModelTable& models, QWidget* parent);
    ~AddByAddressDialog() override;

    // The printer that the person asked for, as the last test left it; good once the dialog was
    // accepted.
    PrinterRecordPtr printer() const;

  public Q_SLOTS:
    // Asks at the address and says what came back. An empty maker and model is filled from the
    // printer's own answer.
    void testButtonPressed();
    void accept() override;

  private:
    AddressRequest request() const;
    void connectionChanged();
    void say(const std::string& words);
    bool sayProblem();

    const ModelTable& models_;
    AddressRequest testedRequest_;
    PrinterRecordPtr testedPrinter_;
    std::unique_ptr<Ui::AddByAddressDialog> ui_;
};

}  // namespace tintoral
