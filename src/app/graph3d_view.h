// The 3-D view of a printer's ink history: lit bars for each ink and month.
//
// Dragging or the arrow keys turn it, the wheel or plus and minus zoom it, a double click or Home
// puts it back; a tooltip tells what is under the pointer. Drawn with OpenGL where a graphics card
// does that, else with QPainter: the two look the same. To be made when it is first shown, as
// OpenGL may take long to start and much memory.
#pragma once

#include <QtGui/QColor>
#include <QtGui/QHelpEvent>
#include <QtWidgets/QWidget>
#include <memory>
#include <optional>
#include <vector>

#include "app/graph3d_painter.h"
#include "history/monthly_levels.h"

namespace tintoral {

class Graph3DGl;

class Graph3DView : public QWidget {
    Q_OBJECT

  public:
    enum class Renderer { OpenGL, Painter };

    // With the renderer that is faster here.
    explicit Graph3DView(QWidget* parent = nullptr);
    // Renderer::OpenGL only where availableOpenGL() tells of any.
    Graph3DView(Renderer renderer, QWidget* parent);
    ~Graph3DView() override;

    // Shows another history (inkDicts, oldest first; null for none), which is read now and not
    // kept. `colors` belong to the inks of monthlyLevels(*history), by position; an ink without a
    // valid one is grey.
    void setInkHistory(const std::shared_ptr<const Array>& history, std::vector<QColor> colors);

    const Camera& camera() const { return camera_; }
    const Scene3D& scene() const { return *scene_; }
    // What is shown at the present size; nothing without bars.
    std::optional<Frame3D> frame() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    // Paints the view at its present size without OpenGL.
    void paintTo(QPainter& painter) const;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void leaveEvent(QEvent* event) override;

  private:
    void rebuild();
    void refresh();
    void reset();
    void zoomAt(double factor, QPointF pixel);
    const Bar* barAt(QPointF pixel) const;
    void mark(const Bar* bar);
    void showToolTip(const QHelpEvent& help);
    QString textOf(const Bar& bar) const;
    void describe();

    MonthlyLevels table_;
    std::vector<QColor> colors_;
    std::shared_ptr<const Scene3D> scene_;
    Camera camera_;
    const Bar* marked_ = nullptr;  // of scene_
    std::optional<QPointF> dragged_;
    std::unique_ptr<Graph3DGl> gl_;
};

}  // namespace tintoral
