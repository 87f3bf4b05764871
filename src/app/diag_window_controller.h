// The diagnostics window: runs the phases of a printer's diagnosis one by one (diagnosis.h), shows
// the report as it grows, and copies, saves or mails it.
//
// Each phase blocks under a wait cursor; between two phases the window lives, and Stop or closing
// it ends the diagnosis after the phase that runs. The report then holds what had come until there.
#pragma once

#include <QDialog>
#include <QTimer>
#include <memory>
#include <string>
#include <vector>

#include "diagnostics/diagnosis.h"
#include "diagnostics/report.h"

namespace Ui {
class Diagnosis;
}

namespace tintoral {

class DiagWindowController : public QDialog {
    Q_OBJECT

  public:
    explicit DiagWindowController(QWidget* parent);
    ~DiagWindowController() override;

    // Shows the window and begins the diagnosis of a printer, in place of any other.
    void setPrinterDict(const PrinterRecord& printer);

    // The report as it stands, with or without serial numbers as the tick says.
    std::string report() const;

    // Writes the report. False, with a message to the person, when that fails; an existing file is
    // replaced whole or left as it was.
    bool saveReportTo(const QString& path);

  public Q_SLOTS:
    void runButtonPressed();
    void copyReport() const;
    void saveReport();
    // Saves the whole report in the person's documents and opens a mail with as much of it as mail
    // programs take.
    void mailReport();
    void updateUI();

  protected:
    void done(int result) override;

  private:
    void begin();
    void runNext();
    void showReport();
    bool isRunning() const { return next_ < phases_.size(); }
    void stop();

    std::unique_ptr<Ui::Diagnosis> ui_;
    PrinterRecord printer_;
    ReportHead head_;
    std::vector<DiagnosticPhase> phases_;
    std::size_t next_ = 0;
    bool stopped_ = false;
    std::string answers_;  // what the phases wrote
    QTimer nextPhase_;
};

}  // namespace tintoral
