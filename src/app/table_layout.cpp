#include "app/table_layout.h"

#include <QHeaderView>
#include <QScreen>
#include <QTableView>
#include <algorithm>

namespace tintoral {

void sizeForText(QTableView& table, QWidget& window, std::initializer_list<int> columnCharacters,
                 int contentHeight) {
    constexpr int kPadding = 10;
    constexpr int kMargins = 50;  // of the window and the frame, and the scroll bar
    const int textHeight = table.fontMetrics().height() + kPadding;
    table.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table.verticalHeader()->setDefaultSectionSize(std::max(textHeight, contentHeight + kPadding));
    QHeaderView& header = *table.horizontalHeader();
    header.setFixedHeight(textHeight);
    int column = 0;
    for (const int characters : columnCharacters)
        header.resizeSection(column++, characters * table.fontMetrics().averageCharWidth());
    const int widest = window.screen()->availableGeometry().width() - kMargins;
    const int wanted = std::max(window.width(), header.length() + kMargins);
    window.resize(std::min(wanted, widest), window.height());
}

}  // namespace tintoral
