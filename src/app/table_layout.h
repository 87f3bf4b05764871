// Sizes of the tables of printers, in the units of the font that the person chose.
#pragma once

#include <initializer_list>

class QTableView;
class QWidget;

namespace tintoral {

// Gives each column room for so many average characters, the rows that of a line of text or of
// `contentHeight` pixels, whichever is more, and widens the window until all columns show,
// or as far as the screen goes.
void sizeForText(QTableView& table, QWidget& window, std::initializer_list<int> columnCharacters,
                 int contentHeight = 0);

}  // namespace tintoral
