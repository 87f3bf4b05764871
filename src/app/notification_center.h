// Through which the parts of the window tell each other about printers. One object for the whole
// run; every signal carries the record concerned.
#pragma once

#include <QObject>

#include "records/printer_record.h"

namespace tintoral {

class NotificationCenter : public QObject {
    Q_OBJECT

  public:
    static NotificationCenter& defaultCenter();

  Q_SIGNALS:
    // The person chose a printer in the selection window, or added one by its address.
    void VTnewPrinterSelected(const tintoral::PrinterRecordPtr& printer);
    // A Bonjour service was resolved.
    void VTBonjourPrinterFound(const tintoral::PrinterRecordPtr& printer);
    // A Bonjour service disappeared.
    void VTBonjourPrinterRemoved(const tintoral::PrinterRecordPtr& printer);

  private:
    NotificationCenter() = default;
};

}  // namespace tintoral
