// The about panel: name and version, a link to the product page, and the read-me text with the
// licences of Tintoral and of the libraries that it uses (src/resources/ReadMe.md).
#pragma once

#include <QDialog>
#include <memory>

namespace Ui {
class AboutPanel;
}

namespace tintoral {

class AboutPanelController : public QDialog {
    Q_OBJECT

  public:
    explicit AboutPanelController(QWidget* parent);
    ~AboutPanelController() override;

    void showWindow();

  private:
    std::unique_ptr<Ui::AboutPanel> ui_;
};

}  // namespace tintoral
