// The application's icon while it runs: a picture of the program or the printer with a small bar
// for each ink.
//
// Points with y upwards in a square of 128. The background picture takes x 0..100, y 0..100; the
// bars, 80 long, start at x 40. Rows are at most 30 points apart and share 110 points, the last at
// y 20. Everything else is transparent.
#pragma once

#include <QtGui/QIcon>
#include <QtGui/QImage>
#include <string>
#include <vector>

#include "support/property_list.h"

class QPainter;

namespace tintoral {

// Draws the picture into the 128 x 128 points at the painter's origin; a painter scaled by 2 gets
// it in twice as many pixels. Without a reading (null) the bars are a sample of four inks. Levels
// outside 0 to 100 are drawn as the nearer end.
void drawIcon(QPainter& painter, const Dictionary* inkDict,
              const std::vector<std::string>& rgbColors, const QImage& background);

// The picture as an icon, drawn for 1 and for 2 pixels to the point.
QIcon dockIcon(const Dictionary* inkDict, const std::vector<std::string>& rgbColors,
               const QImage& background);

// The program's own picture ("Tintoral128"), 128 x 128.
QImage applicationPicture();

}  // namespace tintoral
