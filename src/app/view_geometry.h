// Drawing with y upwards on a painter whose y goes downwards.
//
// Positions are mapped one by one; the painter's own matrix is never flipped, which would turn text
// over and move every edge by a pixel. A rectangle covers the pixels from floor(v + 0.5) of one
// edge to floor(v + 0.5) of the other, on either axis: the rule by which QPainter fills a QRectF
// without antialiasing.
#pragma once

#include <QtCore/QPoint>
#include <QtCore/QRect>
#include <QtCore/QRectF>
#include <cmath>

namespace tintoral {

class ViewGeometry {
  public:
    // `top` is the y, upwards, of the picture's upper edge.
    explicit constexpr ViewGeometry(int top) : top_(top) {}

    // The pixels of a rectangle whose x and y are its lower left corner. A negative size gives
    // none.
    QRect rect(const QRectF& upwards) const {
        const int left = edge(upwards.x());
        const int right = edge(upwards.x() + upwards.width());
        const int bottom = edge(upwards.y());
        const int upper = edge(upwards.y() + upwards.height());
        return {left, top_ - upper, right - left, upper - bottom};
    }

    // A point on a line between pixels, such as a text's baseline.
    QPoint point(int x, int y) const { return {x, top_ - y}; }

    // The y, upwards, of a widget's pixel row.
    int upwards(int pixelRow) const { return top_ - pixelRow; }

  private:
    static int edge(double value) { return static_cast<int>(std::floor(value + 0.5)); }

    int top_;
};

}  // namespace tintoral
