// The main window's controller: owns the printer table and the selected record for the whole run,
// updates the selected printer when asked, and shows what came of it.
//
// There is no timer: an update runs when a printer is selected, when the person asks for it, and at
// start or on re-selection when the last levels are older than ten minutes. Updates block the
// window for at most the time-outs of the transport, under a wait cursor.
#pragma once

#include <QMainWindow>
#include <QObject>
#include <memory>
#include <vector>

#include "app/browser_controller.h"
#include "app/low_ink_notifier.h"
#include "monitor/printer_popup.h"
#include "records/icon_path_table.h"
#include "records/model_table.h"
#include "records/printer_table.h"
#include "records/user_defaults.h"

class QAction;
class QImage;

namespace Ui {
class MainWindow;
}

namespace tintoral {

class AboutPanelController;
class DiagWindowController;
class InkHistoryController;
class PrinterListPanel;
class StatusIcon;

class AppController : public QObject {
    Q_OBJECT

  public:
    // The files are those of the person who runs the program. `sources` find the printers that the
    // selection window offers.
    explicit AppController(PrinterSources sources);
    ~AppController() override;

    // Start-up: loads and prunes the printer table, fills the pop-up and shows the last levels of
    // the selected printer. What may block comes once the window is painted: announced printers
    // come to be known, an empty table is filled with the printers that are found, and stale levels
    // of the selected printer are updated.
    void awakeFromNib();

    // Selects a printer, adds it when it is new, and updates it.
    void doSelectPrinter(const PrinterRecordPtr& printer);

    QMainWindow& myWindow() { return *window_; }

    // Brings the window to the person, see raise_window.h.
    void raise(const QByteArray& activationToken = {});

  public Q_SLOTS:
    void printerIdPoupSelected(int index);
    void updateButtonPressed();
    void menuItemNozzleOptions();
    void useModelIconMenuSelected();
    void notifyLowInkMenuSelected();
    void showSelectionWindow();
    void addByAddress();
    void showInkHistory();
    void diagnoseMenuSelected();
    void showPrinterListPanel();
    void showAboutPanel();
    void openProductPage();

    // Saves which printer is selected, and what announcements have told since the last update.
    void keepSelection();

  protected:
    // The window's first painting: finishStart(); its close: windowWillClose().
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void loadRecords();
    void connectActions();
    void observeNotifications() const;
    void handlePrinterFound(const PrinterRecordPtr& printer);
    void handlePrinterRemoved(const PrinterRecordPtr& printer);

    void finishStart();
    void discoverPrinters();
    BrowserController& browserWindow();
    PrinterListPanel& printerListPanel();

    void fillPopup();
    void restoreLastLevels(PrinterRecord& printer) const;
    void addNewPrinter(const PrinterRecordPtr& printer);
    void updateWhenStale();
    void updateAndKeep(PrinterRecord& printer);
    void forgetPrinter(const std::string& printerId);
    void storePrinterTable();
    void saveSettings();

    void updateUI();
    void updateStatus();
    void updateListPanel();
    void updatePopup();
    void changeWindowHeightByColor(int inkCount);
    void updateMenus();
    void updateDockIcon();
    QImage dockBackground() const;
    void windowWillClose();
    QAction* maintenanceAction(int option) const;

    std::unique_ptr<QMainWindow> window_;
    std::unique_ptr<Ui::MainWindow> ui_;
    std::unique_ptr<StatusIcon> statusIcon_;
    PrinterSources sources_;
    std::unique_ptr<BrowserController> browserWindow_;
    std::unique_ptr<InkHistoryController> historyWindow_;
    std::unique_ptr<DiagWindowController> diagWindow_;
    std::unique_ptr<PrinterListPanel> printerListPanel_;  // made when it is first shown
    std::unique_ptr<AboutPanelController> aboutPanel_;    // likewise
    UserDefaults defaults_;
    ModelTable printerItemDict_;
    PrinterTable printerTable_;
    LowInkNotifier lowInkNotifier_{printerTable_, defaults_};
    std::vector<IconPathEntry> iconPathTable_;
    PrinterPopup popup_;
    PrinterRecordPtr printerDict_;  // the selected record, or none
    bool useModelIcon_ = false;
    bool isPainted_ = false;
};

}  // namespace tintoral
