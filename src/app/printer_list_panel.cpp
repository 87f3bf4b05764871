#include "app/printer_list_panel.h"

#include <QMessageBox>
#include <QPainter>
#include <QShortcut>
#include <algorithm>

#include "app/notification_center.h"
#include "app/raise_window.h"
#include "app/row_delegate.h"
#include "app/shown_text.h"
#include "app/table_layout.h"
#include "monitor/record_rules.h"
#include "ui_PrinterList.h"

namespace tintoral {
namespace {

constexpr int kBarWidth = 10;
constexpr int kBarHeight = 18;
constexpr int kBarPitch = 14;
constexpr int kMargin = 5;

// The empty part of a bar is as light on a dark ground as on a light one: dark inks stay visible.
constexpr QColor kEmptyPart(0xD9, 0xD9, 0xD9);
constexpr QColor kLevelMark(0x44, 0x44, 0x44);

// What an ink fills of its bar; one that is not empty fills some of it. The mark above it tells a
// pale ink from the empty part.
void drawLevel(QPainter& painter, const InkRow& ink, const QRect& bar) {
    const int filled = (bar.height() * std::min(ink.level, 100) + 99) / 100;
    const QRect full = bar.adjusted(0, bar.height() - filled, 0, 0);
    if (ink.color.color.isValid()) painter.fillRect(full, ink.color.color);
    painter.fillRect(full.left(), full.top() - 1, full.width(), 1, kLevelMark);
}

// One upright bar, hatched where the level is no number.
void drawBar(QPainter& painter, const InkRow& ink, const QRect& bar, const QColor& frame) {
    painter.fillRect(bar, kEmptyPart);
    if (ink.level < 0) {
        painter.fillRect(bar, QBrush(kLevelMark, Qt::BDiagPattern));
    } else {
        drawLevel(painter, ink, bar);
    }
    painter.setPen(frame);
    painter.drawRect(bar.adjusted(-1, -1, 0, 0));
}

// Draws the last levels as bars, with the lowest in words behind them.
class LevelsDelegate : public RowDelegate {
  public:
    LevelsDelegate(const PrinterListModel& model, const QSortFilterProxyModel& sorted,
                   QObject* parent)
        : RowDelegate(parent), model_(model), sorted_(sorted) {}

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        RowDelegate::paint(painter, option, index);
        const std::vector<InkRow>& inks = model_.inks(sorted_.mapToSource(index).row());
        painter->save();
        painter->setClipRect(option.rect);
        const QColor ink = textColor(option);
        const int barsEnd = drawBars(*painter, inks, option.rect, ink);
        painter->setPen(ink);
        drawLowest(*painter, inks, option.rect.adjusted(barsEnd, 0, -kMargin, 0));
        painter->restore();
    }

  protected:
    // The bars stand in for the text.
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
        RowDelegate::initStyleOption(option, index);
        option->text.clear();
    }

  private:
    static QColor textColor(const QStyleOptionViewItem& option) {
        const bool isActive = option.state & QStyle::State_Active;
        const bool isChosen = option.state & QStyle::State_Selected;
        return option.palette.color(isActive ? QPalette::Active : QPalette::Inactive,
                                    isChosen ? QPalette::HighlightedText : QPalette::Text);
    }

    static int drawBars(QPainter& painter, const std::vector<InkRow>& inks, const QRect& cell,
                        QColor frame) {
        frame.setAlphaF(0.6F);
        int x = kMargin;
        const int y = cell.center().y() - kBarHeight / 2 + 1;
        for (const InkRow& ink : inks) {
            drawBar(painter, ink, {cell.left() + x, y, kBarWidth, kBarHeight}, frame);
            x += kBarPitch;
        }
        return x + kMargin;
    }

    static void drawLowest(QPainter& painter, const std::vector<InkRow>& inks, const QRect& place) {
        const InkRow* lowest = lowestInk(inks);
        if (!lowest || place.width() <= 0) return;
        const QString words =
            painter.fontMetrics().elidedText(inkInWords(*lowest), Qt::ElideRight, place.width());
        painter.drawText(place, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, words);
    }

    const PrinterListModel& model_;
    const QSortFilterProxyModel& sorted_;
};

}  // namespace

PrinterListPanel::PrinterListPanel(PrinterListActions actions, QWidget* parent)
    : QDialog(parent), actions_(std::move(actions)), ui_(std::make_unique<Ui::PrinterList>()) {
    ui_->setupUi(this);
    setUpTable();
    connectWidgets();
    setPrinters({});
}

PrinterListPanel::~PrinterListPanel() = default;

void PrinterListPanel::setUpTable() {
    QTableView& table = *ui_->printerTableView;
    sorted_.setSourceModel(&model_);
    sorted_.setSortCaseSensitivity(Qt::CaseInsensitive);
    sorted_.setSortRole(PrinterListModel::SortRole);
    table.setModel(&sorted_);
    table.setItemDelegate(new RowDelegate(&table));
    table.setItemDelegateForColumn(PrinterListModel::Levels,
                                   new LevelsDelegate(model_, sorted_, &table));
    table.horizontalHeader()->setSortIndicator(PrinterListModel::Name, Qt::AscendingOrder);
    table.setSortingEnabled(true);
    sizeForText(table, *this, {50, 44, 20, 22}, kBarHeight);
    ui_->emptyHint->setAttribute(Qt::WA_TransparentForMouseEvents);
}

void PrinterListPanel::connectWidgets() {
    QTableView* table = ui_->printerTableView;
    connect(ui_->updateButton, &QPushButton::clicked, this, &PrinterListPanel::updateButtonPressed);
    connect(ui_->forgetButton, &QPushButton::clicked, this, &PrinterListPanel::forgetButtonPressed);
    connect(ui_->closeButton, &QPushButton::clicked, this, &QWidget::close);
    connect(table, &QTableView::doubleClicked, this, &PrinterListPanel::selectPrinter);
    connect(table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &PrinterListPanel::updateButtons);
    const auto onKey = [&](const QKeySequence& key, auto* receiver, auto slot) {
        connect(new QShortcut(key, table, nullptr, nullptr, Qt::WidgetShortcut),
                &QShortcut::activated, receiver, slot);
    };
    onKey(Qt::Key_Return, this, &PrinterListPanel::selectPrinter);
    onKey(Qt::Key_Enter, this, &PrinterListPanel::selectPrinter);
    onKey(Qt::Key_Delete, ui_->forgetButton, &QPushButton::click);
    onKey(QKeySequence::Refresh, ui_->updateButton, &QPushButton::click);
}

void PrinterListPanel::setPrinters(const PrinterTable& printers) {
    const PrinterRecordPtr chosen = chosenPrinter();
    model_.setRecords(printers);
    // The person may have scrolled elsewhere.
    ui_->printerTableView->setAutoScroll(false);
    if (chosen) chooseRowOf(chosen->text(keys::printerId));
    ui_->printerTableView->setAutoScroll(true);
    ui_->emptyHint->setVisible(printers.empty());
    updateButtons();
}

void PrinterListPanel::showWindow(const PrinterRecordPtr& selected) {
    ui_->printerTableView->clearSelection();
    if (selected) chooseRowOf(selected->text(keys::printerId));
    ui_->printerTableView->setFocus();
    raiseWindow(*this);
}

void PrinterListPanel::updateButtons() {
    const PrinterRecordPtr printer = chosenPrinter();
    ui_->updateButton->setEnabled(printer && statusLine(printer.get()).canUpdate);
    ui_->forgetButton->setEnabled(printer != nullptr);
}

void PrinterListPanel::selectPrinter() {
    if (const PrinterRecordPtr printer = chosenPrinter())
        Q_EMIT NotificationCenter::defaultCenter().VTnewPrinterSelected(printer);
}

void PrinterListPanel::updateButtonPressed() {
    if (const PrinterRecordPtr printer = chosenPrinter()) actions_.update(printer);
}

void PrinterListPanel::forgetButtonPressed() {
    const PrinterRecordPtr printer = chosenPrinter();
    if (!printer) return;
    const std::string printerId = printer->text(keys::printerId);
    if (mayForget(shownText(printerId))) actions_.forget(printerId);
}

bool PrinterListPanel::mayForget(const QString& name) {
    constexpr int kWidestName = 400;
    const QString shortName = fontMetrics().elidedText(name, Qt::ElideMiddle, kWidestName);
    QMessageBox question(QMessageBox::Question, QStringLiteral("Forget printer"),
                         QStringLiteral("Forget “%1”?\n\nThe printer is taken off this list and "
                                        "the pop-up of the main window. The file of its ink "
                                        "history stays.")
                             .arg(shortName),
                         QMessageBox::Cancel, this);
    question.setTextFormat(Qt::PlainText);
    const auto* forget = question.addButton(QStringLiteral("&Forget"), QMessageBox::AcceptRole);
    question.setDefaultButton(QMessageBox::Cancel);
    question.exec();
    return question.clickedButton() == forget;
}

PrinterRecordPtr PrinterListPanel::chosenPrinter() const {
    const QModelIndexList rows = ui_->printerTableView->selectionModel()->selectedRows();
    return rows.empty() ? nullptr : model_.record(sorted_.mapToSource(rows.front()).row());
}

void PrinterListPanel::chooseRowOf(const std::string& printerId) {
    const QModelIndex index = sorted_.mapFromSource(model_.index(model_.rowOf(printerId), 0));
    if (index.isValid()) ui_->printerTableView->selectRow(index.row());
}

}  // namespace tintoral
