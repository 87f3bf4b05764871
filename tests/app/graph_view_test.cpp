#include "app/graph_view.h"

#include <gtest/gtest.h>

#include <QtGui/QHelpEvent>
#include <QtGui/QPainter>
#include <QtWidgets/QApplication>
#include <QtWidgets/QToolTip>
#include <cstdlib>

#include "app/ink_colors.h"
#include "support/test_clock.h"

namespace tintoral {
namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year;

constexpr sys_days kToday = year{2026} / 3 / 14;
constexpr QRgb kWhite = qRgb(255, 255, 255);
constexpr QRgb kBlack = qRgb(0, 0, 0);
constexpr QRgb kGrey = qRgb(170, 170, 170);
constexpr QRgb kCyan = qRgb(0, 255, 255);

// A view on a day in March 2026: from December on, three points to a day.
class GraphViewTest : public testing::Test {
  protected:
    GraphViewTest() { view_.setPalette(QPalette(Qt::white, Qt::black)); }

    // Readings by days from the 1st of December.
    static Value entry(int day, const Dictionary& levels) {
        Dictionary entry = levels;
        entry.set("Date", Date(sys_days(year{2025} / 12 / 1) + days(day)));
        return entry;
    }
    void show(Array history, int width = 400) {
        view_.setInkHistory(std::make_shared<const Array>(std::move(history)));
        paint(width);
    }
    void paint(int width = 400) {
        view_.resize(width, view_.minimumSizeHint().height());
        image_ = QImage(view_.size(), QImage::Format_RGB32);
        image_.fill(Qt::magenta);
        QPainter painter(&image_);
        view_.paintTo(painter);
    }
    // Points have y upwards.
    QRgb at(int x, int y) const { return image_.pixel(x, image_.height() - 1 - y); }
    bool isBlank(int left, int right, int bottom, int top) const {
        for (int x = left; x < right; ++x)
            for (int y = bottom; y < top; ++y)
                if (at(x, y) != kWhite) return false;
        return true;
    }

    test::TestClock clock_{kToday};
    ScopedClock scope_{clock_};
    GraphView view_;
    QImage image_;
};

TEST_F(GraphViewTest, DrawsTheAxesAlsoForAnEmptyHistory) {
    EXPECT_EQ(view_.scale().startDate, sys_days(year{2025} / 11 / 1));
    EXPECT_EQ(view_.scale().xScale, 4);
    view_.setInkHistory(nullptr);
    paint();
    EXPECT_EQ(view_.scale().startDate, sys_days(year{2025} / 12 / 1));
    for (const auto& [x, y] : {std::pair(30, 20), {30, 240}, {399, 20}, {399, 240}, {200, 20}})
        EXPECT_EQ(at(x, y), kBlack) << x << ' ' << y;
    for (const auto& [x, y] :
         {std::pair(28, 60), {396, 220}, {123, 16}, {123, 241}, {216, 60}, {300, 30}})
        EXPECT_EQ(at(x, y), kGrey) << x << ' ' << y;
    for (const auto& [x, y] : {std::pair(25, 60),
                               {32, 60},
                               {395, 220},
                               {123, 15},
                               {123, 242},
                               {31, 22},
                               {29, 50},
                               {124, 30}})
        EXPECT_EQ(at(x, y), kWhite) << x << ' ' << y;
    EXPECT_FALSE(isBlank(0, 25, 53, 66)) << "20";
    EXPECT_TRUE(isBlank(0, 25, 66, 93));
    EXPECT_FALSE(isBlank(40, 70, 2, 14)) << "Dec/25";
    EXPECT_TRUE(isBlank(80, 120, 2, 14));
    EXPECT_FALSE(isBlank(130, 210, 110, 150)) << "the friendly note";
    EXPECT_TRUE(isBlank(30, 400, 243, image_.height()));
}

TEST_F(GraphViewTest, DrawsALineAndASquareAtItsEndForEachInk) {
    show({entry(-9, {{"Cyan", 90}, {"White", 40}}), entry(10, {{"Cyan", 90}}),
          entry(20, {{"Cyan", 20}})});
    for (const int x : {30, 45, 59}) EXPECT_EQ(at(x, 200), kCyan) << x;
    EXPECT_NE(at(75, 130), kWhite) << "halfway down";
    for (const auto& [x, y] : {std::pair(87, 57), {92, 62}}) EXPECT_EQ(at(x, y), kCyan) << x;
    EXPECT_TRUE(isBlank(94, 120, 40, 239)) << "nothing after the last reading";
    for (const auto& [x, y] : {std::pair(27, 97), {32, 102}}) EXPECT_EQ(at(x, y), kGrey) << x;
    EXPECT_TRUE(isBlank(34, 75, 95, 105)) << "all of it before the window: the square alone";
    EXPECT_FALSE(isBlank(45, 80, 250, 262)) << "the inks by name";
}

TEST_F(GraphViewTest, FollowsTheMonthAndThePeriod) {
    show({entry(0, {{"Cyan", 50}}), entry(5, {{"Cyan", 50}})});
    EXPECT_EQ(at(45, 122), kCyan);
    view_.periodSliderMoved(0);
    view_.monthPicked(monthIndexAt(sys_days(year{2025} / 12 / 1)));
    paint();
    EXPECT_EQ(view_.scale().startDate, sys_days(year{2025} / 12 / 1));
    EXPECT_EQ(at(89, 122), kCyan) << "twelve points to a day";
    view_.monthPicked(0);
    paint();
    EXPECT_TRUE(isBlank(35, 390, 110, 130)) << "all of it lies years ahead";
}

TEST_F(GraphViewTest, ColoursComeFromTheLastEntryThenFromTheWholeName) {
    const Dictionary last{{"Ink", 80},
                          {"Cyan", 40},
                          {"Odd", 20},
                          {"Colors", Array{"Ink", "Cyan"}},
                          {"rgbColors", Array{"#FF8000", "none"}}};
    show({entry(1, last)});
    EXPECT_EQ(at(33, 180), qRgb(254, 128, 0)) << "divided by 256";
    EXPECT_EQ(at(33, 100), kCyan);
    EXPECT_EQ(at(33, 60), qRgb(0, 0, 255));
    const std::pair<const char*, QRgb> names[] = {
        {"Cyan and Black", kCyan},           {"cyan", qRgb(0, 0, 255)},
        {"Light Cyan", qRgb(179, 255, 255)}, {"White", kGrey},
        {"Light Black", qRgb(85, 85, 85)},   {"Violet", qRgb(128, 0, 128)}};
    for (const auto& [name, color] : names)
        EXPECT_EQ(nscolorByColorName(name).rgb(), color) << name;
    EXPECT_NEAR(nscolorByColorName("Dark Yellow").alphaF(), 0.9, 0.001);
}

TEST_F(GraphViewTest, TellsTheReadingUnderThePointer) {
    show({entry(20, {{"<b>\x1B", 50}, {"Red", -3}})});
    view_.show();
    EXPECT_EQ(view_.accessibleDescription(), "<b>: 50 %, 21 Dec 2025; Red: not empty, 21 Dec 2025");
    for (const auto& [y, text] :
         {std::pair(120, "<qt>&lt;b&gt;: 50 %, 21 Dec 2025</qt>"), {70, ""}}) {
        const QPoint point(90, view_.height() - y);
        QHelpEvent help(QEvent::ToolTip, point, view_.mapToGlobal(point));
        QApplication::sendEvent(&view_, &help);
        EXPECT_EQ(help.isAccepted(), *text != '\0');
        EXPECT_TRUE(*text == '\0' || QToolTip::text() == text) << QToolTip::text().toStdString();
    }
}

}  // namespace
}  // namespace tintoral
