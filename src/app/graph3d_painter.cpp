#include "app/graph3d_painter.h"

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
bool isTurnedAway(const QPolygonF& polygon) {
    double area = 0;
    for (qsizetype i = 0; i < polygon.size(); ++i) {
        area += crossProduct(polygon[i], polygon[(i + 1) % polygon.size()]);
    }
    return area >= 0;
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

void paintFace(QPainter& painter, const Face& face, const QColor& color,
               const Projection& projection) {
    const QPolygonF polygon = projected(face, projection);
    if (isTurnedAway(polygon)) return;
    painter.setBrush(color);
    painter.drawConvexPolygon(polygon);
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
        painter.setRenderHint(QPainter::Antialiasing, frame.isSmooth && !isShadow);
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
