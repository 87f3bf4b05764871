#include "app/graph3d_view.h"

#include <gtest/gtest.h>

#include <QtGui/QHelpEvent>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QToolTip>
#include <algorithm>

#include "support/test_clock.h"

namespace tintoral {
namespace {

constexpr QSize kSize(640, 400);
const std::vector<QColor> kColors{Qt::black, Qt::cyan, Qt::magenta, Qt::yellow};

Date dayInMonth(int monthsAgo) {
    return std::chrono::sys_days{(std::chrono::year{2026} / 3 - std::chrono::months(monthsAgo)) /
                                 7};
}

// Four inks whose bars grow with the ink and shrink with the month: most are seen.
std::shared_ptr<const Array> history() {
    const std::vector<std::string> names{"Black", "Cyan", "Magenta", "Yellow <i>"};
    auto entries = std::make_shared<Array>();
    for (int month = 11; month >= 0; --month) {
        Dictionary entry{{"Colors", names}, {"Date", dayInMonth(month)}};
        for (std::size_t i = 0; i < names.size(); ++i) {
            entry.set(names[i], static_cast<int>(i) * 25 + month);
        }
        entries->push_back(entry);
    }
    return entries;
}

class Graph3D : public testing::Test {
  protected:
    Graph3D() {
        view_.resize(kSize);
        view_.setInkHistory(history(), kColors);
    }

    QImage paint() {
        QImage image(kSize, QImage::Format_ARGB32_Premultiplied);
        QPainter painter(&image);
        view_.paintTo(painter);
        return image;
    }
    const Bar& bar(std::size_t ink, std::size_t month) const {
        return *std::ranges::find_if(
            view_.scene().bars, [&](const Bar& b) { return b.ink == ink && b.month == month; });
    }
    QPointF pixelOf(const QVector3D& point) const {
        return view_.frame()->projection.toPixel(point);
    }
    QPointF topOf(const Bar& b) const {
        const QVector3D middle = (b.low + b.high) / 2;
        return pixelOf({middle.x(), b.high.y(), middle.z()});
    }
    QString toolTipAt(QPointF pixel) {
        QHelpEvent event(QEvent::ToolTip, pixel.toPoint(), {});
        QApplication::sendEvent(&view_, &event);
        return QToolTip::text();
    }

    test::TestClock clock_;
    ScopedClock scope_{clock_};
    Graph3DView view_;
};

TEST_F(Graph3D, BarsStandAsHighAsTheirLevelsOnTheGrid) {
    const Dictionary entry{{"A", 0},
                           {"B", 50},
                           {"C", 100},
                           {"D", 250},
                           {"E", -3},
                           {"Colors", Array{"C", "B", "D", "A", "E"}},
                           {"Date", dayInMonth(0)}};
    const Scene3D scene = makeScene(monthlyLevels({entry}), {}, {Qt::white, Qt::black});
    EXPECT_EQ(scene.inks, (QStringList{"C", "B", "D", "A", "E"}));
    EXPECT_EQ(scene.months, (QStringList{"Dec/25", "Jan/26", "Feb/26", "Mar/26"}));
    ASSERT_EQ(scene.bars.size(), 4U) << "no bar for a marker";
    const float shares[] = {1, 0.5F, 1, 0};
    for (const Bar& b : scene.bars) {
        EXPECT_EQ(b.month, 3U);
        EXPECT_NEAR(b.high.y() / scene.size.y(), shares[b.ink], 0.01) << b.ink;
        EXPECT_GT(b.high.y(), 0);
        for (const QVector3D& corner : b.corners) {
            for (int axis = 0; axis < 3; ++axis) {
                EXPECT_GE(corner[axis], b.low[axis] - 1e-5F);
                EXPECT_LE(corner[axis], b.high[axis] + 1e-5F);
            }
        }
    }
    EXPECT_GT(scene.bars[0].low.z(), scene.bars[1].high.z()) << "the first ink is in front";
}

TEST_F(Graph3D, EveryTopIsPickedAndHasItsColor) {
    const QImage image = paint();
    for (std::size_t ink = 0; ink < 4; ++ink) {
        for (std::size_t month = 0; month < 12; ++month) {
            const Bar& expected = bar(ink, month);
            const QPointF pixel = topOf(expected);
            const auto frame = view_.frame();
            ASSERT_EQ(pickBar(view_.scene(), frame->projection, pixel), &expected);
            const QColor seen = image.pixelColor(pixel.toPoint());
            const QColor top = litColor(expected.sides.back(), frame->lighting);
            EXPECT_NEAR(seen.red(), top.red(), 2) << ink << ' ' << month;
            EXPECT_NEAR(seen.green(), top.green(), 2) << ink << ' ' << month;
            EXPECT_NEAR(seen.blue(), top.blue(), 2) << ink << ' ' << month;
            EXPECT_TRUE(ink == 0 || std::abs(seen.hue() - kColors[ink].hue()) < 4);
        }
    }
    EXPECT_EQ(pickBar(view_.scene(), view_.frame()->projection, {2, 2}), nullptr);
}

// From all around, what is painted last at a pixel is what the ray meets first.
TEST_F(Graph3D, NearBarsCoverFarOnesFromEverySide) {
    const auto scene = std::make_shared<const Scene3D>(view_.scene());
    for (int yaw = 0; yaw < 360; yaw += 36) {
        Camera camera;
        camera.turn(static_cast<float>(yaw), 0);
        const Frame3D frame = makeFrame(scene, camera, kSize, view_.font());
        const auto picked = [&](int x, int y) {
            return pickBar(*scene, frame.projection, QPointF(x + 0.5, y + 0.5));
        };
        QImage image(kSize, QImage::Format_ARGB32_Premultiplied);
        QPainter painter(&image);
        paintFaces(painter, frame);
        int inside = 0;
        for (int y = 11; y < kSize.height(); y += 11) {
            for (int x = 11; x < kSize.width(); x += 11) {
                const Bar* seen = picked(x, y);
                const bool isRim = picked(x - 4, y - 4) != seen || picked(x + 4, y - 4) != seen ||
                                   picked(x - 4, y + 4) != seen || picked(x + 4, y + 4) != seen;
                if (!seen || seen->ink == 0 || isRim) continue;
                ++inside;
                const int hue = image.pixelColor(x, y).hue();
                EXPECT_NEAR(hue, kColors[seen->ink].hue(), 4) << x << ',' << y << " yaw " << yaw;
            }
        }
        EXPECT_GT(inside, 50);
    }
}

TEST_F(Graph3D, LabelsStayInTheViewAndApart) {
    for (int yaw = 0; yaw < 360; yaw += 10) {
        for (const float pitch : {-90.0F, 0.0F, 90.0F}) {
            Camera camera;
            camera.turn(static_cast<float>(yaw), pitch);
            const auto frame =
                makeFrame(std::make_shared<Scene3D>(view_.scene()), camera, kSize, view_.font());
            const auto labels = labelsOf(*frame.scene, frame.projection, frame.font);
            EXPECT_GE(labels.size(), 5U);
            for (const Label3D& label : labels) {
                EXPECT_TRUE(QRectF(QPointF(), kSize).contains(label.place))
                    << label.text.toStdString() << label.place.x() << " " << label.place.y() << " "
                    << label.place.right() << " " << label.place.bottom() << " " << yaw << ' '
                    << pitch;
                for (const Label3D& other : labels) {
                    EXPECT_TRUE(&other == &label || !other.place.intersects(label.place));
                }
            }
        }
    }
}

TEST_F(Graph3D, TurnsZoomsWithinBoundsAndComesBack) {
    const Camera initial;
    QTest::mousePress(&view_, Qt::LeftButton, {}, {300, 200});
    QTest::mouseMove(&view_, {400, 230});
    EXPECT_LT(view_.camera().yaw(), initial.yaw()) << "the near side follows the pointer";
    EXPECT_GT(view_.camera().pitch(), initial.pitch());
    QTest::mouseMove(&view_, {400, 4000});
    EXPECT_EQ(view_.camera().pitch(), Camera::kHighestPitch);
    QTest::mouseMove(&view_, {400, -8000});
    EXPECT_EQ(view_.camera().pitch(), Camera::kLowestPitch);
    QTest::mouseRelease(&view_, Qt::LeftButton, {}, {400, 0});
    const float yaw = view_.camera().yaw();
    QTest::mouseMove(&view_, {100, 100});
    EXPECT_EQ(view_.camera().yaw(), yaw) << "no longer dragged";
    QTest::mouseDClick(&view_, Qt::LeftButton, {}, {300, 200});
    EXPECT_EQ(view_.camera().yaw(), initial.yaw());
    EXPECT_EQ(view_.camera().pitch(), initial.pitch());

    for (int i = 0; i < 100; ++i) QTest::keyClick(&view_, Qt::Key_Right);
    EXPECT_LE(std::abs(view_.camera().yaw()), 180);
    QTest::keyClick(&view_, Qt::Key_Home);
    EXPECT_EQ(view_.camera().yaw(), initial.yaw());
}

TEST_F(Graph3D, TheWheelZoomsAboutThePointer) {
    const QPointF pixel = topOf(bar(3, 2));
    const auto wheel = [&](int angle) {
        QWheelEvent event(pixel, pixel, {}, {0, angle}, {}, {}, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&view_, &event);
    };
    wheel(240);
    EXPECT_GT(view_.camera().zoom(), 1.2);
    EXPECT_LT(QLineF(topOf(bar(3, 2)), pixel).length(), 0.5);
    for (int i = 0; i < 50; ++i) wheel(240);
    EXPECT_EQ(view_.camera().zoom(), Camera::kMostZoom);
    for (int i = 0; i < 100; ++i) wheel(-240);
    EXPECT_EQ(view_.camera().zoom(), Camera::kLeastZoom);
    EXPECT_EQ(view_.camera().pan(), QPointF());
}

TEST_F(Graph3D, TellsWhatIsUnderThePointer) {
    EXPECT_EQ(toolTipAt(topOf(bar(1, 0))), "<qt>Cyan, Apr/25: 36 %</qt>");
    EXPECT_EQ(toolTipAt(topOf(bar(3, 11))), "<qt>Yellow &lt;i&gt;, Mar/26: 75 %</qt>");
    EXPECT_TRUE(toolTipAt({2, 2}).contains("Drag"));
    EXPECT_TRUE(view_.accessibleDescription().contains("Cyan, Mar/26: 25 %"));
}

TEST_F(Graph3D, WithoutLevelsItSaysSoKindly) {
    const QRgb ground = view_.palette().color(QPalette::Window).rgb();
    const std::shared_ptr<const Array> nothings[] = {
        nullptr, std::make_shared<Array>(), std::make_shared<Array>(Array{5, "text"}),
        std::make_shared<Array>(Array{Dictionary{{"Black", 5}, {"Colors", Array{"Black"}}}})};
    for (const auto& nothing : nothings) {
        view_.setInkHistory(nothing, kColors);
        EXPECT_FALSE(view_.frame());
        const QImage image = paint();
        EXPECT_EQ(image.pixel(5, 5), ground);
        int inked = 0;
        for (int x = 0; x < kSize.width(); ++x) {
            for (int y = 180; y < 220; ++y) inked += image.pixel(x, y) != ground;
        }
        EXPECT_GT(inked, 300) << "a text in the middle";
        QTest::keyClick(&view_, Qt::Key_Plus);
        QTest::mouseMove(&view_, {300, 200});
    }
}

// Each ink stands out from the ground with its body or its edges.
TEST_F(Graph3D, BlackAndWhiteInksAreSeenOnDarkAndLightGround) {
    const auto standsOut = [](const QColor& ink, const SceneTheme& theme) {
        const Scene3D scene = makeScene(monthlyLevels(*history()), {ink}, theme);
        const auto apart = [&](const Face& face) {
            return std::abs(face.color.lightness() - theme.background.lightness());
        };
        const Bar& b = scene.bars.front();
        return std::max(apart(b.sides[0]), apart(b.edges[0])) > 50;
    };
    for (const QColor& ink : {QColor(Qt::black), QColor(Qt::white), QColor(240, 240, 200)}) {
        EXPECT_TRUE(standsOut(ink, {QColor(0xEF, 0xEF, 0xEF), Qt::black}));
        EXPECT_TRUE(standsOut(ink, {QColor(0x25, 0x27, 0x2B), Qt::white}));
    }
}

}  // namespace
}  // namespace tintoral
