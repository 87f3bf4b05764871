#include "app/ink_history_controller.h"

#include <QtCore/QBuffer>
#include <QtCore/QCollator>
#include <QtCore/QDir>
#include <QtCore/QLocale>
#include <QtCore/QSaveFile>
#include <QtGui/QClipboard>
#include <QtGui/QPainter>
#include <QtWidgets/QApplication>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QMessageBox>
#include <algorithm>

#include "app/graph3d_view.h"
#include "app/raise_window.h"
#include "app/shown_text.h"
#include "history/history_csv.h"
#include "history/ink_history_store.h"
#include "history/monthly_levels.h"
#include "ui_InkHistory.h"

namespace tintoral {
namespace {

struct Title {
    QString text;    // fit to show
    QByteArray raw;  // the file's name, in any encoding
};

// As people sort: without regard to case, "2" before "10"; names that look the same keep an order.
bool standsBefore(const Title& a, const Title& b, const QCollator& order) {
    const int difference = order.compare(a.text, b.text);
    return difference != 0 ? difference < 0 : a.raw < b.raw;
}

std::vector<Title> sortedTitles() {
    std::vector<Title> titles;
    for (const std::string& name : printersWithHistory()) {
        titles.push_back({shownText(name), QByteArray::fromStdString(name)});
    }
    const QLocale own;  // the C locale would sort by bytes
    QCollator order(own == QLocale::c() ? QLocale(QLocale::English) : own);
    order.setNumericMode(true);
    order.setCaseSensitivity(Qt::CaseInsensitive);
    const auto before = [&](const Title& a, const Title& b) { return standsBefore(a, b, order); };
    std::ranges::sort(titles, before);
    return titles;
}

// A printer's name as the name of a file that every system takes.
QString fileNameFor(const std::string& printerId) {
    QString name = shownText(printerId);
    for (QChar& c : name) {
        if (QStringLiteral("/\\:*?\"<>|").contains(c)) c = QLatin1Char('-');
    }
    return name;
}

}  // namespace

InkHistoryController::InkHistoryController(QWidget* parent) : QDialog(parent, Qt::Window) {}

InkHistoryController::~InkHistoryController() = default;

void InkHistoryController::awakeFromNib() {
    ui_ = std::make_unique<Ui::InkHistory>();
    ui_->setupUi(this);
    connectControls();
    prepareHistoryFolder();
    fillPopup();
}

void InkHistoryController::connectControls() {
    GraphView* view = ui_->graphview;
    ui_->monthPicker->setValue(view->monthIndex());
    ui_->periodSlider->setValue(view->periodSteps());
    showPeriod(view->periodSteps());
    connect(ui_->monthPicker, &QSpinBox::valueChanged, view, &GraphView::monthPicked);
    connect(ui_->periodSlider, &QSlider::valueChanged, view, &GraphView::periodSliderMoved);
    connect(ui_->periodSlider, &QSlider::valueChanged, this, &InkHistoryController::showPeriod);
    connect(ui_->printerNamePopup, &QComboBox::activated, this,
            &InkHistoryController::printerNamePopupSelected);
    connect(ui_->tabs, &QTabWidget::currentChanged, this, &InkHistoryController::tabChosen);
    connect(ui_->okButton, &QPushButton::clicked, this, &InkHistoryController::okButtonPressed);
    connect(ui_->copyButton, &QPushButton::clicked, ui_->actionCopy, &QAction::trigger);
    connect(ui_->saveButton, &QPushButton::clicked, ui_->actionSave, &QAction::trigger);
    connect(ui_->exportButton, &QPushButton::clicked, ui_->actionExport, &QAction::trigger);
    connect(ui_->actionCopy, &QAction::triggered, this, &InkHistoryController::copyPicture);
    connect(ui_->actionSave, &QAction::triggered, this, &InkHistoryController::savePicture);
    connect(ui_->actionExport, &QAction::triggered, this, &InkHistoryController::exportReadings);
}

void InkHistoryController::fillPopup() {
    QComboBox& popup = *ui_->printerNamePopup;
    popup.clear();
    for (const Title& title : sortedTitles()) popup.addItem(title.text, title.raw);
    showChosen();
}

void InkHistoryController::showChosen() {
    QComboBox& popup = *ui_->printerNamePopup;
    popup.setCurrentIndex(popup.findData(QByteArray::fromStdString(printerId_)));
    printerNamePopupSelected(popup.currentIndex());
}

void InkHistoryController::showPeriod(int periodSteps) {
    const int months = periodMonths(periodSteps);
    ui_->periodField->setText(months == 1 ? QStringLiteral("1 month")
                                          : QStringLiteral("%1 months").arg(months));
}

void InkHistoryController::enableActions() {
    const bool hasReadings = !ui_->graphview->isEmpty();
    for (QAction* action : {ui_->actionCopy, ui_->actionSave, ui_->actionExport})
        action->setEnabled(hasReadings);
    for (QPushButton* button : {ui_->copyButton, ui_->saveButton, ui_->exportButton})
        button->setEnabled(hasReadings);
}

bool InkHistoryController::saveInkReadingsForPrinterId(Dictionary inkDict,
                                                       const std::string& printerId) {
    if (!tintoral::saveInkReadingsForPrinterId(std::move(inkDict), printerId)) return false;
    printerId_ = printerId;
    if (!ui_) return true;
    const bool isNew = ui_->printerNamePopup->findData(QByteArray::fromStdString(printerId)) < 0;
    isNew ? fillPopup() : showChosen();
    return true;
}

std::optional<Dictionary> InkHistoryController::lastLevelForPrinterId(
    const std::string& printerId) const {
    return tintoral::lastLevelForPrinterId(printerId);
}

void InkHistoryController::selectHistoryFor(const std::string& printerId) {
    printerId_ = printerId;
    if (ui_) showChosen();
}

void InkHistoryController::printerNamePopupSelected(int index) {
    std::shared_ptr<const Array> history;
    if (index >= 0) {
        printerId_ = ui_->printerNamePopup->itemData(index).toByteArray().toStdString();
        history = inkHistory(printerId_);
    }
    ui_->graphview->setInkHistory(std::move(history));
    if (myGLView_) show3D();
    enableActions();
}

void InkHistoryController::tabChosen() {
    if (myGLView_ || ui_->tabs->currentWidget() != ui_->graph3DPage) return;
    myGLView_ = std::make_unique<Graph3DView>();
    ui_->graph3DLayout->addWidget(myGLView_.get());
    show3D();
}

void InkHistoryController::show3D() {
    const auto& history = ui_->graphview->inkHistory();
    std::vector<QColor> colors;
    for (const std::string& ink :
         history ? monthlyLevels(*history).inks : std::vector<std::string>())
        colors.push_back(ui_->graphview->colorOf(ink));
    myGLView_->setInkHistory(history, std::move(colors));
}

// Of the tab that is shown.
QImage InkHistoryController::shownPicture() const {
    if (ui_->tabs->currentWidget() == ui_->chartPage) return ui_->graphview->picture();
    const qreal ratio = devicePixelRatioF();
    QImage image((QSizeF(myGLView_->size()) * ratio).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    QPainter painter(&image);
    myGLView_->paintTo(painter);
    return image;
}

void InkHistoryController::showWindow() {
    ui_ ? fillPopup() : awakeFromNib();
    raiseWindow(*this);
}

void InkHistoryController::okButtonPressed() {
    close();
}

void InkHistoryController::copyPicture() {
    QApplication::clipboard()->setImage(shownPicture());
}

void InkHistoryController::savePicture() {
    const QString path = askForFile(ui_->actionSave->text(), QStringLiteral("png"));
    if (!path.isEmpty()) savePictureTo(path);
}

void InkHistoryController::exportReadings() {
    const QString path = askForFile(ui_->actionExport->text(), QStringLiteral("csv"));
    if (!path.isEmpty()) exportReadingsTo(path);
}

// Empty when the person changed their mind.
QString InkHistoryController::askForFile(const QString& title, const QString& ending) {
    const QString proposed = QDir::home().filePath(fileNameFor(printerId_) + '.' + ending);
    return QFileDialog::getSaveFileName(this, title, proposed,
                                        QStringLiteral("%1 (*.%2)").arg(ending.toUpper(), ending));
}

bool InkHistoryController::savePictureTo(const QString& path) {
    QBuffer png;
    shownPicture().save(&png, "PNG");
    return writeFile(path, png.data());
}

bool InkHistoryController::exportReadingsTo(const QString& path) {
    const auto& history = ui_->graphview->inkHistory();
    return history && writeFile(path, QByteArray::fromStdString(historyCsv(*history)));
}

bool InkHistoryController::writeFile(const QString& path, const QByteArray& content) {
    QSaveFile file(path);
    const bool isOpen = file.open(QIODevice::WriteOnly);
    if (isOpen) file.write(content);
    if (isOpen && file.commit()) return true;
    QMessageBox message(
        QMessageBox::Warning, windowTitle(),
        QStringLiteral("The file could not be written.\n%1: %2").arg(path, file.errorString()),
        QMessageBox::Ok, this);
    message.setTextFormat(Qt::PlainText);
    message.exec();
    return false;
}

}  // namespace tintoral
