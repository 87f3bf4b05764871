// The icon in the desktop's status area, where there is one: the picture of the levels, a tooltip
// and a menu that say the same in words. The program is complete without it.
//
//   Show Tintoral
//   Update
//   ───────────────
//   printer's name          disabled, as are the inks
//   ▮ Cyan: 45 %            with the ink's colour
//   ───────────────
//   Quit
#pragma once

#include <QMenu>
#include <QObject>
#include <QStringList>
#include <QSystemTrayIcon>
#include <vector>

#include "app/ink_rows.h"
#include "records/printer_record.h"

namespace tintoral {

class StatusIcon : public QObject {
    Q_OBJECT

  public:
    // The main window's "Update" and "Quit", which outlive the icon and keep their state here.
    StatusIcon(QAction& update, QAction& quit, QObject* parent);

    void show() { icon_.show(); }
    void hide() { icon_.hide(); }

    void setIcon(const QIcon& icon) { icon_.setIcon(icon); }

    // What tooltip and menu say: of a printer, or of none (null).
    void describe(const PrinterRecord* printer);

  Q_SIGNALS:
    // The person clicked the icon, or chose "Show Tintoral".
    void showRequested();

  private:
    void fillMenu(const QString& name, const std::vector<InkRow>& inks);

    QMenu menu_;  // before the icon, which refers to it
    QAction* show_;
    QAction* update_;
    QAction* quit_;
    QSystemTrayIcon icon_;
};

}  // namespace tintoral
