// One picture of the 3-D ink history with QPainter: the faces, where no OpenGL does that, and over
// either the labels, which always face the viewer.
#pragma once

#include <QtCore/QRectF>
#include <QtCore/QString>
#include <QtGui/QFont>
#include <QtGui/QPainter>
#include <memory>
#include <vector>

#include "app/scene3d.h"

namespace tintoral {

// All that a renderer shows. The scene is not empty.
struct Frame3D {
    std::shared_ptr<const Scene3D> scene;
    Projection projection;
    Lighting lighting;
    QFont font;
    const Bar* marked = nullptr;  // of the scene; its outline is drawn
    bool isSmooth = true;         // a QPainter is five times faster with rough rims
};

// The picture in a view of `size` pixels, with room around it for the labels.
Frame3D makeFrame(std::shared_ptr<const Scene3D> scene, const Camera& camera, QSizeF size,
                  const QFont& font);

// The faces on the scene's background, those turned away culled, each over what it covers.
void paintFaces(QPainter& painter, const Frame3D& frame);

// What comes over the faces: the labels of the axes and the outline of the marked bar.
void paintOverlay(QPainter& painter, const Frame3D& frame);
void paintOutline(QPainter& painter, const Bar& bar, const Frame3D& frame);

struct Label3D {
    QString text;
    QRectF place;
};

// The labels along the edges nearest the viewer, and of the levels at the left of the walls. Where
// they would cover each other only every second, third and so on is there.
std::vector<Label3D> labelsOf(const Scene3D& scene, const Projection& projection,
                              const QFont& font);

}  // namespace tintoral
