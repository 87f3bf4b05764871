// Run by graph3d_gl_test.sh on a display that has OpenGL.
#include <gtest/gtest.h>

#include <QtOpenGLWidgets/QOpenGLWidget>
#include <QtTest/QTest>

#include "app/graph3d_gl.h"
#include "app/graph3d_view.h"

namespace tintoral {
namespace {

std::shared_ptr<const Array> history() {
    const std::vector<std::string> names{"Black", "Cyan", "Magenta", "Yellow", "White"};
    auto entries = std::make_shared<Array>();
    for (unsigned month = 1; month <= 12; ++month) {
        Dictionary entry{{"Colors", names},
                         {"Date", Date(std::chrono::sys_days{std::chrono::year{2024} /
                                                             static_cast<int>(month) / 1})}};
        for (std::size_t i = 0; i < names.size(); ++i) {
            entry.set(names[i], static_cast<int>((std::size_t{month} * 17 + i * 31) % 101));
        }
        entries->push_back(entry);
    }
    return entries;
}

QImage painted(const Graph3DView& view) {
    QImage image(view.size(), QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    view.paintTo(painter);
    return image;
}

int mostApart(QRgb a, QRgb b) {
    return std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                     std::abs(qBlue(a) - qBlue(b))});
}

double shareApart(const QImage& a, const QImage& b, int tolerance) {
    int apart = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            apart += mostApart(a.pixel(x, y), b.pixel(x, y)) > tolerance;
        }
    }
    return double(apart) / (a.width() * a.height());
}

// Rims of faces and letters may differ, as the two smooth them in different ways.
void expectSame(const QImage& drawn, const QImage& painted) {
    ASSERT_EQ(drawn.size(), painted.size());
    EXPECT_LT(shareApart(drawn, painted, 3), 0.07);
    EXPECT_LT(shareApart(drawn, painted, 60), 0.008);
}

TEST(Graph3DGl, ShowsThePainterPicture) {
    ASSERT_NE(availableOpenGL(), OpenGL::None);
    Graph3DView view(Graph3DView::Renderer::OpenGL, nullptr);
    view.resize(640, 400);
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    auto* gl = view.findChild<Graph3DGl*>();
    ASSERT_TRUE(gl);
    EXPECT_FALSE(gl->isVisible()) << "nothing to show yet";
    view.setInkHistory(history(), {Qt::black, Qt::cyan, Qt::magenta, Qt::yellow, Qt::white});
    for (int turn = 0; turn < 8; ++turn) {
        const QImage drawn = gl->grabFramebuffer();
        ASSERT_TRUE(gl->isDrawing());
        SCOPED_TRACE(turn);
        expectSame(drawn, painted(view));
        for (int key = 0; key < 7; ++key) QTest::keyClick(&view, Qt::Key_Right);
    }
    // Another scene replaces the one on the card; another size, its picture.
    view.setInkHistory(history(), {Qt::red});
    view.resize(500, 450);
    expectSame(gl->grabFramebuffer(), painted(view));
}

TEST(Graph3DGl, SurvivesAMoveToAnotherWindow) {
    QWidget first;
    QWidget second;
    auto view = std::make_unique<Graph3DView>(Graph3DView::Renderer::OpenGL, &first);
    view->resize(640, 400);
    view->setInkHistory(history(), {});
    first.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&first));
    view->setParent(&second);
    view->show();
    second.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&second));
    expectSame(view->findChild<Graph3DGl*>()->grabFramebuffer(), painted(*view));
}

}  // namespace
}  // namespace tintoral
