#include "app/graph3d_painter.h"

#include <QtCore/QLineF>
#include <QtGui/QPolygonF>
#include <algorithm>

namespace tintoral {
namespace {

constexpr double kOutlineWidth = 1.5;

double crossProduct(QPointF a, QPointF b) {
    return a.x() * b.y() - a.y() * b.x();
}

QPolygonF projected(const Face& face, const Projection& projection) {
    QPolygonF polygon;
    polygon.reserve(static_cast<qsizetype>(face.count));
    for (std::size_t i = 0; i < face.count; ++i) polygon << projection.toPixel(face.corners[i]);
    return polygon;
}

// Pixels count downwards: what goes round counter-clockwise has a negative area.
double areaOf(const QPolygonF& polygon) {
    double twice = 0;
    for (qsizetype i = 0; i < polygon.size(); ++i) {
        twice += crossProduct(polygon[i], polygon[(i + 1) % polygon.size()]);
    }
    return twice / 2;
}

bool isTurnedAway(const QPolygonF& polygon) {
    return areaOf(polygon) >= 0;
}

// The corners of the smallest convex polygon around the points (Andrew's monotone chain).
QPolygonF convexHull(QPolygonF points) {
    std::ranges::sort(points, {}, [](QPointF p) { return std::pair(p.x(), p.y()); });
    QPolygonF hull;
    const auto addChain = [&hull](auto begin, auto end) {
        const qsizetype start = hull.size();
        for (auto p = begin; p != end; ++p) {
            while (hull.size() > start + 1 &&
                   crossProduct(hull.last() - hull[hull.size() - 2], *p - hull.last()) <= 0) {
                hull.removeLast();
            }
            hull << *p;
        }
        hull.removeLast();
    };
    addChain(points.cbegin(), points.cend());
    addChain(points.crbegin(), points.crend());
    return hull;
}

QPolygonF outlineOf(const Bar& bar, const Projection& projection) {
    QPolygonF corners;
    corners.reserve(static_cast<qsizetype>(bar.corners.size()));
    for (const QVector3D& corner : bar.corners) corners << projection.toPixel(corner);
    return convexHull(corners);
}

// The longer one of the lines between the middles of opposite edges.
QLineF middleOf(const QPolygonF& quadrangle) {
    const auto between = [&](int a, int b) { return (quadrangle[a] + quadrangle[b]) / 2; };
    const QLineF along(between(0, 3), between(1, 2));
    const QLineF across(between(0, 1), between(3, 2));
    return along.length() > across.length() ? along : across;
}

void paintFace(QPainter& painter, const Face& face, const QColor& color,
               const Projection& projection) {
    const QPolygonF polygon = projected(face, projection);
    if (isTurnedAway(polygon)) return;
    painter.setBrush(color);
    painter.drawConvexPolygon(polygon);
}

// A line of the grid as such, which QPainter smooths in a quarter of the time that it takes for a
// polygon. False for any other face; nothing is painted then.
bool paintGridLine(QPainter& painter, const Face& face, const Projection& projection) {
    constexpr double kLeastShape = 50;  // length to width
    const QPolygonF polygon = projected(face, projection);
    if (isTurnedAway(polygon)) return false;
    const QLineF middle = middleOf(polygon);
    const double width = -areaOf(polygon) / middle.length();
    if (middle.length() < kLeastShape * width) return false;
    painter.setPen(QPen(face.color, width, Qt::SolidLine, Qt::FlatCap));
    painter.drawLine(middle);
    painter.setPen(Qt::NoPen);
    return true;
}

// What of the outline the sides leave free are the edges.
void paintBar(QPainter& painter, const Bar& bar, const Frame3D& frame) {
    painter.setBrush(litColor(bar.edges.front(), frame.lighting));
    painter.drawConvexPolygon(outlineOf(bar, frame.projection));
    for (const Face& side : bar.sides) {
        paintFace(painter, side, litColor(side, frame.lighting), frame.projection);
    }
}

}  // namespace

void paintFaces(QPainter& painter, const Frame3D& frame) {
    const Scene3D& scene = *frame.scene;
    painter.fillRect(QRectF(QPointF(), frame.projection.size()), scene.theme.background);
    painter.setPen(Qt::NoPen);
    for (const Face& face : scene.backdrop) {
        // The steps of a shadow are too faint to show, and smooth ones take ten times as long.
        const bool isShadow = face.color.alpha() < 255;
        const bool isSmooth = frame.isSmooth && !isShadow;
        painter.setRenderHint(QPainter::Antialiasing, isSmooth);
        if (isSmooth && paintGridLine(painter, face, frame.projection)) continue;
        paintFace(painter, face, face.color, frame.projection);
    }
    painter.setRenderHint(QPainter::Antialiasing, frame.isSmooth);
    for (const Bar* bar : backToFront(scene, frame.projection.eye())) {
        paintBar(painter, *bar, frame);
    }
}

void paintOutline(QPainter& painter, const Bar& bar, const Frame3D& frame) {
    painter.setPen(
        QPen(frame.scene->theme.text, kOutlineWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawConvexPolygon(outlineOf(bar, frame.projection));
}

}  // namespace tintoral
