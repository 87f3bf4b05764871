#include <gtest/gtest.h>

#include <QtCore/QEvent>
#include <QtGui/QAccessible>
#include <QtGui/QHelpEvent>
#include <QtGui/QImage>
#include <QtGui/QPainter>
#include <QtWidgets/QApplication>
#include <QtWidgets/QToolTip>
#include <array>
#include <utility>

#include "app/dock_icon.h"
#include "app/level_view.h"

namespace tintoral {
namespace {

using Texts = std::vector<std::string>;
constexpr QRgb kWhite = qRgb(255, 255, 255);

QRgb grey(int white) {
    return qRgb(white, white, white);
}

// A colour component may differ by 1, as Qt rounds it more than once.
testing::AssertionResult same(QRgb seen, QRgb expected) {
    for (const int bits : {0, 8, 16, 24}) {
        if (std::abs(int((seen >> bits) & 0xFF) - int((expected >> bits) & 0xFF)) <= 1) continue;
        return testing::AssertionFailure() << std::hex << seen << " is not " << expected;
    }
    return testing::AssertionSuccess();
}

Dictionary reading(const std::vector<std::pair<std::string, Value>>& inks) {
    Texts names;
    for (const auto& ink : inks) names.push_back(ink.first);
    Dictionary inkDict{{"Colors", names}};
    for (const auto& [name, level] : inks) inkDict.set(name, level);
    return inkDict;
}

Dictionary readingOf(std::size_t inks) {
    Texts names;
    for (std::size_t i = 0; i < inks; ++i) names.push_back("Red " + std::to_string(i));
    return {{"Colors", names}};
}

QImage paint(LevelView& view, int width) {
    view.resize(width, LevelView::heightForInks(view.inkCount()));
    QImage image(view.size(), QImage::Format_ARGB32);
    image.fill(Qt::magenta);
    QPainter painter(&image);
    view.paintTo(painter);
    return image;
}

// What the level view shows; points have y upwards.
class Shown {
  public:
    explicit Shown(const Dictionary& inkDict, const Texts& rgbColors = {}, int width = 320) {
        LevelView view;
        view.setInkDict(&inkDict, rgbColors);
        image_ = paint(view, width);
    }
    QRgb at(int x, int y) const { return image_.pixel(x, 269 - y); }
    bool hasInk(int left, int right, int bottom, int top) const {
        QImage blank(image_.size(), image_.format());
        blank.fill(Qt::white);
        const QRect part(left, 270 - top, right - left, top - bottom);
        return image_.copy(part) != blank.copy(part);
    }
    const QImage& image() const { return image_; }

  private:
    QImage image_;
};

TEST(LevelView, ShadesAStripButNotAnRgbGrey) {
    const Shown shown(reading({{"Red", 100}, {"Black", 100}, {"Grey", 100}}),
                      {"", "none", "#808080"});
    for (const auto& [y, rest, white] : {std::tuple(245, 179, 179), {248, 77, 51}, {256, 0, 0}}) {
        EXPECT_TRUE(same(shown.at(180, y), qRgb(255, rest, rest))) << y;
        EXPECT_TRUE(same(shown.at(180, y - 25), grey(white))) << y;
        EXPECT_TRUE(same(shown.at(180, y - 50), grey(128))) << y;  // flat, as meant
    }
}

TEST(LevelView, FillsABarByItsLevel) {
    const std::pair<Value, int> cases[]{
        {0, 1},  {1, 1},  {3, 3},    {50, 62},    {99, 123},        {100, 125},    {127, 125},
        {-3, 1}, {-4, 0}, {-128, 0}, {"80", 100}, {INT64_MAX, 125}, {INT64_MIN, 0}};
    for (const auto& [level, filled] : cases) {
        const Shown shown(reading({{"Red", level}}));
        for (int x = 175; x < 300; ++x) {
            const QRgb expected = x < 175 + filled ? qRgb(255, 0, 0) : grey(217);
            EXPECT_TRUE(same(shown.at(x, 256), expected)) << filled << " at " << x;
        }
        EXPECT_TRUE(same(shown.at(300, 256), grey(153)));  // the innermost ring, not the bar
    }
}

TEST(LevelView, GlowsByLevel) {
    using Rings = std::array<QRgb, 3>;
    const Rings red{qRgb(255, 230, 230), qRgb(255, 204, 204), qRgb(255, 179, 179)};
    const Rings yellow{qRgb(255, 255, 230), qRgb(255, 255, 204), qRgb(255, 255, 153)};
    const Rings shadow{grey(242), grey(230), grey(217)};
    const std::pair<int, const Rings&> cases[]{
        {-4, red}, {10, red}, {11, yellow}, {20, yellow}, {21, shadow}};
    for (const auto& [level, rings] : cases) {
        const Shown shown(reading({{"Cyan", level}}));
        for (int in = 0; in < 3; ++in) {
            for (const auto& [x, y] :
                 {std::pair(172 + in, 250), {304 - in, 250}, {230, 259 - in}, {230, 240 + in}})
                EXPECT_TRUE(same(shown.at(x, y), rings[std::size_t(in)])) << level << " at " << x;
        }
        for (const auto& [x, y] : {std::pair(171, 250), {305, 250}, {230, 260}, {230, 239}})
            EXPECT_EQ(shown.at(x, y), kWhite);
    }
}

TEST(LevelView, WritesNamesNotesAndNumbers) {
    const Dictionary inkDict =
        reading({{"Cyan", 45}, {std::string(90, 'W'), -3}, {"Red", -4}, {"Blue", INT64_MAX}});
    const Shown narrow(inkDict);
    const Shown wide(inkDict, {}, 350);
    EXPECT_TRUE(narrow.hasInk(130, 170, 243, 255));
    EXPECT_FALSE(narrow.hasInk(0, 130, 240, 262));  // names end at 170
    EXPECT_TRUE(narrow.hasInk(10, 20, 218, 232));
    EXPECT_FALSE(wide.hasInk(0, 10, 155, 270) || wide.hasInk(170, 172, 155, 270));
    EXPECT_EQ(narrow.at(181, 222), qRgb(0, 0, 0));  // "not empty" within the bar
    EXPECT_FALSE(narrow.hasInk(305, 320, 155, 270));
    EXPECT_TRUE(wide.hasInk(308, 346, 165, 183));
    EXPECT_FALSE(wide.hasInk(305, 350, 215, 233) || wide.hasInk(346, 350, 155, 270));
}

TEST(LevelView, GrowsDownwardsByRowsUpToTwenty) {
    for (const int inks : {0, 1, 20, 25}) {
        const int rows = std::min(inks, 20);
        const Shown shown(readingOf(static_cast<std::size_t>(inks)));
        ASSERT_EQ(shown.image().height(), 25 * rows + 15);
        for (int row = 0; row < rows; ++row)
            EXPECT_TRUE(same(shown.at(175, 256 - 25 * row), qRgb(255, 0, 0))) << row;
    }
}

TEST(LevelView, TellsItsRowsInWords) {
    LevelView view;
    const Dictionary inkDict = reading({{"Cyan", 45}, {"Black", -3}, {"<b>A&B</b>\n", -4}});
    view.setInkDict(&inkDict, {});
    view.resize(400, 90);
    view.show();
    EXPECT_EQ(view.accessibleDescription(), "Cyan 45 %, Black not empty, <b>A&B</b> unknown");
    QAccessibleInterface* bars = QAccessible::queryAccessibleInterface(&view);
    ASSERT_EQ(bars->childCount(), 3);
    QAccessibleInterface* cyan =
        bars->childAt(view.mapToGlobal(QPoint(200, 10)).x(), view.mapToGlobal(QPoint(200, 10)).y());
    ASSERT_EQ(bars->indexOfChild(cyan), 0);
    EXPECT_EQ(cyan->text(QAccessible::Name) + cyan->text(QAccessible::Value), "Cyan45 %");
    EXPECT_EQ(cyan->valueInterface()->currentValue(), 45);
    EXPECT_EQ(bars->child(1)->text(QAccessible::Value), "not empty");
    EXPECT_EQ(bars->child(1)->valueInterface(), nullptr);
    const std::pair<int, QString> tips[]{
        {6, ""}, {7, "Cyan: 45 %"}, {81, "&lt;b&gt;A&amp;B&lt;/b&gt;: unknown"}, {82, ""}};
    for (const auto& [y, text] : tips) {
        QHelpEvent help(QEvent::ToolTip, {200, y}, view.mapToGlobal(QPoint(200, y)));
        QApplication::sendEvent(&view, &help);
        EXPECT_EQ(help.isAccepted(), !text.isEmpty()) << y;
        EXPECT_TRUE(text.isEmpty() || QToolTip::text() == "<qt>" + text + "</qt>") << y;
    }
}

TEST(InkColors, DifferBetweenThePicturesOnlyWhereMeant) {
    const std::tuple<int, QRgb, QRgb> cases[]{{0, QRgb(QColor().rgba()), kWhite},
                                              {144, qRgb(0, 255, 0), qRgb(0, 0, 255)},
                                              {14, qRgb(0, 255, 255), qRgb(0, 255, 255)},
                                              {10, grey(85), grey(85)},
                                              {19, grey(170), grey(170)}};
    for (const auto& [id, inView, inIcon] : cases) {
        EXPECT_TRUE(same(nscolorByColorID(id, Picture::LevelView).color.rgba(), inView)) << id;
        EXPECT_TRUE(same(nscolorByColorID(id, Picture::DockIcon).color.rgba(), inIcon)) << id;
    }
    EXPECT_FALSE(nscolorByColorID(0, Picture::LevelView).color.isValid());
    EXPECT_NEAR(colorByRGBColor("#FFFFFF").color.redF(), 255 / 256.0, 0.00002);  // as meant
}

// The Dock icon; points have y upwards.
class Icon {
  public:
    Icon(const Dictionary* inkDict, const QImage& background, int scale = 1)
        : image_(dockIcon(inkDict, {"#FF8000"}, background).pixmap(128 * scale).toImage()),
          scale_(scale) {}
    QRgb at(int x, int y) const { return image_.pixel(x * scale_, (127 - y) * scale_); }
    int side() const { return image_.width(); }
    // "#" for every point of a height at which there is a bar, upwards from 0.
    std::string bars() const {
        std::string column;
        for (int y = 0; y < 128; ++y) column += qAlpha(at(119, y)) == 0 ? ' ' : '#';
        return column;
    }

  private:
    QImage image_;
    int scale_;
};

TEST(DockIcon, SharesTheHeightAmongTheBars) {
    for (const auto& [inks, pitch, height] :
         {std::tuple(0, 0, 0), {1, 30, 18}, {4, 27, 16}, {12, 9, 5}, {20, 5, 3}}) {
        std::string bars(128, ' ');
        for (long i = 0; i < inks; ++i) std::fill_n(bars.begin() + 20 + i * pitch, height, '#');
        const Dictionary inkDict = readingOf(static_cast<std::size_t>(inks));
        EXPECT_EQ(Icon(&inkDict, {}).bars(), bars) << inks;
    }
}

TEST(DockIcon, LaysBarsOverTheBackground) {
    QImage background(10, 20, QImage::Format_RGB32);
    background.fill(Qt::blue);
    const QRgb blue = qRgb(0, 0, 255);
    const Dictionary inkDict = reading({{"Odd", 59}, {"Red", 300}, {"Cyan", -3}, {"Toner", 50}});
    for (const int scale : {1, 2}) {
        const Icon icon(&inkDict, background, scale);
        ASSERT_EQ(icon.side(), 128 * scale);
        for (const auto& [x, y, color] :  // 59 percent of 80 points are 47
             {std::tuple(0, 0, blue),
              {99, 0, blue},
              {0, 99, blue},
              {39, 50, blue},
              {86, 101, qRgb(254, 128, 0)},
              {87, 116, kWhite},
              {119, 80, qRgb(255, 0, 0)},
              {40, 50, kWhite},
              {79, 20, blue},
              {80, 20, kWhite}})
            EXPECT_TRUE(same(icon.at(x, y), color)) << x << ' ' << y;
        for (const auto& [x, y] : {std::pair(100, 0), {0, 100}, {120, 30}, {100, 46}})
            EXPECT_EQ(qAlpha(icon.at(x, y)), 0) << x << ' ' << y;
    }
}

TEST(Samples, AreShownWithoutAReading) {
    LevelView view;
    view.setPalette(QPalette(Qt::black));
    view.setInkDict(nullptr, {"#FF0000"});
    ASSERT_EQ(view.inkCount(), 10);
    const QImage image = paint(view, 400);
    EXPECT_EQ(image.pixel(399, 264), kWhite);
    EXPECT_TRUE(same(image.pixel(274, 13), qRgb(0, 0, 0)));  // the "#RRGGBB" is dropped
    const Icon icon(nullptr, applicationPicture());
    EXPECT_EQ(icon.at(71, 101), qRgb(0, 0, 0));
    EXPECT_EQ(icon.at(72, 101), kWhite);
    EXPECT_NE(qAlpha(icon.at(30, 30)), 0);
}

}  // namespace
}  // namespace tintoral
