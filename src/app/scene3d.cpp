#include "app/scene3d.h"

#include <QtGui/QPolygonF>
#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>
#include <span>

#include "app/month_text.h"
#include "app/shown_text.h"

namespace tintoral {
namespace {

constexpr float kWidestPitch = 2;        // of the months, where inks have 1
constexpr float kLeastFloorShape = 1.5;  // width to depth, where the pitch allows it
constexpr float kHeightShare = 0.3F;     // of the floor's width and depth together
constexpr float kBarShare = 0.62F;       // of its place
constexpr float kWidestBar = 0.85F;
constexpr float kBevel = 0.07F;
constexpr float kLowestBar = 0.008F;  // of the whole height

constexpr double kOutlineContrast = 1.6;  // below it an ink's edges are set off
constexpr double kOutlineShare = 0.38;

constexpr float kFieldOfView = 30;
constexpr float kDistance = 4.5F;  // of the eye, in radii of the scene

float radians(float degrees) {
    return degrees * std::numbers::pi_v<float> / 180;
}

QVector3D directionTo(float yaw, float pitch) {
    const float level = std::cos(radians(pitch));
    return {level * std::sin(radians(yaw)), std::sin(radians(pitch)),
            level * std::cos(radians(yaw))};
}

// Luminance and contrast as the Web Content Accessibility Guidelines define them.
double luminance(const QColor& color) {
    const auto linear = [](double c) {
        return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

double contrast(const QColor& a, const QColor& b) {
    const auto [darker, lighter] = std::minmax({luminance(a), luminance(b)});
    return (lighter + 0.05) / (darker + 0.05);
}

Face makeFace(std::span<const QVector3D> corners, const QColor& color) {
    Face face;
    face.count = std::min(corners.size(), Face::kMostCorners);
    std::copy_n(corners.begin(), face.count, face.corners.begin());
    face.normal = QVector3D::normal(corners[0], corners[1], corners[2]);
    face.color = color;
    return face;
}

// --- bars -------------------------------------------------------------------------------------

// A rectangle around the bar's axis with its corners cut off, counter-clockwise seen from above.
std::array<QVector3D, Bar::kRing> ringAt(const Bar& bar, float y, float inset) {
    const float left = bar.low.x() + inset;
    const float right = bar.high.x() - inset;
    const float back = bar.low.z() + inset;
    const float front = bar.high.z() - inset;
    const float cut = kBevel;
    return {QVector3D(left + cut, y, front), {right - cut, y, front}, {right, y, front - cut},
            {right, y, back + cut},          {right - cut, y, back},  {left + cut, y, back},
            {left, y, back + cut},           {left, y, front - cut}};
}

void addCorners(Bar& bar) {
    const float bevel = std::min(kBevel, bar.high.y() / 2);
    auto next = bar.corners.begin();
    for (const auto& ring : {ringAt(bar, bar.low.y(), 0), ringAt(bar, bar.high.y() - bevel, 0),
                             ringAt(bar, bar.high.y(), kBevel)}) {
        next = std::ranges::copy(ring, next).out;
    }
}

// A printer's pure colours would glare as large faces, and pure black would swallow the light.
QColor softened(const QColor& color) {
    float hue = 0;
    float saturation = 0;
    float value = 0;
    color.getHsvF(&hue, &saturation, &value);
    return QColor::fromHsvF(std::max(hue, 0.0F), saturation * 0.86F, 0.13F + value * 0.83F);
}

struct BarColors {
    QColor body;
    QColor edge;
};

BarColors barColors(const QColor& ink, const SceneTheme& theme) {
    const QColor body = softened(ink.isValid() ? ink : QColor(Qt::gray));
    const bool standsOut = contrast(body, theme.background) >= kOutlineContrast;
    return {body, standsOut ? body : mixed(body, theme.text, kOutlineShare)};
}

// The face between two rings above the i-th stretch of the lower one.
Face faceBetween(const Bar& bar, std::size_t ring, std::size_t i, const QColor& color) {
    const std::size_t lower = ring * Bar::kRing;
    const std::size_t upper = lower + Bar::kRing;
    const std::size_t j = (i + 1) % Bar::kRing;
    return makeFace(std::array{bar.corners[lower + i], bar.corners[lower + j],
                               bar.corners[upper + j], bar.corners[upper + i]},
                    color);
}

void addFaces(Bar& bar, const BarColors& colors) {
    const std::span<const QVector3D> corners(bar.corners);
    auto side = bar.sides.begin();
    auto edge = bar.edges.begin();
    for (std::size_t i = 0; i < Bar::kRing; ++i) {
        if (i % 2 == 0) *side++ = faceBetween(bar, 0, i, colors.body);
        if (i % 2 == 1) *edge++ = faceBetween(bar, 0, i, colors.edge);
        *edge++ = faceBetween(bar, 1, i, colors.edge);
    }
    *side = makeFace(corners.last(Bar::kRing), colors.body);
    for (Face& face : bar.edges) face.normal = side->normal;
}

Bar makeBar(const Scene3D& scene, std::size_t ink, std::size_t month, int level) {
    const float pitch = scene.size.x() / static_cast<float>(scene.months.size());
    const float halfWidth = std::min(kBarShare * pitch, kWidestBar) / 2;
    const float halfDepth = kBarShare / 2;
    const float x = scene.monthX(month);
    const float z = scene.inkZ(ink);
    const float height = std::max(scene.levelY(level), kLowestBar * scene.size.y());
    Bar bar;
    bar.ink = ink;
    bar.month = month;
    bar.level = level;
    bar.low = {x - halfWidth, 0, z - halfDepth};
    bar.high = {x + halfWidth, height, z + halfDepth};
    return bar;
}

void addBars(Scene3D& scene, const MonthlyLevels& table, const std::vector<QColor>& colors) {
    for (std::size_t ink = 0; ink < table.inks.size(); ++ink) {
        const BarColors paint =
            barColors(ink < colors.size() ? colors[ink] : QColor(), scene.theme);
        for (std::size_t month = 0; month < table.months.size(); ++month) {
            const auto level = table.levels[ink][month];
            if (!level) continue;
            Bar& bar = scene.bars.emplace_back(makeBar(scene, ink, month, *level));
            addCorners(bar);
            addFaces(bar, paint);
        }
    }
}

// --- floor, walls, grid and shadows -----------------------------------------------------------

// A rectangle in space: one corner and the two edges that leave it.
struct Panel {
    QVector3D corner;
    QVector3D u;
    QVector3D v;
};

Face panelFace(const Panel& panel, const QColor& color) {
    return makeFace(std::array{panel.corner, panel.corner + panel.u,
                               panel.corner + panel.u + panel.v, panel.corner + panel.v},
                    color);
}

// The strip of a panel along u (or v) at a share of the other edge.
Face lineFace(const Panel& panel, bool alongU, float share, float width, const QColor& color) {
    const QVector3D across = alongU ? panel.v : panel.u;
    const QVector3D strip = across.normalized() * width;
    const QVector3D corner = panel.corner + across * share - strip / 2;
    return panelFace(alongU ? Panel{corner, panel.u, strip} : Panel{corner, strip, panel.v}, color);
}

struct GridLook {
    QColor floor;
    QColor wall;
    QColor line;
    float width;
};

GridLook gridLook(const Scene3D& scene) {
    const auto& [background, text] = scene.theme;
    return {mixed(background, text, 0.09), mixed(background, text, 0.045),
            mixed(background, text, 0.17), 0.0017F * (scene.size.x() + scene.size.z())};
}

void addLines(Scene3D& scene, const Panel& panel, bool alongU, std::size_t parts,
              const GridLook& look) {
    for (std::size_t i = 0; i <= parts; ++i) {
        const float share = static_cast<float>(i) / static_cast<float>(parts);
        scene.backdrop.push_back(lineFace(panel, alongU, share, look.width, look.line));
    }
}

void addFloorAndWalls(Scene3D& scene) {
    const GridLook look = gridLook(scene);
    const QVector3D right(scene.size.x(), 0, 0);
    const QVector3D up(0, scene.size.y(), 0);
    const QVector3D back(0, 0, -scene.size.z());
    const QVector3D corner = -(right + back) / 2;
    const Panel floor{corner, right, back};
    scene.backdrop.push_back(panelFace(floor, look.floor));
    addLines(scene, floor, false, static_cast<std::size_t>(scene.months.size()), look);
    addLines(scene, floor, true, static_cast<std::size_t>(scene.inks.size()), look);
    const std::array walls{Panel{corner + back, right, up}, Panel{corner, back, up},
                           Panel{corner + right, -right, up},
                           Panel{corner + right + back, -back, up}};
    for (const Panel& wall : walls) {
        scene.backdrop.push_back(panelFace(wall, look.wall));
        addLines(scene, wall, true, kFullLevel / kLevelStep, look);
    }
}

// A shadow on the floor that fades outwards: rings of little weight over each other.
void addShadows(Scene3D& scene) {
    QColor shade(Qt::black);
    shade.setAlphaF(luminance(scene.theme.background) > 0.5 ? 0.045F : 0.11F);
    for (const Bar& bar : scene.bars) {
        for (const float growth : {0.16F, 0.11F, 0.07F, 0.03F}) {
            const QVector3D corner(bar.low.x() - growth, 0, bar.high.z() + growth);
            const QVector3D edge = bar.high - bar.low + QVector3D(2, 0, 2) * growth;
            scene.backdrop.push_back(
                panelFace({corner, {edge.x(), 0, 0}, {0, 0, -edge.z()}}, shade));
        }
    }
}

QVector3D sceneSize(std::size_t months, std::size_t inks) {
    const auto columns = static_cast<float>(months);
    const auto depth = static_cast<float>(inks);
    const float width =
        columns * std::clamp(kLeastFloorShape * depth / columns, 1.0F, kWidestPitch);
    return {width, kHeightShare * (width + depth), depth};
}

std::array<QVector3D, 8> cornersOf(const QVector3D& size) {
    std::array<QVector3D, 8> corners;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        corners[i] = {(i & 1 ? 0.5F : -0.5F) * size.x(), i & 2 ? size.y() : 0,
                      (i & 4 ? 0.5F : -0.5F) * size.z()};
    }
    return corners;
}

template <typename Map>
QRectF boundingRect(std::span<const QVector3D> points, const Map& map) {
    QPolygonF mapped;
    for (const QVector3D& point : points) mapped << map(point);
    return mapped.boundingRect();
}

// The share of the ray from `from` to `to` at which it enters the box, if it does.
std::optional<float> entryInto(const Bar& bar, const QVector3D& from, const QVector3D& to) {
    float entry = 0;
    float exit = 1;
    const QVector3D way = to - from;
    for (int axis = 0; axis < 3; ++axis) {
        const float first = (bar.low[axis] - from[axis]) / way[axis];
        const float second = (bar.high[axis] - from[axis]) / way[axis];
        entry = std::max(entry, std::min(first, second));
        exit = std::min(exit, std::max(first, second));
    }
    return entry <= exit ? std::optional(entry) : std::nullopt;
}

}  // namespace

QColor mixed(const QColor& a, const QColor& b, double shareOfB) {
    const auto share = static_cast<float>(shareOfB);
    const auto mix = [share](float x, float y) { return x + (y - x) * share; };
    return QColor::fromRgbF(mix(a.redF(), b.redF()), mix(a.greenF(), b.greenF()),
                            mix(a.blueF(), b.blueF()));
}

float Scene3D::monthX(std::size_t month) const {
    const float share = (static_cast<float>(month) + 0.5F) / static_cast<float>(months.size());
    return size.x() * (share - 0.5F);
}

float Scene3D::inkZ(std::size_t ink) const {
    const float share = (static_cast<float>(ink) + 0.5F) / static_cast<float>(inks.size());
    return size.z() * (0.5F - share);
}

float Scene3D::levelY(int level) const {
    return size.y() * static_cast<float>(std::clamp(level, 0, kFullLevel)) / kFullLevel;
}

Scene3D makeScene(const MonthlyLevels& table, const std::vector<QColor>& colors,
                  const SceneTheme& theme) {
    Scene3D scene;
    scene.theme = theme;
    for (const std::string& ink : table.inks) {
        scene.inks << shownText(ink);
    }
    for (const auto month : table.months) scene.months << monthText(month);
    if (scene.inks.isEmpty() || scene.months.isEmpty()) return scene;
    scene.size = sceneSize(table.months.size(), table.inks.size());
    addBars(scene, table, colors);
    addFloorAndWalls(scene);
    addShadows(scene);
    return scene;
}

void Camera::turn(float yaw, float pitch) {
    yaw_ = std::remainder(yaw_ + yaw, 360.0F);
    pitch_ = std::clamp(pitch_ + pitch, kLowestPitch, kHighestPitch);
}

void Camera::zoomBy(double factor, QPointF from) {
    const double before = zoom_;
    zoom_ = std::clamp(zoom_ * factor, kLeastZoom, kMostZoom);
    pan_ = zoom_ <= 1 ? QPointF() : from - (from - pan_) * (zoom_ / before);
}

Camera Camera::unzoomed() const {
    Camera camera = *this;
    camera.zoom_ = 1;
    camera.pan_ = {};
    return camera;
}

Lighting barLighting(const Camera& camera) {
    constexpr float kLeftOfViewer = 35;
    constexpr float kElevation = 58;
    return {directionTo(camera.yaw() - kLeftOfViewer, kElevation), 0.68F, 0.34F, 0.06F};
}

QColor litColor(const Face& face, const Lighting& lighting) {
    const float d = std::max(QVector3D::dotProduct(face.normal, lighting.direction), 0.0F);
    const float gain = lighting.ambient + lighting.diffuse * d;
    const auto lit = [&](float c) { return std::min(c * gain + lighting.sheen * d, 1.0F); };
    return QColor::fromRgbF(lit(face.color.redF()), lit(face.color.greenF()),
                            lit(face.color.blueF()), face.color.alphaF());
}

Projection::Projection(const Scene3D& scene, const Camera& camera, QSizeF size,
                       const QMarginsF& margins)
    : size_(size) {
    const float radius = scene.size.length() / 2;
    const QVector3D middle(0, scene.size.y() / 2, 0);
    eye_ = middle + directionTo(camera.yaw(), camera.pitch()) * kDistance * radius;
    matrix_.perspective(kFieldOfView, 1, (kDistance - 1.1F) * radius, (kDistance + 1.1F) * radius);
    matrix_.lookAt(eye_, middle, {0, 1, 0});
    const auto corners = cornersOf(scene.size);
    fit(boundingRect(corners, [&](const QVector3D& c) { return matrix_.map(c).toPointF(); }),
        camera, margins);
    box_ = boundingRect(corners, [&](const QVector3D& c) { return toPixel(c); });
}

// `box` is what to show, in device coordinates as they are so far.
void Projection::fit(const QRectF& box, const Camera& camera, const QMarginsF& margins) {
    const QRectF view(QPointF(), size_);
    const QRectF room = view.marginsRemoved(margins);
    const double scale = camera.zoom() * std::min(std::max(room.width(), 1.0) / box.width(),
                                                  std::max(room.height(), 1.0) / box.height());
    const QPointF shift = room.center() - view.center() + camera.pan();
    const double perX = 2 / size_.width();
    const double perY = 2 / size_.height();
    QMatrix4x4 fitting;
    fitting.translate(static_cast<float>(shift.x() * perX), static_cast<float>(-shift.y() * perY));
    fitting.scale(static_cast<float>(scale * perX), static_cast<float>(scale * perY));
    fitting.translate(static_cast<float>(-box.center().x()), static_cast<float>(-box.center().y()));
    matrix_ = fitting * matrix_;
    inverse_ = matrix_.inverted();
}

QPointF Projection::toPixel(const QVector3D& point) const {
    const QVector3D ndc = matrix_.map(point);
    return {(ndc.x() + 1) / 2 * size_.width(), (1 - ndc.y()) / 2 * size_.height()};
}

QVector3D Projection::fromPixel(QPointF pixel, float depth) const {
    const QVector3D ndc(static_cast<float>(2 * pixel.x() / size_.width() - 1),
                        static_cast<float>(1 - 2 * pixel.y() / size_.height()), depth);
    return inverse_.map(ndc);
}

const Bar* pickBar(const Scene3D& scene, const Projection& projection, QPointF pixel) {
    const QVector3D from = projection.fromPixel(pixel, -1);
    const QVector3D to = projection.fromPixel(pixel, 1);
    const Bar* nearest = nullptr;
    float nearestEntry = 2;
    for (const Bar& bar : scene.bars) {
        const auto entry = entryInto(bar, from, to);
        if (!entry || *entry >= nearestEntry) continue;
        nearest = &bar;
        nearestEntry = *entry;
    }
    return nearest;
}

std::vector<const Bar*> backToFront(const Scene3D& scene, const QVector3D& eye) {
    std::vector<const Bar*> bars;
    for (const Bar& bar : scene.bars) bars.push_back(&bar);
    // Bars stand in rows and columns: a plane between two of them separates what is farther from
    // what is nearer, so sorting by either distance along an axis suffices.
    std::ranges::stable_sort(bars, std::greater(), [&](const Bar* bar) {
        const QVector3D away = (bar->low + bar->high) / 2 - eye;
        return std::pair(std::abs(away.x()), std::abs(away.z()));
    });
    return bars;
}

}  // namespace tintoral
