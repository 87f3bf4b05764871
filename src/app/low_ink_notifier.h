// Tells the person over the desktop that the ink of a printer runs low: one notification for each
// printer, with all of its inks that are low (monitor/low_ink.h has the rule). Does nothing while
// the setting is off.
#pragma once

#include <QObject>
#include <string>

#include "app/desktop_notifications.h"
#include "records/printer_table.h"
#include "records/user_defaults.h"

namespace tintoral {

class LowInkNotifier : public QObject {
    Q_OBJECT

  public:
    // Both belong to the caller, who stores the table after each of the calls below. What could not
    // be shown is taken back from the record, and then the table is stored from here.
    LowInkNotifier(PrinterTable& printers, UserDefaults& defaults);

    // The printer has levels of a new reading.
    void readingTaken(PrinterRecord& printer);

    // The printer is forgotten.
    void forget(const std::string& printerId);

    // Withdraws everything and starts anew: what is low then is news.
    void forgetAll();

  Q_SIGNALS:
    // The person clicked a notification.
    void clicked(const QByteArray& activationToken);

  private:
    void takeBack(const QString& printerId);

    PrinterTable& printers_;
    UserDefaults& defaults_;
    DesktopNotifications notifications_;
};

}  // namespace tintoral
