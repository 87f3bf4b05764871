// The scene of the 3-D ink history, without anything that draws: a table of bars on a floor before
// walls, the camera that looks at it, and what lies under a pixel.
//
//   x  months, the newest at the right      floor 0 .. scene.size.y() wall height = 100 percent
//   y  levels, upwards                      the middle of the floor is the origin
//   z  inks, the first nearest the viewer
//
// Corners of a face go round counter-clockwise as seen from its outside, so that a renderer culls
// what is turned away by the sense of rotation alone. Walls face inwards: those between the viewer
// and the bars vanish.
#pragma once

#include <QtCore/QMarginsF>
#include <QtCore/QPointF>
#include <QtCore/QRectF>
#include <QtCore/QSizeF>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtGui/QColor>
#include <QtGui/QMatrix4x4>
#include <QtGui/QVector3D>
#include <array>
#include <vector>

#include "history/monthly_levels.h"

namespace tintoral {

inline constexpr int kFullLevel = 100;  // percent
inline constexpr int kLevelStep = 20;   // between two lines on a wall

// The two colours of the person's palette that all others derive from.
struct SceneTheme {
    QColor background;
    QColor text;
};

QColor mixed(const QColor& a, const QColor& b, double shareOfB);

// A convex face of one colour.
struct Face {
    static constexpr std::size_t kMostCorners = 8;

    std::array<QVector3D, kMostCorners> corners;
    std::size_t count = 0;
    QVector3D normal;
    QColor color;
};

// A box with its upright and upper edges cut off. The cuts have one light, that of the top: a
// renderer may fill the bar's outline with it and put the sides over that.
struct Bar {
    static constexpr std::size_t kRing = 8;  // corners around the bar at one height

    std::size_t ink = 0;
    std::size_t month = 0;
    int level = 0;  // percent as reported
    QVector3D low;  // opposite corners of the box
    QVector3D high;
    std::array<QVector3D, 3 * kRing> corners;
    std::array<Face, 5> sides;  // and the top, last
    std::array<Face, 12> edges;
};

struct Scene3D {
    QVector3D size;              // of the box that everything stands in
    std::vector<Face> backdrop;  // floor, walls, grid and shadows, each over those before it
    std::vector<Bar> bars;
    QStringList inks;    // fit to show, from the front to the back
    QStringList months;  // "Jan/26"
    SceneTheme theme;

    bool isEmpty() const { return bars.empty(); }
    // The middle of the place of a month or an ink on its axis.
    float monthX(std::size_t month) const;
    float inkZ(std::size_t ink) const;
    // The height of a level, which is cut to 0 to 100 percent.
    float levelY(int level) const;
};

// The scene of a table. An ink without a valid colour in `colors` (by position) is grey. A level of
// 0 still has a flat bar, to be told from a month without a reading. A colour that could not be
// told from the ground has its edges in one that can.
Scene3D makeScene(const MonthlyLevels& table, const std::vector<QColor>& colors,
                  const SceneTheme& theme);

// From where the scene is seen. Degrees; the pitch stays between looking along the floor and
// looking down.
class Camera {
  public:
    static constexpr float kLowestPitch = 6;
    static constexpr float kHighestPitch = 80;
    static constexpr double kLeastZoom = 0.6;
    static constexpr double kMostZoom = 4;

    float yaw() const { return yaw_; }  // -180 to 180, 0 from the front, growing to the right
    float pitch() const { return pitch_; }
    double zoom() const { return zoom_; }
    QPointF pan() const { return pan_; }

    void turn(float yaw, float pitch);
    // Multiplies the zoom. The point `from`, in pixels from where the middle of the picture is
    // without pan, stays where it is, but a picture that fits is always in the middle.
    void zoomBy(double factor, QPointF from);
    // From the same side at zoom 1.
    Camera unzoomed() const;

  private:
    float yaw_ = 28;
    float pitch_ = 24;
    double zoom_ = 1;
    QPointF pan_;
};

// The shares of the light; a renderer computes colour * (ambient + diffuse * d) + sheen * d, where
// d is the cosine between the face and the light, or 0.
struct Lighting {
    QVector3D direction;  // to the light
    float ambient = 1;
    float diffuse = 0;
    float sheen = 0;
};

// The backdrop is shown in its own colours.
Lighting barLighting(const Camera& camera);
QColor litColor(const Face& face, const Lighting& lighting);

// A camera's picture of a scene in a view.
class Projection {
  public:
    // The scene's box fills a view of `size` pixels inside of `margins` at zoom 1.
    Projection(const Scene3D& scene, const Camera& camera, QSizeF size, const QMarginsF& margins);

    const QMatrix4x4& matrix() const { return matrix_; }  // to normalized device coordinates
    QVector3D eye() const { return eye_; }
    QSizeF size() const { return size_; }
    QPointF toPixel(const QVector3D& point) const;
    // The pixel rectangle around the scene's box.
    QRectF boxOnScreen() const { return box_; }

    // The point on the near (-1) or far (1) plane under a pixel.
    QVector3D fromPixel(QPointF pixel, float depth) const;

  private:
    void fit(const QRectF& box, const Camera& camera, const QMarginsF& margins);

    QMatrix4x4 matrix_;
    QMatrix4x4 inverse_;
    QVector3D eye_;
    QSizeF size_;
    QRectF box_;
};

// The bar that is seen at a pixel, or null. The pointer is good as long as the scene.
const Bar* pickBar(const Scene3D& scene, const Projection& projection, QPointF pixel);

// The bars such that each comes after all that it may cover.
std::vector<const Bar*> backToFront(const Scene3D& scene, const QVector3D& eye);

}  // namespace tintoral
