// The printer list with real clicks and keys, over actions that are plain functions.
#include "app/printer_list_panel.h"

#include <gtest/gtest.h>

#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTableView>
#include <QTimer>
#include <QtTest/QTest>
#include <algorithm>
#include <optional>

#include "app/notification_center.h"

namespace tintoral {
namespace {

using Inks = std::vector<std::pair<std::string, int>>;

PrinterRecordPtr printerOf(const std::string& id, const Inks& inks = {}, int minute = 0) {
    auto printer =
        std::make_shared<PrinterRecord>(PrinterRecord{{"printerId", id}, {"Active", "YES"}});
    if (inks.empty()) return printer;
    Dictionary inkDict{{"Date", Date(std::chrono::minutes(minute))}};
    std::vector<std::string> names;
    for (const auto& [name, level] : inks) {
        names.push_back(name);
        inkDict.set(name, level);
    }
    inkDict.set(keys::colors, names);
    printer->set(keys::inkDict, inkDict);
    printer->set(keys::printerStatus, "Idle");
    return printer;
}

class PrinterList : public testing::Test {
  protected:
    PrinterList() {
        QObject::connect(&NotificationCenter::defaultCenter(),
                         &NotificationCenter::VTnewPrinterSelected, &listener_,
                         [this](const PrinterRecordPtr& printer) { chosen_.push_back(printer); });
        panel_.emplace(
            PrinterListActions{[this](const PrinterRecordPtr& p) { updated_.push_back(p); },
                               [this](const std::string& id) { forgotten_.push_back(id); }},
            nullptr);
    }

    void show(const PrinterTable& printers, const PrinterRecordPtr& selected = nullptr) {
        panel_->setPrinters(printers);
        panel_->showWindow(selected);
        EXPECT_TRUE(QTest::qWaitForWindowActive(&*panel_));
    }
    QTableView& table() { return *panel_->findChild<QTableView*>(); }
    QPushButton& button(const char* name) {
        return *panel_->findChild<QPushButton*>(QLatin1String(name));
    }
    QStringList column(int column, int role = Qt::DisplayRole) {
        QStringList texts;
        for (int row = 0; row < table().model()->rowCount(); ++row)
            texts << table().model()->index(row, column).data(role).toString();
        return texts;
    }
    void sortBy(int column) {
        QHeaderView& header = *table().horizontalHeader();
        QTest::mouseClick(header.viewport(), Qt::LeftButton, {},
                          {header.sectionViewportPosition(column) + 20, 8});
    }
    QPoint middleOf(int row) { return table().visualRect(table().model()->index(row, 0)).center(); }
    void click(int row) {
        QTest::mouseClick(table().viewport(), Qt::LeftButton, {}, middleOf(row));
    }
    void press(const char* name) { QTest::mouseClick(&button(name), Qt::LeftButton); }

    // The question that comes next is answered by a click on its button of that name, or by a key.
    void answerWith(const QString& name, Qt::Key key = {}) {
        QTimer::singleShot(0, &listener_, [this, name, key] {
            auto* question = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            question_ = question->text();
            EXPECT_EQ(question->textFormat(), Qt::PlainText);
            if (key) QTest::keyClick(question, key);
            for (QAbstractButton* answer : question->buttons()) {
                if (answer->text() == name) QTest::mouseClick(answer, Qt::LeftButton);
            }
            EXPECT_FALSE(question->isVisible());
            question->reject();
        });
    }

    // How many pixels of the row's bars have this colour.
    std::ptrdiff_t pixels(int row, const QColor& color) {
        const QModelIndex cell = table().model()->index(row, PrinterListModel::Levels);
        const QImage bars = table().viewport()->grab(table().visualRect(cell)).toImage();
        std::ptrdiff_t count = 0;
        for (int y = 0; y < bars.height(); ++y) {
            for (int x = 0; x < bars.width(); ++x) count += bars.pixelColor(x, y) == color;
        }
        return count;
    }

    QObject listener_;
    PrinterTable chosen_;
    PrinterTable updated_;
    std::vector<std::string> forgotten_;
    QString question_;
    std::optional<PrinterListPanel> panel_;
};

TEST_F(PrinterList, IsSortedByEachColumn) {
    show({printerOf("beta", {{"Cyan", 9}, {"Black", 80}}, 30), printerOf("<b>Gamma</b>\x07"),
          printerOf("Alpha", {{"Black", 10}, {"Cyan", -3}, {"Waste", -1}}, 600)});
    EXPECT_EQ(column(PrinterListModel::Name), QStringList({"<b>Gamma</b>", "Alpha", "beta"}));
    EXPECT_EQ(column(PrinterListModel::Levels, Qt::AccessibleTextRole),
              QStringList({"no levels yet", "Black 10 %, Cyan not empty, Waste unknown",
                           "Cyan 9 %, Black 80 %"}));
    EXPECT_EQ(column(PrinterListModel::Status), QStringList({"Unknown", "Idle", "Idle"}));
    EXPECT_EQ(column(PrinterListModel::LastUpdate).value(0), "not updated yet");
    EXPECT_EQ(column(PrinterListModel::Name, Qt::ToolTipRole).value(0),
              "<qt>&lt;b&gt;Gamma&lt;/b&gt;</qt>");
    EXPECT_EQ(column(PrinterListModel::Levels, Qt::ToolTipRole).value(2),
              "<qt>Cyan 9 %<br>Black 80 %</qt>");

    const QStringList upwards{"beta", "Alpha", "<b>Gamma</b>"};
    sortBy(PrinterListModel::Levels);
    EXPECT_EQ(column(PrinterListModel::Name), upwards) << "by the lowest level, as a number";
    sortBy(PrinterListModel::LastUpdate);
    EXPECT_EQ(column(PrinterListModel::Name), upwards) << "by the time, not its words";
    sortBy(PrinterListModel::LastUpdate);
    EXPECT_EQ(column(PrinterListModel::Name), QStringList({"<b>Gamma</b>", "Alpha", "beta"}));
    sortBy(PrinterListModel::Status);
    EXPECT_EQ(column(PrinterListModel::Status).value(2), "Unknown");
    sortBy(PrinterListModel::Name);
    sortBy(PrinterListModel::Name);
    EXPECT_EQ(column(PrinterListModel::Name), upwards);
}

TEST_F(PrinterList, DrawsEachLevelInTheInksColour) {
    show({printerOf("a", {{"Cyan", 50}, {"Magenta", 100}}), printerOf("b", {{"Cyan", 100}})});
    const QColor cyan = nscolorByColorID(4, Picture::LevelView).color;
    EXPECT_GT(pixels(0, cyan), 0);
    EXPECT_GT(pixels(1, cyan), pixels(0, cyan) * 18 / 10);
    EXPECT_LT(pixels(1, cyan), pixels(0, cyan) * 24 / 10);
    EXPECT_EQ(pixels(1, nscolorByColorID(5, Picture::LevelView).color), 0);
}

TEST_F(PrinterList, DoubleClickAndReturnSelectThePrinter) {
    const PrinterTable printers{printerOf("a"), printerOf("b")};
    show(printers);
    QTest::keyClick(&table(), Qt::Key_Return);
    EXPECT_TRUE(chosen_.empty()) << "no row is chosen";
    click(1);
    QTest::mouseDClick(table().viewport(), Qt::LeftButton, {}, middleOf(1));
    QTest::keyClick(&table(), Qt::Key_Up);
    QTest::keyClick(&table(), Qt::Key_Return);
    EXPECT_EQ(chosen_, PrinterTable({printers[1], printers[0]}));
    EXPECT_TRUE(panel_->isVisible());
    press("closeButton");
    EXPECT_FALSE(panel_->isVisible());
}

TEST_F(PrinterList, UpdatesTheChosenPrinterUnlessItIsOffline) {
    const PrinterTable printers{printerOf("a"), printerOf("b"), printerOf("c")};
    printers[2]->set(keys::active, kNo);
    show(printers);
    EXPECT_FALSE(button("updateButton").isEnabled());
    EXPECT_FALSE(button("forgetButton").isEnabled());
    click(1);
    press("updateButton");
    EXPECT_EQ(updated_, PrinterTable{printers[1]});
    click(2);
    EXPECT_FALSE(button("updateButton").isEnabled());
    EXPECT_TRUE(button("forgetButton").isEnabled());
}

TEST_F(PrinterList, ForgetsOnlyWhenThePersonAgrees) {
    show({printerOf("a"), printerOf("<i>b</i>\n")});
    click(0);  // "<" comes before "a"
    for (const Qt::Key refusal : {Qt::Key_Escape, Qt::Key_Return}) {
        answerWith({}, refusal);
        press("forgetButton");
    }
    EXPECT_TRUE(forgotten_.empty());
    EXPECT_TRUE(question_.startsWith(QStringLiteral("Forget “<i>b</i>”?")))
        << qPrintable(question_);
    EXPECT_TRUE(question_.contains(QStringLiteral("history stays")));
    panel_->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&*panel_));
    table().setFocus();
    answerWith(QStringLiteral("&Forget"));
    QTest::keyClick(&table(), Qt::Key_Delete);
    EXPECT_EQ(forgotten_, std::vector<std::string>{"<i>b</i>\n"});
}

TEST_F(PrinterList, FollowsChangesAndKeepsTheChosenRow) {
    const PrinterTable printers{printerOf("m"), printerOf("z")};
    show(printers, printers[1]);
    printers[1]->set(keys::printerStatus, "Paper\x1bjam");
    panel_->setPrinters({printerOf("a"), printers[0], printers[1]});
    EXPECT_EQ(column(PrinterListModel::Status).value(2), "Paperjam");
    press("updateButton");
    EXPECT_EQ(updated_, PrinterTable{printers[1]});
    panel_->setPrinters({printers[0]});
    EXPECT_FALSE(button("forgetButton").isEnabled());
    auto* hint = panel_->findChild<QLabel*>(QStringLiteral("emptyHint"));
    EXPECT_FALSE(hint->isVisible());
    panel_->setPrinters({});
    EXPECT_TRUE(hint->isVisible());
}

}  // namespace
}  // namespace tintoral
