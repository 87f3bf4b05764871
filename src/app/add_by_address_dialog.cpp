#include "app/add_by_address_dialog.h"

#include <QCompleter>
#include <QGuiApplication>
#include <QPushButton>

#include "app/wait_cursor.h"
#include "ui_AddByAddressDialog.h"

namespace tintoral {

AddByAddressDialog::AddByAddressDialog(const ModelTable& models, QWidget* parent)
    : QDialog(parent), models_(models), ui_(std::make_unique<Ui::AddByAddressDialog>()) {
    ui_->setupUi(this);
    for (const auto& [name, entry] : models.entries())
        ui_->modelField->addItem(QString::fromStdString(name));
    ui_->modelField->setCurrentIndex(-1);
    ui_->modelField->completer()->setFilterMode(Qt::MatchContains);
    ui_->modelField->completer()->setCompletionMode(QCompleter::PopupCompletion);
    connect(ui_->testButton, &QPushButton::clicked, this, &AddByAddressDialog::testButtonPressed);
    connect(ui_->connectionPopup, &QComboBox::currentIndexChanged, this,
            &AddByAddressDialog::connectionChanged);
}

AddByAddressDialog::~AddByAddressDialog() = default;

AddressRequest AddByAddressDialog::request() const {
    return {ui_->addressField->text().trimmed().toStdString(),
            static_cast<Connection>(ui_->connectionPopup->currentIndex()),
            static_cast<std::uint16_t>(ui_->portField->value()),
            ui_->modelField->currentText().simplified().toStdString()};
}

PrinterRecordPtr AddByAddressDialog::printer() const {
    const bool isTested = testedPrinter_ && testedRequest_ == request();
    return isTested ? testedPrinter_ : makeAddressedRecord(request());
}

void AddByAddressDialog::connectionChanged() {
    ui_->portField->setEnabled(request().connection == Connection::RawPort);
}

void AddByAddressDialog::say(const std::string& words) {
    ui_->answerField->setText(QString::fromStdString(words));
}

bool AddByAddressDialog::sayProblem() {
    const std::string problem = problemWith(request());
    if (!problem.empty()) say(problem);
    return !problem.empty();
}

void AddByAddressDialog::testButtonPressed() {
    const WaitCursor waiting;
    if (request().makerAndModel.empty() && !request().host.empty()) {
        ui_->modelField->setCurrentText(QString::fromStdString(askPrinterName(request().host)));
    }
    if (sayProblem()) return;
    testedRequest_ = request();
    const AddressAnswer answer = testAddress(testedRequest_, models_);
    testedPrinter_ = answer.printer;
    say(answer.words);
}

void AddByAddressDialog::accept() {
    if (!sayProblem()) QDialog::accept();
}

}  // namespace tintoral
