#include <gtest/gtest.h>

#include <QtCore/QEvent>
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

TEST(LevelView, ShadesAStripFromTopToBottom) {
    // Upwards from the lower edge: the rest of a red's green and blue, the white of a black.
    const std::pair<int, int> shades[]{{179, 179}, {153, 153}, {128, 128}, {77, 51},
                                       {26, 26},   {26, 26},   {102, 102}, {128, 128},
                                       {179, 179}, {179, 179}, {102, 102}, {0, 0}};
    const Shown shown(reading({{"Red", 100}, {"Black", 100}, {"Grey", 100}}),
                      {"", "none", "#808080"});
    int y = 245;
    for (const auto& [rest, white] : shades) {
        EXPECT_TRUE(same(shown.at(180, y), qRgb(255, rest, rest))) << y;
        EXPECT_TRUE(same(shown.at(180, y - 25), grey(white))) << y;
        EXPECT_TRUE(same(shown.at(180, y - 50), grey(128)))
            << y;  // an RGB grey stays flat, as meant
        ++y;
    }
}

TEST(LevelView, FillsABarByItsLevel) {
    const std::pair<Value, int> cases[]{
        {0, 1},  {1, 1},  {3, 3},    {50, 62},  {99, 123},        {100, 125},    {127, 125},
        {-3, 1}, {-4, 0}, {-128, 0}, {"80", 1}, {INT64_MAX, 125}, {INT64_MIN, 0}};
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
    const std::array<QRgb, 3> red{qRgb(255, 230, 230), qRgb(255, 204, 204), qRgb(255, 179, 179)};
    const std::array<QRgb, 3> yellow{qRgb(255, 255, 230), qRgb(255, 255, 204), qRgb(255, 255, 153)};
    const std::array<QRgb, 3> shadow{grey(242), grey(230), grey(217)};
    const std::pair<int, std::array<QRgb, 3>> cases[]{
        {-4, red}, {5, red}, {10, red}, {11, yellow}, {15, yellow}, {20, yellow}, {21, shadow}};
    for (const auto& [level, rings] : cases) {
        const Shown shown(reading({{"Cyan", level}}));
        int inwards = 0;
        for (const QRgb ring : rings) {
            for (const auto& [x, y] : {std::pair(172 + inwards, 250),
                                       {304 - inwards, 250},
                                       {230, 259 - inwards},
                                       {230, 240 + inwards}})
                EXPECT_TRUE(same(shown.at(x, y), ring)) << level << " at " << x << ',' << y;
            ++inwards;
        }
        EXPECT_TRUE(same(shown.at(301, 250), grey(191)));
        EXPECT_TRUE(same(shown.at(300, 250), grey(153)));
        EXPECT_TRUE(same(shown.at(230, 244), grey(153)));
        for (const auto& [x, y] : {std::pair(171, 250), {305, 250}, {230, 260}, {230, 239}})
            EXPECT_EQ(shown.at(x, y), kWhite);
    }
}

TEST(LevelView, MarksTheQuarters) {
    const Shown shown(reading({{"Cyan", 80}}));
    for (const int x : {206, 237, 268}) {
        for (int y = 239; y <= 243; ++y) EXPECT_EQ(shown.at(x, y), qRgb(0, 0, 0)) << x << ' ' << y;
        for (const auto& [besideX, y] : {std::pair(x - 1, 240), {x + 1, 240}, {x, 238}, {x, 244}})
            EXPECT_NE(shown.at(besideX, y), qRgb(0, 0, 0));
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
    for (const int row : {0, 2, 3})
        EXPECT_TRUE(wide.hasInk(308, 346, 240 - 25 * row, 258 - 25 * row));
    EXPECT_FALSE(wide.hasInk(305, 350, 215, 233) || wide.hasInk(346, 350, 155, 270));
}

TEST(LevelView, GrowsDownwardsByRows) {
    for (const int inks : {0, 1, 10, 12, 20, 25}) {
        const int rows = std::min(inks, 20);
        const Shown shown(readingOf(static_cast<std::size_t>(inks)));
        ASSERT_EQ(shown.image().height(), 25 * rows + 15);
        for (int row = 0; row < rows; ++row)
            EXPECT_TRUE(same(shown.at(175, 256 - 25 * row), qRgb(255, 0, 0))) << row;
        EXPECT_FALSE(shown.hasInk(0, 320, 255 - 25 * rows, 260 - 25 * rows));
        EXPECT_FALSE(shown.hasInk(0, 320, 265, 270));
    }
}

TEST(LevelView, ShowsASampleOnWhiteWithoutAReading) {
    LevelView view;
    view.setPalette(QPalette(Qt::black));
    const Dictionary inkDict = reading({{"Cyan", 7}});
    view.setInkDict(&inkDict, {"#FF0000"});
    EXPECT_EQ(view.inkCount(), 1);
    view.setInkDict(nullptr, {"#FF0000"});
    ASSERT_EQ(view.inkCount(), 10);
    const QImage image = paint(view, 400);
    EXPECT_EQ(image.pixel(399, 264), kWhite);
    EXPECT_TRUE(same(image.pixel(274, 13), qRgb(0, 0, 0)));      // black: the "#RRGGBB" is dropped
    EXPECT_TRUE(same(image.pixel(275, 13), grey(217)));          // after 100 points: 80 percent
    EXPECT_TRUE(same(image.pixel(175, 38), qRgb(0, 255, 255)));  // cyan
    EXPECT_TRUE(same(image.pixel(175, 238), qRgb(230, 230, 0)));
    for (int x = 306; x < 400; ++x) EXPECT_EQ(image.pixel(x, 20), kWhite);  // no numbers
}

TEST(LevelView, TellsItsRowsInWords) {
    LevelView view;
    const Dictionary inkDict = reading({{"Cyan", 45}, {"Black", -3}, {"<b>A&B</b>\n", -4}});
    view.setInkDict(&inkDict, {});
    view.resize(400, 90);
    view.show();
    EXPECT_EQ(view.accessibleDescription(), "Cyan 45 %, Black not empty, <b>A&B</b> unknown");
    const std::pair<int, QString> tips[]{{6, ""},
                                         {7, "Cyan: 45 %"},
                                         {32, "Black: not empty"},
                                         {81, "&lt;b&gt;A&amp;B&lt;/b&gt;: unknown"},
                                         {82, ""}};
    for (const auto& [y, text] : tips) {
        QHelpEvent help(QEvent::ToolTip, {200, y}, view.mapToGlobal(QPoint(200, y)));
        QApplication::sendEvent(&view, &help);
        EXPECT_EQ(help.isAccepted(), !text.isEmpty()) << y;
        EXPECT_TRUE(text.isEmpty() || QToolTip::text() == "<qt>" + text + "</qt>") << y;
    }
}

TEST(InkColors, DifferBetweenThePicturesOnlyWhereMeant) {
    EXPECT_FALSE(nscolorByColorID(0, Picture::LevelView).color.isValid());
    EXPECT_TRUE(same(nscolorByColorID(0, Picture::DockIcon).color.rgba(), kWhite));
    EXPECT_TRUE(same(nscolorByColorID(144, Picture::LevelView).color.rgba(), qRgb(0, 255, 0)));
    EXPECT_TRUE(same(nscolorByColorID(144, Picture::DockIcon).color.rgba(), qRgb(0, 0, 255)));
    const std::pair<int, QRgb> shared[]{{14, qRgb(0, 255, 255)}, {7, qRgb(102, 255, 255)},
                                        {10, grey(85)},          {19, grey(170)},
                                        {11, qRgb(0, 0, 255)},   {141, qRgb(128, 0, 128)}};
    for (const auto& [id, color] : shared) {
        for (const Picture picture : {Picture::LevelView, Picture::DockIcon})
            EXPECT_TRUE(same(nscolorByColorID(id, picture).color.rgba(), color)) << id;
    }
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
    struct Case {
        int inks;
        std::ptrdiff_t pitch;
        int height;
    };
    for (const Case& c :
         {Case{0, 0, 0}, {1, 30, 18}, {3, 30, 18}, {4, 27, 16}, {12, 9, 5}, {20, 5, 3}}) {
        std::string bars(128, ' ');
        for (int i = 0; i < c.inks; ++i)
            std::fill_n(bars.begin() + 20 + i * c.pitch, c.height, '#');
        const Dictionary inkDict = readingOf(static_cast<std::size_t>(c.inks));
        EXPECT_EQ(Icon(&inkDict, {}).bars(), bars) << c.inks;
    }
}

TEST(DockIcon, LaysBarsOverTheBackground) {
    QImage background(10, 20, QImage::Format_RGB32);
    background.fill(Qt::blue);
    const Dictionary inkDict = reading({{"Odd", 59}, {"Red", 300}, {"Cyan", -3}, {"Toner", 50}});
    for (const int scale : {1, 2}) {
        const Icon icon(&inkDict, background, scale);
        ASSERT_EQ(icon.side(), 128 * scale);
        for (const auto& [x, y] : {std::pair(0, 0), {99, 0}, {0, 99}, {39, 50}, {99, 70}})
            EXPECT_EQ(icon.at(x, y), qRgb(0, 0, 255)) << x << ' ' << y;
        for (const auto& [x, y] : {std::pair(100, 0), {0, 100}, {127, 127}, {120, 30}, {100, 46}})
            EXPECT_EQ(qAlpha(icon.at(x, y)), 0) << x << ' ' << y;
        EXPECT_TRUE(same(icon.at(86, 101), qRgb(254, 128, 0)));  // 59 percent of 80 points are 47
        EXPECT_EQ(icon.at(87, 116), kWhite);
        EXPECT_EQ(icon.at(119, 80), qRgb(255, 0, 0));
        EXPECT_EQ(icon.at(40, 50), kWhite);
        EXPECT_EQ(icon.at(79, 20), qRgb(0, 0, 255));
        EXPECT_EQ(icon.at(80, 20), kWhite);
    }
}

TEST(DockIcon, ShowsTheSampleOverTheProgramsPicture) {
    const QImage picture = applicationPicture();
    ASSERT_EQ(picture.size(), QSize(128, 128));
    const Icon icon(nullptr, picture);
    int y = 101;
    int end = 72;
    for (const QRgb color :
         {qRgb(0, 0, 0), qRgb(0, 255, 255), qRgb(255, 0, 255), qRgb(255, 255, 0)}) {
        EXPECT_EQ(icon.at(end - 1, y), color);
        EXPECT_EQ(icon.at(end, y), kWhite);
        y -= 27;
        end += 8;
    }
    EXPECT_NE(qAlpha(icon.at(30, 30)), 0);
}

}  // namespace
}  // namespace tintoral
