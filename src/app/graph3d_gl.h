// The 3-D ink history drawn with OpenGL 2.1, OpenGL ES 2 or later; labels over it with QPainter.
#pragma once

#include <QtGui/QOpenGLFunctions>
#include <QtOpenGL/QOpenGLBuffer>
#include <QtOpenGL/QOpenGLShaderProgram>
#include <QtOpenGL/QOpenGLVertexArrayObject>
#include <QtOpenGLWidgets/QOpenGLWidget>
#include <optional>

#include "app/graph3d_painter.h"

namespace tintoral {

// What a Graph3DGl would run on.
enum class OpenGL {
    None,      // it can be neither made nor shown: the toolkit would crash
    Software,  // the processor draws; QPainter does that several times faster
    Hardware
};

// To be asked after QApplication was made; it is found out once.
OpenGL availableOpenGL();

class Graph3DGl final : public QOpenGLWidget, private QOpenGLFunctions {
    Q_OBJECT

  public:
    explicit Graph3DGl(QWidget* parent);
    ~Graph3DGl() override;

    // Shows another frame, made for this widget's size.
    void setFrame(Frame3D frame);

    // Whether faces are drawn by OpenGL; they are painted where the driver takes no shader.
    bool isDrawing() const { return program_ && program_->isLinked(); }

  protected:
    void initializeGL() override;
    void paintGL() override;

  private:
    void release();
    void upload(const Scene3D& scene);
    void drawFaces();
    void drawVertices(int first, int count, const Lighting& lighting);

    QMetaObject::Connection releasing_;
    std::optional<Frame3D> frame_;
    std::shared_ptr<const Scene3D> uploaded_;
    std::unique_ptr<QOpenGLShaderProgram> program_;
    QOpenGLBuffer vertices_;
    QOpenGLVertexArrayObject layout_;
    int backdropVertices_ = 0;
    int barVertices_ = 0;
};

}  // namespace tintoral
