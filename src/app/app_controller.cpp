#include "app/app_controller.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDesktopServices>
#include <QEvent>
#include <QLocale>
#include <QMenu>
#include <QTimer>
#include <QUrl>
#include <algorithm>

#include "app/about_panel_controller.h"
#include "app/diag_window_controller.h"
#include "app/dock_icon.h"
#include "app/ink_history_controller.h"
#include "app/notification_center.h"
#include "app/printer_list_panel.h"
#include "app/raise_window.h"
#include "app/save_notice.h"
#include "app/shown_text.h"
#include "app/status_icon.h"
#include "app/wait_cursor.h"
#include "history/ink_history_store.h"
#include "monitor/record_rules.h"
#include "monitor/update_cycle.h"
#include "records/maintenance_items.h"
#include "records/model_merge.h"
#include "support/file_read.h"
#include "ui_MainWindow.h"

namespace tintoral {
namespace {

std::vector<std::string> rgbColorsOf(const PrinterRecord* printer) {
    return printer ? printer->texts(keys::rgbColors).value_or(std::vector<std::string>())
                   : std::vector<std::string>();
}

const Dictionary* inkDictOf(const PrinterRecord* printer) {
    return printer ? printer->dictionary(keys::inkDict) : nullptr;
}

QString lastUpdateText(const Dictionary* inkDict) {
    const auto date = inkDict ? inkDict->date(keys::date) : std::nullopt;
    if (!date) return QStringLiteral("Last update: not updated yet");
    const QDateTime local = QDateTime::fromSecsSinceEpoch(date->time_since_epoch().count());
    return QStringLiteral("Last update: %1").arg(QLocale().toString(local, QLocale::ShortFormat));
}

// The first entry of the model decides, whether it names a picture or not.
std::string modelIconPath(const std::vector<IconPathEntry>& table,
                          const std::string& makerAndModel) {
    const auto entry = std::ranges::find(table, makerAndModel, &IconPathEntry::modelname);
    return entry == table.end() ? std::string() : entry->iconPath.value_or(std::string());
}

// The path is a PPD's: what lies there may be no picture, nor even a file that ends.
QImage pictureFrom(const std::string& path) {
    constexpr std::size_t kLargest = 16 << 20;
    std::error_code error;
    const std::string bytes = readFileStart(path, kLargest, error);
    return QImage::fromData(QByteArrayView(bytes));
}

}  // namespace

AppController::AppController(PrinterSources sources)
    : window_(std::make_unique<QMainWindow>()),
      ui_(std::make_unique<Ui::MainWindow>()),
      sources_(std::move(sources)) {
    ui_->setupUi(window_.get());
    window_->layout()->setSizeConstraint(QLayout::SetFixedSize);
    window_->installEventFilter(this);
}

AppController::~AppController() = default;

void AppController::awakeFromNib() {
    loadRecords();
    observeNotifications();
    fillPopup();
    prepareHistoryFolder();
    historyWindow_ = std::make_unique<InkHistoryController>(window_.get());
    if (printerDict_) restoreLastLevels(*printerDict_);
    iconPathTable_ = makeIconPathTable();
    statusIcon_ = std::make_unique<StatusIcon>(*ui_->actionUpdate, *ui_->actionQuit, this);
    connectActions();
    updateUI();
    statusIcon_->show();
}

void AppController::finishStart() {
    browserWindow().startBonjourBrowser();
    if (printerTable_.empty()) discoverPrinters();
    updateWhenStale();
}

// All printers that are found are kept, the first one is selected.
void AppController::discoverPrinters() {
    const WaitCursor waiting;
    PrinterTable found;
    BrowserController& browser = browserWindow();
    if (browser.browseUSB(found) == 0 && browser.browseBJNP(found) == 0)
        browser.browseBonjourPrinters(found);
    std::erase_if(found,
                  [](const PrinterRecordPtr& printer) { return !maySelectByItself(*printer); });
    for (const PrinterRecordPtr& printer : found) {
        if (!popup_.find(printer->text(keys::printerId))) addNewPrinter(printer);
    }
    if (!found.empty()) doSelectPrinter(found.front());
}

void AppController::loadRecords() {
    printerItemDict_ = ModelTable::load(modelTablePath());
    printerTable_ = loadPrinterTable(defaults_);
    prunePrinterTable(printerTable_, defaults_.printerId(), printerItemDict_);
    storePrinterTable();
    printerDict_ = findPrinter(printerTable_, defaults_.printerId());
    useModelIcon_ = defaults_.useModelIcon();
}

void AppController::connectActions() {
    const auto whenTriggered = [this](QAction* action, auto slot) {
        connect(action, &QAction::triggered, this, slot);
    };
    connect(ui_->printerIdPopup, &QComboBox::activated, this,
            &AppController::printerIdPoupSelected);
    connect(ui_->updateButton, &QPushButton::clicked, this, &AppController::updateButtonPressed);
    whenTriggered(ui_->actionUpdate, &AppController::updateButtonPressed);
    whenTriggered(ui_->actionSelectPrinter, &AppController::showSelectionWindow);
    whenTriggered(ui_->actionAddByAddress, &AppController::addByAddress);
    whenTriggered(ui_->actionPrinterList, &AppController::showPrinterListPanel);
    whenTriggered(ui_->actionPrintNozzleCheckPattern, &AppController::menuItemNozzleOptions);
    whenTriggered(ui_->actionNozzleCleaning, &AppController::menuItemNozzleOptions);
    whenTriggered(ui_->actionCleaningAndTestPrint, &AppController::menuItemNozzleOptions);
    whenTriggered(ui_->actionUseModelIcon, &AppController::useModelIconMenuSelected);
    whenTriggered(ui_->actionNotifyLowInk, &AppController::notifyLowInkMenuSelected);
    whenTriggered(ui_->actionInkHistory, &AppController::showInkHistory);
    whenTriggered(ui_->actionDiagnose, &AppController::diagnoseMenuSelected);
    whenTriggered(ui_->actionCheckUpdate, &AppController::openProductPage);
    whenTriggered(ui_->actionAbout, &AppController::showAboutPanel);
    connect(ui_->actionQuit, &QAction::triggered, window_.get(), &QWidget::close);
    connect(statusIcon_.get(), &StatusIcon::showRequested, this, [this] { raise(); });
    connect(&lowInkNotifier_, &LowInkNotifier::clicked, this, &AppController::raise);
}

void AppController::observeNotifications() const {
    const auto& center = NotificationCenter::defaultCenter();
    connect(&center, &NotificationCenter::VTnewPrinterSelected, this,
            &AppController::doSelectPrinter);
    connect(&center, &NotificationCenter::VTBonjourPrinterFound, this,
            &AppController::handlePrinterFound);
    connect(&center, &NotificationCenter::VTBonjourPrinterRemoved, this,
            &AppController::handlePrinterRemoved);
}

void AppController::fillPopup() {
    for (const PrinterRecordPtr& printer : printerTable_) {
        prepareAtStart(*printer);
        popup_.insertFirst(printer);
    }
    updatePopup();
}

void AppController::restoreLastLevels(PrinterRecord& printer) const {
    if (auto last = historyWindow_->lastLevelForPrinterId(printer.text(keys::printerId))) {
        printer.set(keys::inkDict, *std::move(last));
    } else {
        printer.remove(keys::inkDict);
    }
}

void AppController::doSelectPrinter(const PrinterRecordPtr& printer) {
    if (const PrinterRecordPtr known = popup_.find(printer->text(keys::printerId))) {
        copySelectedValues(*printer, *known);
        printerDict_ = known;
    } else {
        addNewPrinter(printer);
    }
    printerDict_->set(keys::active, kYes);
    printerDict_->set(keys::date, currentDate());
    updatePopup();
    defaults_.setPrinterId(printerDict_->text(keys::printerId));
    storePrinterTable();
    updatePrinterDict(*printerDict_, printerItemDict_);
    printerDict_->set(keys::printerStatus, "Online");
    updateUI();
    updateButtonPressed();
}

void AppController::addNewPrinter(const PrinterRecordPtr& printer) {
    if (const PrinterRecordPtr dropped = popup_.dropWhenFull()) {
        removePrinter(printerTable_, dropped->text(keys::printerId));
    }
    popup_.insertFirst(printer);
    printerTable_.push_back(printer);
    printerDict_ = printer;
}

void AppController::printerIdPoupSelected(int index) {
    const auto& printers = popup_.printers();
    if (index < 0 || index >= static_cast<int>(printers.size())) {
        updatePopup();  // "Select printer" is a command, not a choice that stays
        showSelectionWindow();
        return;
    }
    printerDict_ = printers[static_cast<std::size_t>(index)];
    updateUI();  // the printer's name and bars stand while it is asked
    // Also one that was offline when it was last asked: chosen anew it gets another chance.
    if (levelsAreStale(*printerDict_, currentDate())) updateButtonPressed();
}

void AppController::updateWhenStale() {
    if (printerDict_ && levelsAreStale(*printerDict_, currentDate()) &&
        ui_->updateButton->isEnabled()) {
        updateButtonPressed();
    }
}

void AppController::updateButtonPressed() {
    if (printerDict_) updateAndKeep(*printerDict_);
}

void AppController::updateAndKeep(PrinterRecord& printer) {
    const WaitCursor waiting;
    if (updatePrinter(printer) == UpdateOutcome::Levels) {
        historyWindow_->saveInkReadingsForPrinterId(*printer.dictionary(keys::inkDict),
                                                    printer.text(keys::printerId));
        lowInkNotifier_.readingTaken(printer);
        storePrinterTable();
    }
    updateUI();
}

// The file of the printer's history stays: the readings come back when the printer does.
void AppController::forgetPrinter(const std::string& printerId) {
    removePrinter(printerTable_, printerId);
    lowInkNotifier_.forget(printerId);
    popup_.remove(printerId);
    if (printerDict_ && printerDict_->text(keys::printerId) == printerId) printerDict_ = nullptr;
    defaults_.setPrinterId(printerDict_ ? printerDict_->text(keys::printerId) : std::string());
    storePrinterTable();
    updatePopup();
    updateUI();
}

void AppController::storePrinterTable() {
    tintoral::storePrinterTable(printerTable_, defaults_);
    saveSettings();
}

void AppController::saveSettings() {
    defaults_.synchronize();
    showSaveNotice(*window_, defaults_);
}

void AppController::handlePrinterRemoved(const PrinterRecordPtr& printer) {
    const PrinterRecordPtr known = popup_.find(printer->text(keys::printerId));
    if (!known) return;
    known->set(keys::active, kNo);
    if (known == printerDict_) known->set(keys::printerStatus, "Offline");
    updateStatus();
}

void AppController::handlePrinterFound(const PrinterRecordPtr& printer) {
    if (!printer->contains(keys::printerId) || !printer->contains(keys::kind)) return;
    const PrinterRecordPtr known = popup_.find(printer->text(keys::printerId));
    if (!known) return;
    copyFoundValues(*printer, *known);
    known->set(keys::date, currentDate());
    if (known == printerDict_) known->set(keys::printerStatus, "Online");
    updateStatus();
}

void AppController::updatePopup() {
    QComboBox& box = *ui_->printerIdPopup;
    box.clear();
    for (const PrinterRecordPtr& printer : popup_.printers())
        box.addItem(shownText(printer->text(keys::printerId)));
    box.insertSeparator(box.count());
    box.addItem(QStringLiteral("Select printer"));
    const int selected = printerDict_ ? popup_.indexOf(printerDict_->text(keys::printerId)) : -1;
    box.setCurrentIndex(popup_.printers().empty() ? 1 : selected);
}

void AppController::updateUI() {
    const Dictionary* inkDict = inkDictOf(printerDict_.get());
    updateStatus();
    ui_->lastUpdateField->setText(lastUpdateText(inkDict));
    ui_->levelView->setInkDict(inkDict, rgbColorsOf(printerDict_.get()));
    changeWindowHeightByColor(ui_->levelView->inkCount());
    updateDockIcon();
}

void AppController::updateStatus() {
    const StatusLine line = statusLine(printerDict_.get());
    ui_->statusField->setText(shownText(line.text));
    ui_->updateButton->setEnabled(line.canUpdate);
    statusIcon_->describe(printerDict_.get());
    updateMenus();
    updateListPanel();
}

void AppController::updateListPanel() {
    if (printerListPanel_) printerListPanel_->setPrinters(printerTable_);
}

void AppController::changeWindowHeightByColor(int inkCount) {
    constexpr int kHeightForTen = 422;
    constexpr int kRow = 25;
    // The height below the menu bar; the window's top edge stays where it is.
    ui_->content->setFixedHeight(kHeightForTen - (10 - inkCount) * kRow);
}

void AppController::updateMenus() {
    const bool selected = printerDict_ != nullptr;
    ui_->actionInkHistory->setEnabled(selected);
    ui_->actionDiagnose->setEnabled(selected);
    ui_->actionUseModelIcon->setEnabled(selected);
    ui_->actionUseModelIcon->setChecked(useModelIcon_);
    ui_->actionNotifyLowInk->setChecked(defaults_.notifyLowInk());
    ui_->actionUpdate->setEnabled(ui_->updateButton->isEnabled());
    for (const MaintenanceItem& item : kMaintenanceItems) {
        QAction* action = maintenanceAction(item.option);
        action->setEnabled(selected && printerDict_->text(item.flagKey) == kYes);
    }
}

QAction* AppController::maintenanceAction(int option) const {
    QAction* const actions[] = {ui_->actionNozzleCleaning, ui_->actionPrintNozzleCheckPattern,
                                ui_->actionCleaningAndTestPrint};
    return actions[option - 1];
}

void AppController::menuItemNozzleOptions() {
    for (const MaintenanceItem& item : kMaintenanceItems) {
        if (sender() != maintenanceAction(item.option) || !printerDict_) continue;
        const WaitCursor waiting;
        sendMaintenance(*printerDict_, item.option);
    }
}

void AppController::useModelIconMenuSelected() {
    useModelIcon_ = ui_->actionUseModelIcon->isChecked();
    defaults_.setUseModelIcon(useModelIcon_);
    saveSettings();
    updateUI();
}

void AppController::notifyLowInkMenuSelected() {
    defaults_.setNotifyLowInk(ui_->actionNotifyLowInk->isChecked());
    if (!defaults_.notifyLowInk()) lowInkNotifier_.forgetAll();
    storePrinterTable();
}

void AppController::raise(const QByteArray& activationToken) {
    raiseWindow(*window_, activationToken);
}

BrowserController& AppController::browserWindow() {
    if (!browserWindow_) {
        browserWindow_ =
            std::make_unique<BrowserController>(printerItemDict_, sources_, window_.get());
    }
    return *browserWindow_;
}

void AppController::showSelectionWindow() {
    browserWindow().showWindow();
}

void AppController::addByAddress() {
    browserWindow().addByAddressPressed();
}

void AppController::showInkHistory() {
    if (printerDict_) historyWindow_->selectHistoryFor(printerDict_->text(keys::printerId));
    historyWindow_->showWindow();
}

PrinterListPanel& AppController::printerListPanel() {
    if (!printerListPanel_) {
        printerListPanel_ = std::make_unique<PrinterListPanel>(
            PrinterListActions{
                .update = [this](const PrinterRecordPtr& printer) { updateAndKeep(*printer); },
                .forget = [this](const std::string& printerId) { forgetPrinter(printerId); }},
            window_.get());
    }
    return *printerListPanel_;
}

// A record may have lost its levels where the history has not.
void AppController::showPrinterListPanel() {
    const WaitCursor waiting;
    for (const PrinterRecordPtr& printer : printerTable_) {
        if (!printer->contains(keys::inkDict)) restoreLastLevels(*printer);
    }
    printerListPanel().setPrinters(printerTable_);
    printerListPanel().showWindow(printerDict_);
}

void AppController::openProductPage() {
    QDesktopServices::openUrl(QUrl(QStringLiteral(TINTORAL_PRODUCT_PAGE)));
}

void AppController::showAboutPanel() {
    if (!aboutPanel_) aboutPanel_ = std::make_unique<AboutPanelController>(window_.get());
    aboutPanel_->showWindow();
}

void AppController::diagnoseMenuSelected() {
    if (!printerDict_) return;
    if (!diagWindow_) diagWindow_ = std::make_unique<DiagWindowController>(window_.get());
    diagWindow_->setPrinterDict(*printerDict_);
}

QImage AppController::dockBackground() const {
    if (useModelIcon_ && printerDict_) {
        QImage icon =
            pictureFrom(modelIconPath(iconPathTable_, printerDict_->text(keys::makerAndModelName)));
        if (!icon.isNull()) return icon;
    }
    return applicationPicture();
}

void AppController::updateDockIcon() {
    const PrinterRecord* printer = printerDict_.get();
    const QIcon icon =
        tintoral::dockIcon(inkDictOf(printer), rgbColorsOf(printer), dockBackground());
    QApplication::setWindowIcon(icon);
    statusIcon_->setIcon(icon);
}

bool AppController::eventFilter(QObject* watched, QEvent* event) {
    if (watched != window_.get()) return QObject::eventFilter(watched, event);
    if (event->type() == QEvent::Close) windowWillClose();
    if (event->type() == QEvent::Paint && !isPainted_) {
        isPainted_ = true;
        QTimer::singleShot(0, this, &AppController::finishStart);
    }
    return QObject::eventFilter(watched, event);
}

void AppController::keepSelection() {
    if (printerDict_) defaults_.setPrinterId(printerDict_->text(keys::printerId));
    storePrinterTable();
}

void AppController::windowWillClose() {
    keepSelection();
    statusIcon_->hide();
    QCoreApplication::quit();
}

}  // namespace tintoral
