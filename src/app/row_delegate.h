// Draws the cells of a table in which rows are chosen, not cells: no frame pales a cell of the
// chosen row. Before a choice the frame tells the keyboard's place.
#pragma once

#include <QStyledItemDelegate>

namespace tintoral {

class RowDelegate : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

  protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
        QStyledItemDelegate::initStyleOption(option, index);
        if (option->state & QStyle::State_Selected) option->state &= ~QStyle::State_HasFocus;
    }
};

}  // namespace tintoral
