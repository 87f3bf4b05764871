#include "app/graph_view.h"

#include <QtCore/QDate>
#include <QtCore/QLocale>
#include <QtCore/QStringList>
#include <QtGui/QFontMetrics>
#include <QtGui/QHelpEvent>
#include <QtGui/QPainter>
#include <QtWidgets/QToolTip>
#include <algorithm>

#include "app/ink_colors.h"
#include "app/ink_rows.h"
#include "app/month_text.h"

namespace tintoral {
namespace {

constexpr int kInitialPeriod = 1;  // 1.5 on a slider without steps, read as a whole number
constexpr int kMinimumWidth = 400;
constexpr int kPreferredWidth = 480;
constexpr int kFontSize = 10;
constexpr int kNoteFontSize = 13;
constexpr int kNoteMargin = 8;
constexpr int kEndSquare = 6;
constexpr int kMonthLabelX = kChartLeft + 10;
constexpr int kMonthLabelY = 2;
constexpr int kLevelLabelDrop = 7;  // of a level's number below its tick
constexpr int kNamesY = 250;        // the first row of names, from below
constexpr int kNameRow = 16;
constexpr int kSwatch = 8;
constexpr int kNameGap = 6;
constexpr int kTopMargin = 4;
constexpr std::size_t kMostNames = 20;  // as many as a reading may have
constexpr int kTicks[] = {20, 40, 60, 80, 100};
constexpr float kAxisWhite = 2.0F / 3;  // the light grey of the inks

QDate dateOf(std::chrono::sys_days day) {
    return QDate(1970, 1, 1).addDays(day.time_since_epoch().count());
}

}  // namespace

GraphView::GraphView(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAccessibleName(QStringLiteral("Ink history chart"));
    QFont small = font();
    small.setPixelSize(kFontSize);
    setFont(small);
    awakeFromNib();
    describe();
}

void GraphView::awakeFromNib() {
    const Date now = currentDate();
    periodSteps_ = kInitialPeriod;
    monthIndex_ = monthIndexAt(now);
    scale_ = {startAtLaunch(now, periodMonths(periodSteps_)), periodMonths(periodSteps_)};
    update();
}

void GraphView::setInkHistory(std::shared_ptr<const Array> inkHistory) {
    inkHistory_ = std::move(inkHistory);
    series_ = inkHistory_ ? chartSeries(*inkHistory_) : std::vector<ChartSeries>();
    describe();
    updateGeometry();
    updateUI();
}

QColor GraphView::colorOf(std::string_view key) const {
    const auto series = std::ranges::find(series_, key, &ChartSeries::key);
    return chartColor(key, series == series_.end() ? std::string() : series->rgbColor);
}

void GraphView::monthPicked(int monthIndex) {
    monthIndex_ = monthIndex;
    updateUI();
}

void GraphView::periodSliderMoved(int periodSteps) {
    periodSteps_ = periodSteps;
    updateUI();
}

void GraphView::updateUI() {
    const int months = periodMonths(periodSteps_);
    scale_ = {startForMonth(monthIndex_, months), months};
    update();
}

void GraphView::describe() {
    QStringList parts;
    for (std::size_t i = 0; i < series_.size(); ++i)
        parts << hitText({i, series_[i].readings.back()});
    setAccessibleDescription(parts.join(QStringLiteral("; ")));
}

QSize GraphView::sizeHint() const {
    return {kPreferredWidth, minimumSizeHint().height()};
}

QSize GraphView::minimumSizeHint() const {
    return {kMinimumWidth, kNamesY + nameRows() * kNameRow + kTopMargin};
}

void GraphView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paintTo(painter);
}

QImage GraphView::picture() const {
    const qreal ratio = devicePixelRatioF();
    QImage image((QSizeF(size()) * ratio).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    QPainter painter(&image);
    paintTo(painter);
    return image;
}

void GraphView::paintTo(QPainter& painter) const {
    painter.save();
    painter.setFont(font());
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.fillRect(rect(), Qt::white);
    drawAxis(painter);
    for (const ChartSeries& series : series_) drawLineChart(painter, series);
    isEmpty() ? drawEmptyNote(painter) : drawNames(painter);
    painter.restore();
}

// The middle of the pixel that a line one point wide would fill.
QPointF GraphView::onPixel(ChartPoint point) const {
    return {point.x + 0.5, height() - point.y - 0.5};
}

// The lower left corner of the text's box is at x, y.
void GraphView::drawText(QPainter& painter, double x, int y, const QString& text) const {
    painter.setPen(Qt::black);
    const int baseline = y + painter.fontMetrics().descent();
    painter.drawText(QPointF(x, height() - baseline), text);
}

void GraphView::drawAxis(QPainter& painter) const {
    drawLevelTicks(painter);
    drawMonths(painter);
    drawFrame(painter);
}

void GraphView::drawFrame(QPainter& painter) const {
    const int right = width() - 1;  // of the edge on W, the half within the view
    const int wide = right - kChartLeft;
    constexpr int kHigh = kChartTop - kChartBottom;
    for (const QRectF& edge :
         {QRectF(kChartLeft, kChartBottom, wide, 1), QRectF(kChartLeft, kChartTop, wide + 1, 1),
          QRectF(kChartLeft, kChartBottom, 1, kHigh), QRectF(right, kChartBottom, 1, kHigh)})
        painter.fillRect(geometry().rect(edge), Qt::black);
}

void GraphView::drawLevelTicks(QPainter& painter) const {
    constexpr int kTickLength = 6;
    for (const int level : kTicks) {
        const int y = static_cast<int>(levelY(level));
        for (const int x : {kChartLeft - 4, width() - 4}) {
            painter.fillRect(geometry().rect(QRectF(x, y, kTickLength, 1)),
                             whiteInk(kAxisWhite).color);
        }
        drawText(painter, 0, y - kLevelLabelDrop, QString::number(level));
    }
}

void GraphView::drawMonths(QPainter& painter) const {
    constexpr int kLineBottom = 16;
    constexpr int kLineTop = 242;
    for (const MonthMark& mark : monthMarks(scale_, width())) {
        const QRectF line(kChartLeft + static_cast<int>(mark.offset), kLineBottom, 1,
                          kLineTop - kLineBottom);
        if (mark.hasLine) painter.fillRect(geometry().rect(line), whiteInk(kAxisWhite).color);
        if (mark.hasLabel)
            drawText(painter, mark.offset + kMonthLabelX, kMonthLabelY, monthText(mark.month));
    }
}

void GraphView::drawLineChart(QPainter& painter, const ChartSeries& series) const {
    const std::vector<ChartPoint> points = chartLine(series, scale_, width());
    if (points.empty()) return;
    const QColor color = chartColor(series.key, series.rgbColor);
    const ChartPoint end = chartEnd(series, scale_);
    constexpr double kHalf = kEndSquare / 2.0;
    const QRectF square(end.x - kHalf, end.y - kHalf, kEndSquare, kEndSquare);
    painter.fillRect(geometry().rect(square), color);
    QList<QPointF> line;
    for (const ChartPoint& point : points) line << onPixel(point);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, 1));
    painter.drawPolyline(line.data(), static_cast<int>(line.size()));
    painter.restore();
}

int GraphView::nameColumnWidth() const {
    const QFontMetrics metrics(font());
    int widest = 0;
    for (const ChartSeries& series : series_)
        widest = std::max(widest, metrics.horizontalAdvance(QString::fromStdString(series.name)));
    return std::min(kSwatch + kNameGap + widest + 2 * kNameGap, kMinimumWidth - kChartLeft);
}

// As many as the narrowest view needs, so that the height does not depend on the width.
int GraphView::nameRows() const {
    const int columns = (kMinimumWidth - kChartLeft) / nameColumnWidth();
    const int names = static_cast<int>(std::min(series_.size(), kMostNames));
    return std::max(1, (names + columns - 1) / columns);
}

void GraphView::drawNames(QPainter& painter) const {
    const int columnWidth = nameColumnWidth();
    const int columns = std::max(1, (width() - kChartLeft) / columnWidth);
    const int names = static_cast<int>(std::min(series_.size(), kMostNames));
    for (int i = 0; i < names; ++i) {
        const ChartSeries& series = series_[static_cast<std::size_t>(i)];
        const int x = kChartLeft + i % columns * columnWidth;
        const int y = height() - kTopMargin - (i / columns + 1) * kNameRow;
        const QRect swatch = geometry().rect(QRectF(x, y + 3, kSwatch, kSwatch));
        painter.fillRect(swatch.adjusted(-1, -1, 1, 1), Qt::gray);
        painter.fillRect(swatch, Qt::white);
        painter.fillRect(swatch, chartColor(series.key, series.rgbColor));
        const QString name =
            painter.fontMetrics().elidedText(QString::fromStdString(series.name), Qt::ElideRight,
                                             columnWidth - kSwatch - 3 * kNameGap);
        drawText(painter, x + kSwatch + kNameGap, y, name);
    }
}

void GraphView::drawEmptyNote(QPainter& painter) const {
    const QRect frame = geometry().rect(
        QRectF(kChartLeft, kChartBottom, width() - kChartLeft, kChartTop - kChartBottom));
    const QString note = QStringLiteral("No readings yet.\nEach update of the printer adds one.");
    QFont large = font();
    large.setPixelSize(kNoteFontSize);
    painter.setFont(large);
    const QRect text = painter.boundingRect(frame, Qt::AlignCenter | Qt::TextWordWrap, note);
    painter.fillRect(text.adjusted(-kNoteMargin, -kNoteMargin, kNoteMargin, kNoteMargin),
                     Qt::white);
    painter.setPen(Qt::darkGray);
    painter.drawText(frame, Qt::AlignCenter | Qt::TextWordWrap, note);
}

QString GraphView::hitText(const ChartHit& hit) const {
    return QStringLiteral("%1: %2, %3")
        .arg(QString::fromStdString(series_[hit.series].name), levelText(hit.reading.level),
             QLocale().toString(dateOf(hit.reading.day), QLocale::ShortFormat));
}

bool GraphView::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip) return QWidget::event(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    const ChartPoint point{help->pos().x() - 0.5, height() - help->pos().y() - 0.5};
    if (const auto hit = readingNear(series_, scale_, point)) {
        // Marked up on purpose: a name that looks like markup would otherwise be taken as such.
        QToolTip::showText(help->globalPos(),
                           QStringLiteral("<qt>%1</qt>").arg(hitText(*hit).toHtmlEscaped()), this);
    } else {
        QToolTip::hideText();
        event->ignore();
    }
    return true;
}

}  // namespace tintoral
