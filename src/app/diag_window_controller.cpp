#include "app/diag_window_controller.h"

#include <QClipboard>
#include <QDateTime>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QMessageBox>
#include <QSaveFile>
#include <QScrollBar>
#include <QStandardPaths>
#include <QSysInfo>
#include <QUrl>

#include "app/raise_window.h"
#include "app/shown_text.h"
#include "app/wait_cursor.h"
#include "support/text.h"
#include "ui_Diagnosis.h"

namespace tintoral {
namespace {

QString documentsFolder() {
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QDir(documents).exists() ? documents : QDir::homePath();
}

QString suggestedPath(const ReportHead& head) {
    const QDateTime time = QDateTime::fromSecsSinceEpoch(head.time.time_since_epoch().count());
    return documentsFolder() + QStringLiteral("/Tintoral report ") +
           time.toString(QStringLiteral("yyyy-MM-dd hh-mm-ss")) + QStringLiteral(".txt");
}

}  // namespace

DiagWindowController::DiagWindowController(QWidget* parent)
    : QDialog(parent), ui_(std::make_unique<Ui::Diagnosis>()) {
    ui_->setupUi(this);
    ui_->reportView->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    nextPhase_.setSingleShot(true);
    nextPhase_.setInterval(0);
    connect(&nextPhase_, &QTimer::timeout, this, &DiagWindowController::runNext);
    connect(ui_->runButton, &QPushButton::clicked, this, &DiagWindowController::runButtonPressed);
    connect(ui_->copyButton, &QPushButton::clicked, this, &DiagWindowController::copyReport);
    connect(ui_->saveButton, &QPushButton::clicked, this, &DiagWindowController::saveReport);
    connect(ui_->mailButton, &QPushButton::clicked, this, &DiagWindowController::mailReport);
    connect(ui_->hideSerialNumbers, &QCheckBox::toggled, this, &DiagWindowController::updateUI);
    connect(ui_->closeButton, &QPushButton::clicked, this, &QDialog::accept);
}

DiagWindowController::~DiagWindowController() = default;

void DiagWindowController::setPrinterDict(const PrinterRecord& printer) {
    printer_ = printer;
    setWindowTitle(QStringLiteral("Diagnose ") + shownText(printer.text(keys::printerId)));
    raiseWindow(*this);
    begin();
}

void DiagWindowController::begin() {
    head_ = {TINTORAL_VERSION, QSysInfo::prettyProductName().toStdString(), currentDate()};
    phases_ = diagnosticPhases(printer_);
    next_ = 0;
    stopped_ = false;
    answers_.clear();
    updateUI();
    nextPhase_.start();
}

void DiagWindowController::runNext() {
    if (!isRunning()) return;
    {
        const WaitCursor waiting;
        phases_[next_].run(answers_);
    }
    ++next_;
    updateUI();
    if (isRunning()) nextPhase_.start();
}

void DiagWindowController::stop() {
    if (!isRunning()) return;
    nextPhase_.stop();
    next_ = phases_.size();
    stopped_ = true;
    answers_ += "\nStopped here.\n";
    updateUI();
}

void DiagWindowController::runButtonPressed() {
    isRunning() ? stop() : begin();
}

void DiagWindowController::done(int result) {
    stop();
    QDialog::done(result);
}

std::string DiagWindowController::report() const {
    const bool hidden = ui_->hideSerialNumbers->isChecked();
    return diagnosticReport(head_, printer_, answers_,
                            hidden ? SerialNumbers::Hidden : SerialNumbers::Shown);
}

void DiagWindowController::updateUI() {
    const bool running = isRunning();
    QString progress = QStringLiteral("The report is complete.");
    if (running) {
        progress = QString::fromStdString(phases_[next_].progress + " " + phases_[next_].title);
    } else if (stopped_) {
        progress = QStringLiteral("Stopped. The report holds what had come until then.");
    }
    ui_->progressField->setText(progress);
    ui_->progressBar->setMaximum(static_cast<int>(phases_.size()));
    ui_->progressBar->setValue(static_cast<int>(next_));
    ui_->runButton->setText(running ? QStringLiteral("S&top") : QStringLiteral("&Run again"));
    for (QWidget* button : {ui_->copyButton, ui_->saveButton, ui_->mailButton})
        button->setEnabled(!running);
    showReport();
}

// What is read stays where it is; who reads at the end, as at the beginning, sees the report grow.
void DiagWindowController::showReport() {
    QScrollBar& bar = *ui_->reportView->verticalScrollBar();
    const int place = bar.value();
    constexpr int kNearTheEnd = 3;  // lines: the scroll bar below comes and goes
    const bool isAtEnd = bar.maximum() - place <= kNearTheEnd;
    ui_->reportView->setPlainText(QString::fromStdString(report()));
    bar.setValue(isAtEnd ? bar.maximum() : place);
}

void DiagWindowController::copyReport() const {
    QGuiApplication::clipboard()->setText(QString::fromStdString(report()));
}

bool DiagWindowController::saveReportTo(const QString& path) {
    QSaveFile file(path);
    const QByteArray text = QByteArray::fromStdString(report());
    if (file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.commit())
        return true;
    QMessageBox::warning(this, QStringLiteral("Diagnose"),
                         QStringLiteral("The report cannot be saved: %1").arg(file.errorString()));
    return false;
}

void DiagWindowController::saveReport() {
    const QString path =
        QFileDialog::getSaveFileName(this, QStringLiteral("Save report"), suggestedPath(head_),
                                     QStringLiteral("Text (*.txt);;All files (*)"));
    if (!path.isEmpty()) saveReportTo(path);
}

void DiagWindowController::mailReport() {
    const QString path = suggestedPath(head_);
    if (!saveReportTo(path)) return;
    const std::string subject = "Tintoral report: " + cleanText(printer_.text(keys::printerId));
    const std::string url = mailtoUrl("", subject, mailBody(report(), path.toStdString()));
    if (QDesktopServices::openUrl(QUrl::fromEncoded(QByteArray::fromStdString(url)))) return;
    QMessageBox::information(
        this, QStringLiteral("Diagnose"),
        QStringLiteral("No mail program could be opened. The report is in %1.").arg(path));
}

}  // namespace tintoral
