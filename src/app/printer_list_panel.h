// The printer list: all printers that the program knows, with their last levels, status and last
// update, to look over, to choose one for the main window, to update one or to forget one.
//
// The panel keeps no printers of its own: the controller hands it the table whenever something has
// changed, and does what the buttons ask for. A choice is announced as VTnewPrinterSelected.
#pragma once

#include <QDialog>
#include <QSortFilterProxyModel>
#include <functional>
#include <memory>
#include <string>

#include "app/printer_list_model.h"

namespace Ui {
class PrinterList;
}

namespace tintoral {

// What the panel asks of the controller, which calls setPrinters() when it is done.
struct PrinterListActions {
    std::function<void(const PrinterRecordPtr& printer)> update;  // one update; may block
    std::function<void(const std::string& printerId)> forget;     // the person agreed already
};

class PrinterListPanel : public QDialog {
    Q_OBJECT

  public:
    PrinterListPanel(PrinterListActions actions, QWidget* parent);
    ~PrinterListPanel() override;

    // Shows the records as they are now; the chosen row stays chosen.
    void setPrinters(const PrinterTable& printers);

    // Opens the panel, with the row of `selected` (may be null) chosen.
    void showWindow(const PrinterRecordPtr& selected);

  public Q_SLOTS:
    // Each acts on the chosen row, and does nothing without one.
    void selectPrinter();
    void updateButtonPressed();
    // Asks first; says that the history stays.
    void forgetButtonPressed();

  private:
    void setUpTable();
    void connectWidgets();
    void updateButtons();
    bool mayForget(const QString& name);
    PrinterRecordPtr chosenPrinter() const;
    void chooseRowOf(const std::string& printerId);

    PrinterListActions actions_;
    PrinterListModel model_;
    QSortFilterProxyModel sorted_;
    std::unique_ptr<Ui::PrinterList> ui_;
};

}  // namespace tintoral
