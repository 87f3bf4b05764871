#include "app/eliding_combo_box.h"

#include <QAbstractItemView>
#include <QStylePainter>
#include <algorithm>

namespace tintoral {

void ElidingComboBox::showPopup() {
    constexpr int kFrame = 8;
    const int lines = view()->sizeHintForColumn(0) + kFrame;
    view()->setMinimumWidth(std::max(lines, width()));
    QComboBox::showPopup();
}

void ElidingComboBox::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    const QRect field =
        style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    option.currentText =
        option.fontMetrics.elidedText(option.currentText, Qt::ElideMiddle, field.width() - 2);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

}  // namespace tintoral
