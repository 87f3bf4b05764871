// The history window on a home folder that holds all kinds of files.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QtCore/QTimer>
#include <QtGui/QClipboard>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSlider>
#include <QtWidgets/QSpinBox>
#include <QtWidgets/QTabWidget>
#include <optional>

#include "app/graph3d_view.h"
#include "app/graph_view.h"
#include "app/ink_history_controller.h"
#include "history/history_csv.h"
#include "history/ink_history_store.h"
#include "support/temporary_folder.h"
#include "support/test_clock.h"

namespace tintoral {
namespace {

using std::chrono::sys_days;
using std::chrono::year;

constexpr sys_days kToday = year{2026} / 3 / 14;

class HistoryWindow : public testing::Test {
  protected:
    HistoryWindow() { prepareHistoryFolder(); }

    static Dictionary reading(Value level) {
        return {{"Colors", Array{"Cyan"}}, {"Cyan", std::move(level)}, {"Date", Date(kToday)}};
    }
    static void seed(std::string_view name, const Value& root) {
        test::writeFile(historyFolder() / name, formatPropertyList(root));
    }
    template <typename Widget>
    Widget& find(const char* name) {
        return *window_.findChild<Widget*>(QLatin1String(name));
    }
    QComboBox& popup() { return find<QComboBox>("printerNamePopup"); }
    GraphView& view() { return find<GraphView>("graphview"); }
    QStringList titles() {
        QStringList titles;
        for (int i = 0; i < popup().count(); ++i) titles << popup().itemText(i);
        return titles;
    }
    std::size_t readings() { return view().inkHistory() ? view().inkHistory()->size() : 0; }

    test::TemporaryFolder home_;
    test::ScopedEnvironment homeVariable_{"HOME", home_.path()};
    test::TestClock clock_{kToday};
    ScopedClock scope_{clock_};
    InkHistoryController window_{nullptr};
};

TEST_F(HistoryWindow, ListsEveryFileAndShowsWhatIsAHistory) {
    seed("Printer 10", Array{reading(50)});
    seed("printer 2", Array{"text", Dictionary{{"Cyan", 4}}, reading("80"), reading(Array())});
    seed("wrong root", Dictionary{{"Cyan", 4}});
    for (const auto& [name, content] :
         {std::pair(".DS_Store", "x"), {"Caf\xE9\n", ""}, {"no list", "<array>"}})
        test::writeFile(historyFolder() / name, content);
    std::filesystem::create_directory(historyFolder() / "a folder");
    ASSERT_EQ(::mkfifo((historyFolder() / "a pipe").c_str(), 0600), 0);
    window_.showWindow();
    EXPECT_EQ(popup().currentIndex(), -1);
    EXPECT_FALSE(find<QPushButton>("copyButton").isEnabled());
    EXPECT_EQ(titles(), QStringList({"a folder", "a pipe", "Caf\u00E9", "no list", "printer 2",
                                     "Printer 10", "wrong root"}));
    const std::size_t sizes[] = {0, 0, 0, 0, 4, 1, 0};
    for (int i = 0; i < popup().count(); ++i) {
        window_.printerNamePopupSelected(i);
        EXPECT_EQ(readings(), sizes[i]) << i;
        EXPECT_EQ(view().isEmpty(), sizes[i] == 0);
        EXPECT_EQ(find<QPushButton>("exportButton").isEnabled(), sizes[i] != 0);
        view().grab();
    }
}

TEST_F(HistoryWindow, ShowsEachReadingThatIsStored) {
    EXPECT_TRUE(window_.saveInkReadingsForPrinterId(reading(50), "B"));
    window_.showWindow();
    EXPECT_EQ(titles(), QStringList({"B"}));
    EXPECT_EQ(readings(), 1U);
    EXPECT_TRUE(window_.saveInkReadingsForPrinterId(reading(49), "B"));
    EXPECT_EQ(readings(), 2U);
    EXPECT_TRUE(window_.saveInkReadingsForPrinterId(reading(9), "A"));
    EXPECT_EQ(titles(), QStringList({"A", "B"}));
    EXPECT_EQ(popup().currentText(), "A");
    EXPECT_FALSE(window_.saveInkReadingsForPrinterId(reading(9), "no/file"));
    EXPECT_EQ(popup().currentText(), "A");
    window_.selectHistoryFor("never updated");
    EXPECT_EQ(popup().currentIndex(), -1);
    EXPECT_TRUE(view().isEmpty());
    QTest::mouseClick(&find<QPushButton>("okButton"), Qt::LeftButton);
    EXPECT_FALSE(window_.isVisible());
    window_.selectHistoryFor("B");
    window_.showWindow();
    EXPECT_EQ(popup().currentText(), "B");
}

TEST_F(HistoryWindow, TheMonthIsSteppedOrTypedAndThePeriodSlid) {
    window_.showWindow();
    auto& month = find<QSpinBox>("monthPicker");
    auto& field = find<QLineEdit>("monthField");
    EXPECT_EQ(field.text(), "03/2026");
    month.stepDown();
    EXPECT_EQ(view().scale().startDate, sys_days(year{2025} / 11 / 1));
    for (const auto& [typed, shown] :
         {std::pair("12/2019", "12/2019"), {"13/2019", "12/2019"}, {"x01/2006", "01/2006"}}) {
        field.selectAll();
        QTest::keyClicks(&month, typed);
        QTest::keyClick(&month, Qt::Key_Return);
        EXPECT_EQ(field.text(), shown) << typed;
    }
    QTest::keyClick(&find<QSlider>("periodSlider"), Qt::Key_End);
    EXPECT_EQ(view().scale().xScale, 19);
}

TEST_F(HistoryWindow, TheThirdDimensionIsMadeWhenItIsFirstShown) {
    window_.saveInkReadingsForPrinterId(reading(50), "B");
    window_.showWindow();
    EXPECT_FALSE(window_.findChild<Graph3DView*>());
    find<QTabWidget>("tabs").setCurrentIndex(1);
    QCoreApplication::processEvents();
    const auto* view = window_.findChild<Graph3DView*>();
    ASSERT_TRUE(view && view->isVisible());
    EXPECT_TRUE(view->frame());
    QTest::mouseClick(&find<QPushButton>("copyButton"), Qt::LeftButton);
    EXPECT_EQ(QApplication::clipboard()->image().size(), view->size());
    window_.selectHistoryFor("never updated");
    EXPECT_FALSE(view->frame()) << "both views show the same history";
}

TEST_F(HistoryWindow, HandsOutPictureAndReadings) {
    window_.saveInkReadingsForPrinterId(reading(50), "B");
    window_.showWindow();
    const QImage painted = view().grab().toImage().convertToFormat(QImage::Format_RGB32);
    QTest::mouseClick(&find<QPushButton>("copyButton"), Qt::LeftButton);
    EXPECT_EQ(QApplication::clipboard()->image().convertToFormat(QImage::Format_RGB32), painted);
    const QString picture = QString::fromStdString(home_ / "a.png");
    EXPECT_TRUE(window_.savePictureTo(picture));
    EXPECT_EQ(QImage(picture).convertToFormat(QImage::Format_RGB32), painted);
    EXPECT_TRUE(window_.exportReadingsTo(QString::fromStdString(home_ / "a.csv")));
    EXPECT_EQ(test::readFile(home_ / "a.csv"), "Date (UTC),Cyan\r\n2026-03-14 00:00:00,50\r\n");
    QString said;
    QTimer::singleShot(0, &window_, [&] {
        auto* message = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        said = message->text();
        message->accept();
    });
    EXPECT_FALSE(window_.savePictureTo(QString::fromStdString(home_ / "no folder/a.png")));
    EXPECT_TRUE(said.contains("no folder/a.png")) << said.toStdString();
}

TEST(HistoryCsv, QuotesAndGuardsWhatAPrinterSays) {
    const Date date = sys_days{year{1904} / 1 / 2} + std::chrono::seconds(3661);
    const Array history{
        "text", Dictionary{{"Cyan", 5}},
        Dictionary{{"Date", date}, {"=1+1", 5}, {"a,\"b\"", -3}, {"@x,", "7"}},
        Dictionary{{"Date", date}, {"Cyan\r\n", 9}, {"+", Array()}, {"=1+1", "=2"}}};
    EXPECT_EQ(historyCsv(history),
              "Date (UTC),'=1+1,\"'@x,\",Cyan,\"a,\"\"b\"\"\"\r\n"
              "1904-01-02 01:01:01,5,7,,-3\r\n"
              "1904-01-02 01:01:01,,,9,\r\n");
}

}  // namespace
}  // namespace tintoral
