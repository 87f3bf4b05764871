#include "app/graph3d_view.h"

#include <QtCore/QStringList>
#include <QtGui/QHelpEvent>
#include <QtGui/QKeyEvent>
#include <QtGui/QMouseEvent>
#include <QtGui/QPainter>
#include <QtGui/QWheelEvent>
#include <QtWidgets/QToolTip>
#include <algorithm>
#include <array>
#include <cmath>

#include "app/graph3d_gl.h"

namespace tintoral {
namespace {

constexpr float kDegreesPerPixel = 0.4F;
constexpr float kDegreesPerKey = 6;
constexpr double kZoomPerStep = 1.15;
constexpr double kAnglePerStep = 120;  // of a wheel, in eighths of a degree
constexpr double kFinePixels = 1.5;    // to a point; so fine that rough rims hardly show in motion
constexpr QSize kPreferredSize(720, 420);
constexpr QSize kLeastSize(260, 180);

struct KeyAction {
    Qt::Key key;
    float yaw;
    float pitch;
    double zoom;
};
constexpr std::array kKeyActions{
    KeyAction{Qt::Key_Left, -kDegreesPerKey, 0, 1},
    KeyAction{Qt::Key_Right, kDegreesPerKey, 0, 1},
    KeyAction{Qt::Key_Up, 0, kDegreesPerKey, 1},
    KeyAction{Qt::Key_Down, 0, -kDegreesPerKey, 1},
    KeyAction{Qt::Key_Plus, 0, 0, kZoomPerStep},
    KeyAction{Qt::Key_Equal, 0, 0, kZoomPerStep},
    KeyAction{Qt::Key_Minus, 0, 0, 1 / kZoomPerStep},
};

void paintNothingYet(QPainter& painter, const QRectF& view, const SceneTheme& theme) {
    painter.fillRect(view, theme.background);
    painter.setPen(mixed(theme.text, theme.background, 0.3));
    painter.drawText(view, Qt::AlignCenter | Qt::TextWordWrap,
                     QStringLiteral("No ink levels yet.\n"
                                    "They gather here each time this printer is updated."));
}

}  // namespace

Graph3DView::Graph3DView(QWidget* parent)
    : Graph3DView(availableOpenGL() == OpenGL::Hardware ? Renderer::OpenGL : Renderer::Painter,
                  parent) {}

Graph3DView::Graph3DView(Renderer renderer, QWidget* parent) : QWidget(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAccessibleName(QStringLiteral("Ink history in three dimensions"));
    if (renderer == Renderer::OpenGL) {
        gl_ = std::make_unique<Graph3DGl>(this);
        gl_->setAttribute(Qt::WA_TransparentForMouseEvents);
    }
    rebuild();
}

Graph3DView::~Graph3DView() = default;

void Graph3DView::setInkHistory(const std::shared_ptr<const Array>& history,
                                std::vector<QColor> colors) {
    table_ = history ? monthlyLevels(*history) : MonthlyLevels();
    colors_ = std::move(colors);
    rebuild();
}

void Graph3DView::rebuild() {
    marked_ = nullptr;
    const SceneTheme theme{palette().color(QPalette::Window),
                           palette().color(QPalette::WindowText)};
    scene_ = std::make_shared<const Scene3D>(makeScene(table_, colors_, theme));
    describe();
    refresh();
}

std::optional<Frame3D> Graph3DView::frame() const {
    if (scene_->isEmpty() || size().isEmpty()) return std::nullopt;
    Frame3D frame = makeFrame(scene_, camera_, size(), font());
    frame.marked = marked_;
    frame.isSmooth = !dragged_ || devicePixelRatioF() < kFinePixels;
    return frame;
}

void Graph3DView::refresh() {
    update();
    if (!gl_) return;
    auto shown = frame();
    gl_->setVisible(shown.has_value());
    if (shown) gl_->setFrame(*std::move(shown));
}

void Graph3DView::reset() {
    camera_ = Camera();
    refresh();
}

QSize Graph3DView::sizeHint() const {
    return kPreferredSize;
}

QSize Graph3DView::minimumSizeHint() const {
    return kLeastSize;
}

void Graph3DView::paintEvent(QPaintEvent*) {
    if (gl_ && !scene_->isEmpty()) return;
    QPainter painter(this);
    paintTo(painter);
}

void Graph3DView::paintTo(QPainter& painter) const {
    const auto shown = frame();
    if (!shown) return paintNothingYet(painter, rect(), scene_->theme);
    paintFaces(painter, *shown);
    paintOverlay(painter, *shown);
}

void Graph3DView::resizeEvent(QResizeEvent*) {
    if (gl_) gl_->resize(size());
    refresh();
}

void Graph3DView::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) rebuild();
    if (event->type() == QEvent::FontChange) refresh();
}

void Graph3DView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return event->ignore();
    dragged_ = event->position();
    mark(nullptr);
}

void Graph3DView::mouseMoveEvent(QMouseEvent* event) {
    if (!dragged_) return mark(barAt(event->position()));
    const QPointF way = event->position() - *dragged_;
    dragged_ = event->position();
    camera_.turn(-kDegreesPerPixel * static_cast<float>(way.x()),
                 kDegreesPerPixel * static_cast<float>(way.y()));
    refresh();
}

void Graph3DView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return event->ignore();
    dragged_.reset();
    refresh();
}

void Graph3DView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) reset();
}

void Graph3DView::wheelEvent(QWheelEvent* event) {
    const double steps = event->angleDelta().y() / kAnglePerStep;
    zoomAt(std::pow(kZoomPerStep, steps), event->position());
}

void Graph3DView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Home) return reset();
    const auto action = std::ranges::find(kKeyActions, event->key(), &KeyAction::key);
    if (action == kKeyActions.end()) return QWidget::keyPressEvent(event);
    camera_.turn(action->yaw, action->pitch);
    zoomAt(action->zoom, QRectF(rect()).center());
}

void Graph3DView::leaveEvent(QEvent*) {
    mark(nullptr);
}

void Graph3DView::zoomAt(double factor, QPointF pixel) {
    if (const auto shown = frame()) {
        camera_.zoomBy(factor, pixel - shown->projection.boxOnScreen().center() + camera_.pan());
    }
    refresh();
}

const Bar* Graph3DView::barAt(QPointF pixel) const {
    const auto shown = frame();
    return shown ? pickBar(*scene_, shown->projection, pixel) : nullptr;
}

void Graph3DView::mark(const Bar* bar) {
    if (bar == marked_) return;
    marked_ = bar;
    refresh();
}

bool Graph3DView::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip) return QWidget::event(event);
    showToolTip(*static_cast<QHelpEvent*>(event));
    return true;
}

void Graph3DView::showToolTip(const QHelpEvent& help) {
    if (scene_->isEmpty()) return QToolTip::hideText();
    const Bar* bar = barAt(help.pos());
    const QString text =
        bar ? textOf(*bar) : QStringLiteral("Drag to turn, wheel to zoom, double click to reset");
    // Marked up on purpose: a name that looks like markup would otherwise be taken as such.
    QToolTip::showText(help.globalPos(), QStringLiteral("<qt>%1</qt>").arg(text.toHtmlEscaped()),
                       this);
}

QString Graph3DView::textOf(const Bar& bar) const {
    return QStringLiteral("%1, %2: %3 %")
        .arg(scene_->inks[static_cast<qsizetype>(bar.ink)],
             scene_->months[static_cast<qsizetype>(bar.month)], QString::number(bar.level));
}

void Graph3DView::describe() {
    QStringList parts;
    for (const Bar& bar : scene_->bars) {
        const auto next = static_cast<qsizetype>(bar.month) + 1;
        if (next == scene_->months.size()) parts << textOf(bar);
    }
    setAccessibleDescription(parts.join(QStringLiteral("; ")));
}

}  // namespace tintoral
