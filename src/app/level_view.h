// The level view of the main window: a labelled, shaded bar for each ink of the last reading.
//
// Points with y upwards; a row takes 25 of them. The first row's y is 245 and the picture ends at
// 270, however many rows there are; further rows go down, past 0 after the tenth.
//
//   x 10..170    the ink's name, right-aligned
//   x 175..300   the bar, 12 high, its glow up to 5 points further; three ticks below it
//   x 308..346   the level as a number, in a view 350 or wider
//
// The ground is white and the text black whatever the palette, as the shades of the bars and glows
// are made for it.
#pragma once

#include <QtCore/QString>
#include <QtWidgets/QWidget>
#include <optional>
#include <string>
#include <vector>

#include "app/ink_rows.h"
#include "app/view_geometry.h"

namespace tintoral {

class LevelView : public QWidget {
    Q_OBJECT

  public:
    explicit LevelView(QWidget* parent = nullptr);

    // Shows another reading (a copy is kept) and its "#RRGGBB" texts by position. Without one
    // (null) the view shows a sample of ten inks, without numbers, and drops `rgbColors`.
    void setInkDict(const Dictionary* inkDict, const std::vector<std::string>& rgbColors);

    // The number of rows shown, which the window's height follows.
    int inkCount() const { return static_cast<int>(rows_.size()); }

    // One of the rows, from the top; what its level is in words; and where it is drawn. Without a
    // reading the rows are the sample's.
    const InkRow& row(int index) const { return rows_.at(static_cast<std::size_t>(index)); }
    QString levelInWords(int index) const;
    QRect rectOfRow(int index) const;
    bool hasReading() const { return !isSample_; }

    // The height that `inks` rows take, in points.
    static int heightForInks(int inks);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    // Paints the view at its present size; the painter's origin is the view's upper left corner.
    void paintTo(QPainter& painter) const;

  protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

  private:
    void showInkReadings(QPainter& painter) const;
    void showLabel(QPainter& painter, const InkRow& row, int y) const;
    void showNumber(QPainter& painter, const InkRow& row, int y) const;

    // One complete bar: glow, filled and empty part, tick marks. A level outside 0 to 100 fills
    // none or all of it.
    void drawBar(QPainter& painter, const InkColor& color, QPoint at, int level) const;
    // A strip 12 points high and `length` long, lit from above. A length below 1 draws nothing.
    void drawBar12(QPainter& painter, const InkColor& color, QPoint at, int length) const;
    // The glow under a bar: red up to 10 percent, yellow up to 20, else grey.
    void drawShadow12(QPainter& painter, QPoint at, int level) const;

    std::optional<int> rowAt(QPoint pixel) const;
    void describe();

    std::vector<InkRow> rows_;
    bool isSample_ = true;
};

}  // namespace tintoral
