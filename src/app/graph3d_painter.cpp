#include "app/graph3d_painter.h"

#include <QtGui/QLinearGradient>
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

// From the lower edge of a side (its first two corners) straight up to the level of its upper edge.
QBrush gradient(const QPolygonF& side, const QColor& foot, const QColor& top) {
    const QPointF edge = side[1] - side[0];
    const QPointF upwards = (side[2] + side[3] - side[0] - side[1]) / 2;
    const QPointF across(-edge.y(), edge.x());
    const double length = QPointF::dotProduct(edge, edge);
    if (length <= 0) return top;
    QLinearGradient gradient(side[0],
                             side[0] + across * (QPointF::dotProduct(upwards, across) / length));
    gradient.setColorAt(0, foot);
    gradient.setColorAt(1, top);
    return gradient;
}

QBrush brushFor(const Face& face, const QPolygonF& polygon, const Lighting& lighting) {
    const QColor color = litColor(face, lighting);
    if (face.foot == 1) return color;
    return gradient(polygon, litColor(face, lighting, face.foot), color);
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
    for (const Face& face : bar.faces) corners << projected(face, projection);
    return convexHull(corners);
}

void paintBar(QPainter& painter, const Bar& bar, const Frame3D& frame) {
    // Under the faces, or what is behind the bar would shine through along their edges.
    painter.setBrush(litColor(bar.faces.front(), frame.lighting));
    painter.drawConvexPolygon(outlineOf(bar, frame.projection));
    for (const Face& face : bar.faces) {
        const QPolygonF polygon = projected(face, frame.projection);
        if (isTurnedAway(polygon)) continue;
        painter.setBrush(brushFor(face, polygon, frame.lighting));
        painter.drawConvexPolygon(polygon);
    }
}

}  // namespace

void paintFaces(QPainter& painter, const Frame3D& frame) {
    const Scene3D& scene = *frame.scene;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(QRectF(QPointF(), frame.projection.size()), scene.theme.background);
    painter.setPen(Qt::NoPen);
    for (const Face& face : scene.backdrop) {
        const QPolygonF polygon = projected(face, frame.projection);
        if (isTurnedAway(polygon)) continue;
        painter.setBrush(face.color);
        painter.drawConvexPolygon(polygon);
    }
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
