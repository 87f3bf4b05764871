// The printer-selection window: all printers that announce themselves, hang on a USB cable or
// answer when asked, to choose one from. A choice is announced as VTnewPrinterSelected.
//
// Looking for printers happens when the window is shown and when Refresh is pressed: USB and BJNP
// are scanned, the announced services join them, and then the IPP queues are asked for their
// supplies one by one. Each of these steps blocks under a wait cursor; between two steps the window
// lives, and closing it ends the looking. Announcements that come later change the list, they ask
// nobody.
#pragma once

#include <QDialog>
#include <QSortFilterProxyModel>
#include <QTimer>
#include <chrono>
#include <deque>
#include <memory>

#include "app/printer_sources.h"
#include "app/printer_table_model.h"
#include "records/model_table.h"

namespace Ui {
class PrinterBrowser;
}

namespace tintoral {

class BrowserController : public QDialog {
    Q_OBJECT

  public:
    // One look asks at most so many IPP queues, and asks no further one after this time. The last
    // one may take its own time-outs beyond it.
    static constexpr std::size_t kMaximumProbes = 64;
    static constexpr std::chrono::seconds kProbingTime{30};

    // `models` fills the list of makers and models; it outlives this window.
    BrowserController(const ModelTable& models, PrinterSources sources, QWidget* parent);
    ~BrowserController() override;

    // Announced printers come to be known from now on. A second call does nothing.
    void startBonjourBrowser();

    // Each appends the records of one source to the table and returns how many it found.
    std::size_t browseUSB(PrinterTable& table) const;
    std::size_t browseBJNP(PrinterTable& table) const;
    // As long as no announced printer has an address, the first raw-port printer that is found
    // later is selected by itself (autoSelectMode), unless a printer is selected or the window is
    // shown before.
    std::size_t browseBonjourPrinters(PrinterTable& table);

  public Q_SLOTS:
    void showWindow();
    void refreshListButtonPressed();
    // Announces the selected row's record and closes the window; beeps when there is none.
    void selectButtonPressed();
    void cancelButtonPressed();
    void addByAddressPressed();
    // The table shows the records as they are now; the selected row stays selected.
    void updateUI();

  private:
    void connectWidgets();
    void setUpTable();
    void observeNotifications();
    void handlePrinterFound(const PrinterRecordPtr& printer);
    void handlePrinterRemoved(const PrinterRecordPtr& printer);
    void updateSoon();
    void updateSelectButton();
    void updateWords();

    void lookFurther();
    void gatherPrinters();
    void queueProbes();
    void probeNext();
    void stopLooking();

    PrinterRecordPtr selectedPrinter() const;
    void selectRowOf(const PrinterRecordPtr& printer);

    const ModelTable& models_;
    PrinterSources sources_;
    bool isBonjourStarted_ = false;
    bool autoSelectMode_ = false;

    PrinterTable printerTable_;
    PrinterTableModel model_;
    QSortFilterProxyModel printerTable2_;  // the same, as sorted

    // A look under way: not gathered yet, or queues left to ask.
    enum class Looking { No, Gathering, Probing };
    Looking looking_ = Looking::No;
    std::deque<PrinterRecordPtr> toProbe_;
    std::chrono::sys_time<std::chrono::milliseconds> probingEnd_;
    QTimer nextStep_;
    QTimer nextUpdate_;

    std::unique_ptr<Ui::PrinterBrowser> ui_;
};

}  // namespace tintoral
