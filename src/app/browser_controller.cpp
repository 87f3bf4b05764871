#include "app/browser_controller.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QShortcut>
#include <algorithm>

#include "app/add_by_address_dialog.h"
#include "app/notification_center.h"
#include "app/raise_window.h"
#include "app/row_delegate.h"
#include "app/table_layout.h"
#include "app/wait_cursor.h"
#include "support/text.h"
#include "ui_PrinterBrowser.h"

namespace tintoral {
namespace {

using std::chrono::milliseconds;

// Time for the window, or its indicator, to be painted before the first scan blocks it.
constexpr milliseconds kPaintTime{50};
// Announcements come in bursts; the table is loaded once for all that come within this time.
constexpr milliseconds kBurst{30};
// With thousands of printers a loading takes time too: no more than a fifth of all.
constexpr int kShare = 4;

PrinterTable listOf(const std::function<PrinterTable()>& source) {
    return source ? source() : PrinterTable();
}

std::size_t append(const PrinterTable& found, PrinterTable& table) {
    table.insert(table.end(), found.begin(), found.end());
    return found.size();
}

bool isRawPort91(const PrinterRecord& printer) {
    return startsWithIgnoringCase(printer.text(keys::kind), "port91");
}

// A withdrawn service, or one that says by port 0 that nothing listens (RFC 6763), would only cost
// its time-out.
bool canBeProbed(const PrinterRecord& printer) {
    return printer.text(keys::serviceType) == service_types::ipp &&
           printer.contains(keys::ippURL) && printer.text(keys::active) != kNo &&
           printer.integer(keys::port) != 0;
}

}  // namespace

BrowserController::BrowserController(const ModelTable& models, PrinterSources sources,
                                     QWidget* parent)
    : QDialog(parent),
      models_(models),
      sources_(std::move(sources)),
      ui_(std::make_unique<Ui::PrinterBrowser>()) {
    ui_->setupUi(this);
    setUpTable();
    connectWidgets();
    observeNotifications();
    stopLooking();
}

BrowserController::~BrowserController() = default;

void BrowserController::setUpTable() {
    QTableView& table = *ui_->printerTableView;
    printerTable2_.setSourceModel(&model_);
    printerTable2_.setSortCaseSensitivity(Qt::CaseInsensitive);
    table.setModel(&printerTable2_);
    table.setItemDelegate(new RowDelegate(&table));
    table.horizontalHeader()->setSortIndicator(PrinterTableModel::Name, Qt::AscendingOrder);
    table.setSortingEnabled(true);
    sizeForText(table, *this, {40, 21, 21, 16, 30});
    ui_->emptyHint->setAttribute(Qt::WA_TransparentForMouseEvents);
}

void BrowserController::connectWidgets() {
    const auto whenClicked = [this](QPushButton* button, auto slot) {
        connect(button, &QPushButton::clicked, this, slot);
    };
    whenClicked(ui_->refreshListButton, &BrowserController::refreshListButtonPressed);
    whenClicked(ui_->addByAddressButton, &BrowserController::addByAddressPressed);
    whenClicked(ui_->selectButton, &BrowserController::selectButtonPressed);
    whenClicked(ui_->cancelButton, &BrowserController::cancelButtonPressed);
    connect(new QShortcut(QKeySequence::Refresh, this), &QShortcut::activated,
            ui_->refreshListButton, &QPushButton::click);
    connect(ui_->printerTableView, &QTableView::doubleClicked, this,
            &BrowserController::selectButtonPressed);
    connect(ui_->printerTableView->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &BrowserController::updateSelectButton);
    connect(this, &QDialog::finished, this, &BrowserController::stopLooking);
    for (QTimer* timer : {&nextStep_, &nextUpdate_}) timer->setSingleShot(true);
    connect(&nextStep_, &QTimer::timeout, this, &BrowserController::lookFurther);
    connect(&nextUpdate_, &QTimer::timeout, this, &BrowserController::updateUI);
}

void BrowserController::observeNotifications() {
    const auto& center = NotificationCenter::defaultCenter();
    connect(&center, &NotificationCenter::VTBonjourPrinterFound, this,
            &BrowserController::handlePrinterFound);
    connect(&center, &NotificationCenter::VTBonjourPrinterRemoved, this,
            &BrowserController::handlePrinterRemoved);
    connect(&center, &NotificationCenter::VTnewPrinterSelected, this,
            [this] { autoSelectMode_ = false; });
}

void BrowserController::startBonjourBrowser() {
    if (isBonjourStarted_) return;
    isBonjourStarted_ = true;
    if (sources_.startBonjour) sources_.startBonjour();
}

std::size_t BrowserController::browseUSB(PrinterTable& table) const {
    return append(listOf(sources_.usb), table);
}

std::size_t BrowserController::browseBJNP(PrinterTable& table) const {
    return append(listOf(sources_.bjnp), table);
}

std::size_t BrowserController::browseBonjourPrinters(PrinterTable& table) {
    const PrinterTable found = listOf(sources_.bonjour);
    autoSelectMode_ = std::ranges::none_of(
        found, [](const PrinterRecordPtr& printer) { return printer->contains(keys::printerId); });
    return append(found, table);
}

void BrowserController::showWindow() {
    ui_->printerTableView->clearSelection();
    refreshListButtonPressed();
    autoSelectMode_ = false;
    ui_->printerTableView->setFocus();
    raiseWindow(*this);
}

void BrowserController::refreshListButtonPressed() {
    if (looking_ != Looking::No) return;
    looking_ = Looking::Gathering;
    ui_->selectButton->setEnabled(false);
    ui_->refreshListButton->setEnabled(false);
    ui_->lookingForIndicator->setRange(0, 0);
    ui_->lookingForIndicator->show();
    updateWords();
    nextStep_.start(kPaintTime);
}

// One step, then the window gets its turn.
void BrowserController::lookFurther() {
    const WaitCursor waiting;
    if (looking_ == Looking::Gathering) {
        gatherPrinters();
    } else {
        probeNext();
    }
    if (toProbe_.empty() || currentTime() >= probingEnd_) {
        stopLooking();
    } else {
        nextStep_.start(0);
    }
}

void BrowserController::gatherPrinters() {
    printerTable_.clear();
    browseUSB(printerTable_);
    browseBJNP(printerTable_);
    append(listOf(sources_.bonjour), printerTable_);
    queueProbes();
    updateUI();
}

void BrowserController::queueProbes() {
    looking_ = Looking::Probing;
    probingEnd_ = currentTime() + kProbingTime;
    if (!sources_.probeIpp) return;
    for (const PrinterRecordPtr& printer : printerTable_) {
        if (canBeProbed(*printer)) toProbe_.push_back(printer);
    }
    toProbe_.resize(std::min(toProbe_.size(), kMaximumProbes));
    ui_->lookingForIndicator->setRange(0, static_cast<int>(toProbe_.size()));
    ui_->lookingForIndicator->setValue(0);
}

void BrowserController::probeNext() {
    const PrinterRecordPtr printer = toProbe_.front();
    toProbe_.pop_front();
    const bool isStillThere = std::ranges::find(printerTable_, printer) != printerTable_.end();
    if (isStillThere && sources_.probeIpp(*printer) > 0) updateUI();
    QProgressBar& indicator = *ui_->lookingForIndicator;
    indicator.setValue(indicator.maximum() - static_cast<int>(toProbe_.size()));
}

void BrowserController::stopLooking() {
    looking_ = Looking::No;
    toProbe_.clear();
    nextStep_.stop();
    ui_->lookingForIndicator->hide();
    ui_->refreshListButton->setEnabled(true);
    updateUI();
}

void BrowserController::selectButtonPressed() {
    const PrinterRecordPtr printer = selectedPrinter();
    if (!printer) {
        QApplication::beep();
        return;
    }
    // The choice is followed by an update, which blocks: the window goes first.
    close();
    Q_EMIT NotificationCenter::defaultCenter().VTnewPrinterSelected(printer);
}

void BrowserController::cancelButtonPressed() {
    close();
}

void BrowserController::addByAddressPressed() {
    stopLooking();
    AddByAddressDialog dialog(models_, isVisible() ? this : parentWidget());
    if (dialog.exec() != QDialog::Accepted) return;
    close();
    Q_EMIT NotificationCenter::defaultCenter().VTnewPrinterSelected(dialog.printer());
}

// A service that is resolved again is announced again, with the record that is listed already.
void BrowserController::handlePrinterFound(const PrinterRecordPtr& printer) {
    if (std::ranges::find(printerTable_, printer) == printerTable_.end())
        printerTable_.push_back(printer);
    updateSoon();
    if (!autoSelectMode_ || !isRawPort91(*printer)) return;
    autoSelectMode_ = false;
    Q_EMIT NotificationCenter::defaultCenter().VTnewPrinterSelected(printer);
}

void BrowserController::handlePrinterRemoved(const PrinterRecordPtr& printer) {
    std::erase(printerTable_, printer);
    updateSoon();
}

void BrowserController::updateSoon() {
    if (!nextUpdate_.isActive()) nextUpdate_.start(std::max(kBurst, kShare * updateTook_));
}

void BrowserController::updateUI() {
    QElapsedTimer timer;
    timer.start();
    const PrinterRecordPtr selected = selectedPrinter();
    model_.setRecords(printerTable_);
    if (selected) selectRowOf(selected);
    updateSelectButton();
    updateWords();
    updateTook_ = milliseconds(timer.elapsed());
}

void BrowserController::updateSelectButton() {
    ui_->selectButton->setEnabled(looking_ != Looking::Gathering && selectedPrinter());
}

void BrowserController::updateWords() {
    const auto count = printerTable_.size();
    const bool isLooking = looking_ != Looking::No;
    const QString found =
        count == 1 ? QStringLiteral("1 printer") : QStringLiteral("%1 printers").arg(count);
    ui_->foundField->setText(isLooking    ? QStringLiteral("Looking for printers…")
                             : count == 0 ? QString()
                                          : found);
    ui_->emptyHint->setVisible(count == 0 && !isLooking);
}

PrinterRecordPtr BrowserController::selectedPrinter() const {
    const QModelIndexList rows = ui_->printerTableView->selectionModel()->selectedRows();
    return rows.empty() ? nullptr : model_.record(printerTable2_.mapToSource(rows.front()).row());
}

void BrowserController::selectRowOf(const PrinterRecordPtr& printer) {
    const int row = model_.rowOf(printer);
    const QModelIndex index = printerTable2_.mapFromSource(model_.index(row, 0));
    if (!index.isValid()) return;
    // The person may have scrolled elsewhere.
    ui_->printerTableView->setAutoScroll(false);
    ui_->printerTableView->selectRow(index.row());
    ui_->printerTableView->setAutoScroll(true);
}

}  // namespace tintoral
