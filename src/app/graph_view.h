// The 2-D chart of the history window: a line for each ink over a window of whole months.
//
// Points with y upwards, the origin at the lower left; history/chart_geometry.h has the positions.
// Below the frame stand the months, above it the names of the inks beside their colours. The ground
// is white and the text black whatever the palette, as the colours of the inks are made for it.
#pragma once

#include <QtGui/QImage>
#include <QtWidgets/QWidget>
#include <memory>
#include <string_view>
#include <vector>

#include "app/view_geometry.h"
#include "history/chart_geometry.h"

namespace tintoral {

class GraphView : public QWidget {
    Q_OBJECT

  public:
    // Begins with awakeFromNib().
    explicit GraphView(QWidget* parent = nullptr);

    // The initial period (four months) and month (the current one).
    void awakeFromNib();

    // Shows another history; none (null) and an empty one leave a friendly line in the frame.
    void setInkHistory(std::shared_ptr<const Array> inkHistory);

    int monthIndex() const { return monthIndex_; }
    int periodSteps() const { return periodSteps_; }
    const ChartScale& scale() const { return scale_; }
    bool isEmpty() const { return series_.empty(); }

    // The history that is shown, or null.
    const std::shared_ptr<const Array>& inkHistory() const { return inkHistory_; }

    // The colour in which the ink of that key is drawn.
    QColor colorOf(std::string_view key) const;

    // Paints the view at its present size; the painter's origin is the view's upper left corner.
    void paintTo(QPainter& painter) const;

    // The view as it is painted, in the screen's pixels.
    QImage picture() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  public Q_SLOTS:
    // The last month shown, counted from January 2006.
    void monthPicked(int monthIndex);
    // The period in steps of three months.
    void periodSliderMoved(int periodSteps);

  protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

  private:
    void updateUI();
    void describe();

    ViewGeometry geometry() const { return ViewGeometry(height()); }
    QPointF onPixel(ChartPoint point) const;
    void drawText(QPainter& painter, double x, int y, const QString& text) const;
    void drawAxis(QPainter& painter) const;
    void drawFrame(QPainter& painter) const;
    void drawLevelTicks(QPainter& painter) const;
    void drawMonths(QPainter& painter) const;
    void drawLineChart(QPainter& painter, const ChartSeries& series) const;
    void drawNames(QPainter& painter) const;
    void drawEmptyNote(QPainter& painter) const;

    int nameColumnWidth() const;
    int nameRows() const;
    QString hitText(const ChartHit& hit) const;

    std::shared_ptr<const Array> inkHistory_;
    std::vector<ChartSeries> series_;
    int monthIndex_ = 0;
    int periodSteps_ = 0;
    ChartScale scale_;
};

}  // namespace tintoral
