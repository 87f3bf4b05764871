#include <QtGui/QFontMetricsF>
#include <algorithm>
#include <cmath>

#include "app/graph3d_painter.h"

namespace tintoral {
namespace {

constexpr double kGap = 7;              // pixels between an edge and its labels
constexpr double kPadding = 8;          // between the labels and the rim of the view
constexpr double kClearance = 3;        // between two labels
constexpr double kMostInkWidth = 0.24;  // of the view, for a name; longer ones are cut
constexpr double kMostMarginX = 0.28;
constexpr double kMostMarginY = 0.25;

// One place on an axis: where its label begins, and in which direction it stands off.
struct Tick {
    QString text;
    QPointF at;
    QPointF outwards;
};

QPointF unit(QPointF vector) {
    const double length = std::hypot(vector.x(), vector.y());
    return length > 0 ? vector / length : QPointF(0, 1);
}

Tick floorTick(const Projection& projection, const QString& text, const QVector3D& at,
               const QVector3D& outwards) {
    const QPointF pixel = projection.toPixel(at);
    return {text, pixel, unit(projection.toPixel(at + outwards) - pixel)};
}

// The newest first, so that it always has its label.
std::vector<Tick> monthTicks(const Scene3D& scene, const Projection& projection) {
    const float side = projection.eye().z() < 0 ? -1 : 1;
    std::vector<Tick> ticks;
    for (auto i = scene.months.size() - 1; i >= 0; --i) {
        const QVector3D at(scene.monthX(static_cast<std::size_t>(i)), 0, side * scene.size.z() / 2);
        ticks.push_back(floorTick(projection, scene.months[i], at, {0, 0, side}));
    }
    return ticks;
}

std::vector<Tick> inkTicks(const Scene3D& scene, const Projection& projection,
                           const QFontMetricsF& metrics) {
    const float side = projection.eye().x() < 0 ? -1 : 1;
    const double room = projection.size().width() * kMostInkWidth;
    std::vector<Tick> ticks;
    for (auto i = 0; i < scene.inks.size(); ++i) {
        const QVector3D at(side * scene.size.x() / 2, 0, scene.inkZ(static_cast<std::size_t>(i)));
        const QString text = metrics.elidedText(scene.inks[i], Qt::ElideRight, room);
        ticks.push_back(floorTick(projection, text, at, {side, 0, 0}));
    }
    return ticks;
}

// The upright edge where the walls end at the left.
QVector3D levelEdge(const Scene3D& scene, const Projection& projection) {
    const QVector3D far(std::copysign(scene.size.x() / 2, -projection.eye().x()), 0,
                        std::copysign(scene.size.z() / 2, -projection.eye().z()));
    const QVector3D one(-far.x(), 0, far.z());
    const QVector3D other(far.x(), 0, -far.z());
    return projection.toPixel(one).x() < projection.toPixel(other).x() ? one : other;
}

std::vector<Tick> levelTicks(const Scene3D& scene, const Projection& projection) {
    QVector3D at = levelEdge(scene, projection);
    std::vector<Tick> ticks;
    for (int level = 0; level <= kFullLevel; level += kLevelStep) {
        at.setY(scene.levelY(level));
        ticks.push_back({QStringLiteral("%1 %").arg(level), projection.toPixel(at), {-1, 0}});
    }
    return ticks;
}

Label3D labelAt(const Tick& tick, const QFontMetricsF& metrics) {
    const QSizeF size(metrics.horizontalAdvance(tick.text), metrics.height());
    const QPointF way(tick.outwards.x() * (kGap + size.width() / 2),
                      tick.outwards.y() * (kGap + size.height() / 2));
    QRectF place(QPointF(), size);
    place.moveCenter(tick.at + way);
    return {tick.text, place};
}

bool collide(const Label3D& a, const Label3D& b) {
    return a.place.adjusted(-kClearance, -1, kClearance, 1).intersects(b.place);
}

std::vector<Label3D> everyNth(const std::vector<Label3D>& labels, std::size_t n) {
    std::vector<Label3D> some;
    for (std::size_t i = 0; i < labels.size(); i += n) some.push_back(labels[i]);
    return some;
}

// The labels of one axis, thinned out evenly until no two neighbours collide.
std::vector<Label3D> thinned(const std::vector<Tick>& ticks, const QFontMetricsF& metrics) {
    std::vector<Label3D> all;
    all.reserve(ticks.size());
    for (const Tick& tick : ticks) all.push_back(labelAt(tick, metrics));
    for (std::size_t n = 1; n < all.size(); ++n) {
        auto some = everyNth(all, n);
        if (std::ranges::adjacent_find(some, collide) == some.end()) return some;
    }
    return everyNth(all, std::max<std::size_t>(all.size(), 1));
}

void addWhereFree(std::vector<Label3D>& labels, const std::vector<Label3D>& more) {
    const std::size_t before = labels.size();
    for (const Label3D& label : more) {
        const bool isFree =
            std::none_of(labels.begin(), labels.begin() + static_cast<std::ptrdiff_t>(before),
                         [&](const Label3D& other) { return collide(label, other); });
        if (isFree) labels.push_back(label);
    }
}

// How far the labels stand out from the scene's box. The same at both sides: the picture would
// jump when the names change sides as it is turned.
QMarginsF marginsFor(const Scene3D& scene, const Projection& projection, const QFont& font) {
    QRectF all = projection.boxOnScreen();
    for (const Label3D& label : labelsOf(scene, projection, font)) all |= label.place;
    const QRectF box = projection.boxOnScreen();
    const QSizeF view = projection.size();
    const double side =
        std::min(std::max(box.left() - all.left(), all.right() - box.right()) + kPadding,
                 view.width() * kMostMarginX);
    const auto upright = [&](double need) {
        return std::min(need + kPadding, view.height() * kMostMarginY);
    };
    return {side, upright(box.top() - all.top()), side, upright(all.bottom() - box.bottom())};
}

}  // namespace

std::vector<Label3D> labelsOf(const Scene3D& scene, const Projection& projection,
                              const QFont& font) {
    const QFontMetricsF metrics(font);
    std::vector<Label3D> labels = thinned(levelTicks(scene, projection), metrics);
    addWhereFree(labels, thinned(inkTicks(scene, projection, metrics), metrics));
    addWhereFree(labels, thinned(monthTicks(scene, projection), metrics));
    return labels;
}

Frame3D makeFrame(std::shared_ptr<const Scene3D> scene, const Camera& camera, QSizeF size,
                  const QFont& font) {
    constexpr int kRefinements = 2;  // the labels depend a little on the room that they leave
    QMarginsF margins(size.width() / 8, kPadding, size.width() / 8, size.height() / 8);
    for (int i = 0; i < kRefinements; ++i) {
        margins = marginsFor(*scene, Projection(*scene, camera.unzoomed(), size, margins), font);
    }
    const Projection projection(*scene, camera, size, margins);
    return {std::move(scene), projection, barLighting(camera), font};
}

void paintOverlay(QPainter& painter, const Frame3D& frame) {
    const SceneTheme& theme = frame.scene->theme;
    QColor veil = theme.background;  // over a bar that a label may come to lie on
    veil.setAlphaF(0.75F);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(frame.font);
    for (const Label3D& label : labelsOf(*frame.scene, frame.projection, frame.font)) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(veil);
        painter.drawRoundedRect(label.place.adjusted(-kClearance, 0, kClearance, 0), kClearance,
                                kClearance);
        painter.setPen(mixed(theme.text, theme.background, 0.2));
        painter.drawText(label.place, Qt::AlignCenter | Qt::TextDontClip, label.text);
    }
    if (frame.marked) paintOutline(painter, *frame.marked, frame);
}

}  // namespace tintoral
