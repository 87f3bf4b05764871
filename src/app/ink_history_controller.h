// The ink history window: the printers that have a history, and the chosen one's readings as a
// chart of lines and, on a second tab, in three dimensions.
//
// It lives for the whole run, and its widgets are made when it is first shown. A reading is stored
// through it, so that the open window always shows the last one.
#pragma once

#include <QtWidgets/QDialog>
#include <memory>
#include <optional>
#include <string>

#include "support/property_list.h"

namespace Ui {
class InkHistory;
}

class QImage;

namespace tintoral {

class Graph3DView;

class InkHistoryController : public QDialog {
    Q_OBJECT

  public:
    explicit InkHistoryController(QWidget* parent);
    ~InkHistoryController() override;

    // Makes the widgets and fills the pop-up; showWindow() does it once.
    void awakeFromNib();

    // Stores one update and shows that printer's history. False when it was not stored
    // (history/ink_history_store.h); then nothing changes here.
    bool saveInkReadingsForPrinterId(Dictionary inkDict, const std::string& printerId);

    // The last entry of a printer's history; nothing when there is none that can be read.
    std::optional<Dictionary> lastLevelForPrinterId(const std::string& printerId) const;

    // Chooses a printer, now or for when the window is first shown. One without a history leaves
    // the pop-up without a choice and the chart empty.
    void selectHistoryFor(const std::string& printerId);

    // Write the picture that is shown as PNG, the history as CSV. False, with a message to the
    // person, when that fails; an existing file is replaced whole or left as it was.
    bool savePictureTo(const QString& path);
    bool exportReadingsTo(const QString& path);

  public Q_SLOTS:
    void showWindow();
    void printerNamePopupSelected(int index);
    void okButtonPressed();
    void copyPicture();
    void savePicture();
    void exportReadings();

  private:
    void connectControls();
    void fillPopup();
    void showChosen();
    void showPeriod(int periodSteps);
    void enableActions();
    void tabChosen();
    void show3D();
    QImage shownPicture() const;
    QString askForFile(const QString& title, const QString& ending);
    bool writeFile(const QString& path, const QByteArray& content);

    std::unique_ptr<Ui::InkHistory> ui_;     // null until the window is first shown
    std::unique_ptr<Graph3DView> myGLView_;  // made when its tab is first shown
    std::string printerId_;  // whose history was last stored or chosen; empty for none
};

}  // namespace tintoral
