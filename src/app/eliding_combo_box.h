// A pop-up button for long names: the chosen one is shortened in its middle where it does not fit,
// and the list is as wide as its longest line. (Qt's own cuts a text off at the last word that
// fits, so that nobody sees that something is missing.)
#pragma once

#include <QComboBox>

namespace tintoral {

class ElidingComboBox : public QComboBox {
  public:
    using QComboBox::QComboBox;

    void showPopup() override;

  protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace tintoral
