#include "app/graph3d_gl.h"

#include <QtGui/QGuiApplication>
#include <QtGui/QOffscreenSurface>
#include <QtGui/QOpenGLContext>
#include <QtGui/QPainter>
#include <algorithm>
#include <array>
#include <cstddef>

namespace tintoral {
namespace {

// As the buffer holds it: floats without gaps.
struct Vertex {
    std::array<float, 3> position;
    std::array<float, 3> normal;
    std::array<float, 4> color;
};
static_assert(sizeof(Vertex) == 10 * sizeof(float));

struct Attribute {
    const char* name;
    int location;
    int offset;
    int floats;
};
constexpr std::array kAttributes{
    Attribute{"position", 0, offsetof(Vertex, position), 3},
    Attribute{"normal", 1, offsetof(Vertex, normal), 3},
    Attribute{"color", 2, offsetof(Vertex, color), 4},
};

// One body for all dialects of the shading language; a head each (none for OpenGL ES).
constexpr const char* kLegacyHead = "#version 110\n";
constexpr const char* kCoreVertexHead = "#version 140\n#define attribute in\n#define varying out\n";
constexpr const char* kCoreFragmentHead =
    "#version 140\n#define varying in\n#define gl_FragColor fragment\nout vec4 fragment;\n";

constexpr const char* kVertexBody = R"(
attribute vec3 position;
attribute vec3 normal;
attribute vec4 color;
uniform mat4 matrix;
uniform vec3 light;
uniform vec3 shares;
varying vec4 lit;
void main() {
    float d = max(dot(normal, light), 0.0);
    vec3 shade = color.rgb * (shares.x + shares.y * d) + vec3(shares.z * d);
    lit = vec4(min(shade, vec3(1.0)), color.a);
    gl_Position = matrix * vec4(position, 1.0);
}
)";

constexpr const char* kFragmentBody = R"(
#ifdef GL_ES
precision mediump float;
#endif
varying vec4 lit;
void main() {
    gl_FragColor = lit;
}
)";

struct Heads {
    const char* vertex;
    const char* fragment;
};

Heads headsFor(const QOpenGLContext& context) {
    if (context.isOpenGLES()) return {"", ""};
    const bool isCore = context.format().profile() == QSurfaceFormat::CoreProfile;
    return isCore ? Heads{kCoreVertexHead, kCoreFragmentHead} : Heads{kLegacyHead, kLegacyHead};
}

bool isPlatformWithOpenGL() {
    const QString platform = QGuiApplication::platformName();
    return platform == QLatin1String("xcb") || platform == QLatin1String("eglfs") ||
           platform.startsWith(QLatin1String("wayland"));
}

// By the names that Mesa gives its drivers.
bool isSoftware(const QByteArray& renderer) {
    constexpr std::array kSoftware{"llvmpipe", "softpipe", "swrast", "Software Rasterizer"};
    return std::ranges::any_of(kSoftware,
                               [&](const char* name) { return renderer.contains(name); });
}

OpenGL kindOfCurrent(QOpenGLContext& context) {
    const auto least = context.isOpenGLES() ? std::pair(2, 0) : std::pair(2, 1);
    if (context.format().version() < least) return OpenGL::None;
    const auto* renderer =
        reinterpret_cast<const char*>(context.functions()->glGetString(GL_RENDERER));
    return isSoftware(renderer) ? OpenGL::Software : OpenGL::Hardware;
}

OpenGL findOpenGL() {
    if (!isPlatformWithOpenGL()) return OpenGL::None;
    QOpenGLContext context;
    if (!context.create()) return OpenGL::None;
    QOffscreenSurface surface;
    surface.setFormat(context.format());
    surface.create();
    if (!surface.isValid() || !context.makeCurrent(&surface)) return OpenGL::None;
    const OpenGL kind = kindOfCurrent(context);
    context.doneCurrent();
    return kind;
}

Vertex vertexOf(const Face& face, std::size_t corner) {
    const QVector3D& at = face.corners[corner];
    const QColor& color = face.color;
    return {{at.x(), at.y(), at.z()},
            {face.normal.x(), face.normal.y(), face.normal.z()},
            {color.redF(), color.greenF(), color.blueF(), color.alphaF()}};
}

void addTriangles(const Face& face, std::vector<Vertex>& vertices) {
    for (std::size_t i = 2; i < face.count; ++i) {
        for (const std::size_t corner : {std::size_t{0}, i - 1, i}) {
            vertices.push_back(vertexOf(face, corner));
        }
    }
}

}  // namespace

OpenGL availableOpenGL() {
    static const OpenGL kind = findOpenGL();
    return kind;
}

Graph3DGl::Graph3DGl(QWidget* parent) : QOpenGLWidget(parent) {
    QSurfaceFormat smooth = format();
    smooth.setSamples(4);
    setFormat(smooth);
}

Graph3DGl::~Graph3DGl() {
    release();
}

void Graph3DGl::setFrame(Frame3D frame) {
    frame_ = std::move(frame);
    update();
}

// The context ends with the window that shows it; another window makes another one.
void Graph3DGl::release() {
    if (!program_) return;
    disconnect(releasing_);
    makeCurrent();
    layout_.destroy();
    vertices_.destroy();
    program_.reset();
    uploaded_.reset();
    doneCurrent();
}

void Graph3DGl::initializeGL() {
    initializeOpenGLFunctions();
    releasing_ = connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, &Graph3DGl::release);
    program_ = std::make_unique<QOpenGLShaderProgram>();
    const Heads heads = headsFor(*context());
    program_->addShaderFromSourceCode(QOpenGLShader::Vertex,
                                      QByteArray(heads.vertex) + kVertexBody);
    program_->addShaderFromSourceCode(QOpenGLShader::Fragment,
                                      QByteArray(heads.fragment) + kFragmentBody);
    for (const Attribute& a : kAttributes) program_->bindAttributeLocation(a.name, a.location);
    program_->link();
    layout_.create();
    vertices_.create();
}

void Graph3DGl::paintGL() {
    if (!frame_) return;
    const bool isDrawn = isDrawing();
    if (isDrawn) drawFaces();
    QPainter painter(this);
    if (!isDrawn) paintFaces(painter, *frame_);
    paintOverlay(painter, *frame_);
}

void Graph3DGl::upload(const Scene3D& scene) {
    std::vector<Vertex> vertices;
    for (const Face& face : scene.backdrop) addTriangles(face, vertices);
    backdropVertices_ = static_cast<int>(vertices.size());
    for (const Bar& bar : scene.bars) {
        for (const Face& face : bar.sides) addTriangles(face, vertices);
        for (const Face& face : bar.edges) addTriangles(face, vertices);
    }
    barVertices_ = static_cast<int>(vertices.size()) - backdropVertices_;
    vertices_.allocate(vertices.data(), static_cast<int>(vertices.size() * sizeof(Vertex)));
    for (const Attribute& a : kAttributes) {
        program_->enableAttributeArray(a.location);
        program_->setAttributeBuffer(a.location, GL_FLOAT, a.offset, a.floats, sizeof(Vertex));
    }
}

void Graph3DGl::drawFaces() {
    const QOpenGLVertexArrayObject::Binder binder(&layout_);
    program_->bind();
    vertices_.bind();
    if (uploaded_ != frame_->scene) upload(*frame_->scene);
    uploaded_ = frame_->scene;

    const QColor& ground = frame_->scene->theme.background;
    glClearColor(ground.redF(), ground.greenF(), ground.blueF(), 1);
    glDepthMask(GL_TRUE);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glEnable(GL_CULL_FACE);
    glEnable(GL_BLEND);
    glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    glDisable(GL_DEPTH_TEST);  // what lies in one plane covers what came before it
    program_->setUniformValue("matrix", frame_->projection.matrix());
    drawVertices(0, backdropVertices_, Lighting());
    glEnable(GL_DEPTH_TEST);
    drawVertices(backdropVertices_, barVertices_, frame_->lighting);

    // QPainter expects them off.
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
    vertices_.release();
    program_->release();
}

void Graph3DGl::drawVertices(int first, int count, const Lighting& lighting) {
    program_->setUniformValue("light", lighting.direction);
    program_->setUniformValue("shares",
                              QVector3D(lighting.ambient, lighting.diffuse, lighting.sheen));
    glDrawArrays(GL_TRIANGLES, first, count);
}

}  // namespace tintoral
