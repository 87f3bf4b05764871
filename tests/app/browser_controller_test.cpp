// The selection window with real clicks and keys, over sources that are plain functions.
#include "app/browser_controller.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QtTest/QTest>

#include "app/notification_center.h"
#include "monitor/ipp_probe.h"
#include "support/test_clock.h"

namespace tintoral {
namespace {

using std::chrono::seconds;

PrinterRecordPtr printerOf(const std::string& name, const std::string& serverType,
                           const std::string& kind) {
    return std::make_shared<PrinterRecord>(PrinterRecord{{"printerName", name},
                                                         {"printerId", serverType + ":" + name},
                                                         {"serverType", serverType},
                                                         {"kind", kind}});
}

PrinterRecordPtr rawPort(const std::string& name) {
    return printerOf(name, "Network", "port9100:192.0.2.1");
}

PrinterRecordPtr sharedQueue(const std::string& name) {
    PrinterRecordPtr queue = printerOf(name, "Mac", "ipp:192.0.2.2");
    queue->set(keys::serviceType, "_ipp._tcp.");
    queue->set(keys::ippURL, "http://192.0.2.2:631/printers/" + name);
    return queue;
}

int answerWithLevels(PrinterRecord& queue, InkQuantities& inks, BoundedText& status) {
    EXPECT_EQ(queue.text(keys::ippURL), "http://192.0.2.2:631/printers/queue");
    status.assign("Id\nle");
    inks = {2, {{{1, 70}, {2, 30}}}, 0};
    queue.set(keys::colors, std::vector<std::string>{"Black Cartridge", "Cyan"});
    queue.set(keys::rgbColors, std::vector<std::string>{"", "#00FFFF"});
    return 2;
}

class Browser : public testing::Test {
  protected:
    Browser() {
        sources_.usb = [this] { return usb_; };
        sources_.bjnp = [this] { return ++bjnpScans_, bjnp_; };
        sources_.bonjour = [this] { return bonjour_; };
        sources_.probeIpp = [this](PrinterRecord& printer) { return ++probes_, onProbe_(printer); };
        QObject::connect(&center_, &NotificationCenter::VTnewPrinterSelected, &listener_,
                         [this](const PrinterRecordPtr& printer) { chosen_.push_back(printer); });
        window_.emplace(models_, sources_, nullptr);
    }

    void show() {
        window_->showWindow();
        EXPECT_TRUE(waitForLook());
    }
    bool waitForLook() {
        return QTest::qWaitFor([this] { return button("refreshListButton").isEnabled(); });
    }
    void found(const PrinterRecordPtr& printer) { Q_EMIT center_.VTBonjourPrinterFound(printer); }
    void removed(const PrinterRecordPtr& printer) {
        Q_EMIT center_.VTBonjourPrinterRemoved(printer);
    }
    bool waitForRows(int count) {
        return QTest::qWaitFor([&] { return model().rowCount() == count; });
    }

    QPushButton& button(const char* name) {
        return *window_->findChild<QPushButton*>(QLatin1String(name));
    }
    bool canSelect() { return button("selectButton").isEnabled(); }
    QTableView& table() { return *window_->findChild<QTableView*>(); }
    const QAbstractItemModel& model() { return *table().model(); }
    QString cell(int row, int column) { return model().index(row, column).data().toString(); }
    QStringList column(int column) {
        QStringList texts;
        for (int row = 0; row < model().rowCount(); ++row) texts << cell(row, column);
        return texts;
    }
    QPoint middleOf(int row) { return table().visualRect(model().index(row, 0)).center(); }
    void click(int row) {
        QTest::mouseClick(table().viewport(), Qt::LeftButton, {}, middleOf(row));
    }
    void doubleClick(int row) {
        click(row);
        QTest::mouseDClick(table().viewport(), Qt::LeftButton, {}, middleOf(row));
    }

    NotificationCenter& center_ = NotificationCenter::defaultCenter();
    test::TestClock clock_;
    ScopedClock scopedClock_{clock_};
    QObject listener_;
    std::vector<PrinterRecordPtr> chosen_;
    PrinterTable usb_;
    PrinterTable bjnp_;
    PrinterTable bonjour_;
    int bjnpScans_ = 0;
    std::size_t probes_ = 0;
    std::function<int(PrinterRecord&)> onProbe_ = [](PrinterRecord&) { return 0; };
    ModelTable models_;
    PrinterSources sources_;
    std::optional<BrowserController> window_;
};

TEST_F(Browser, ListsAllSourcesByNameAndInWords) {
    usb_ = {printerOf("delta", "USB", "USB")};
    bjnp_ = {printerOf("Bravo <b>\n", "Network", "bjnp:192.0.2.3")};
    bonjour_ = {rawPort("alpha"), printerOf("Charlie", "AirPort", "riousb:192.0.2.4"),
                printerOf("echo", "Network", "lpd:192.0.2.5"), sharedQueue("Foxtrot"),
                printerOf("Golf", "", "")};
    bonjour_[0]->set(keys::port, 9101);
    bonjour_[0]->set(keys::active, kNo);
    show();
    EXPECT_EQ(column(PrinterTableModel::Name),
              QStringList({"alpha", "Bravo <b>", "Charlie", "delta", "echo", "Foxtrot", "Golf"}));
    EXPECT_EQ(column(PrinterTableModel::Connection),
              QStringList({"Raw port 9101", "Canon BJNP", "USB, AirPort", "USB", "LPD",
                           "IPP, shared", ""}));
    EXPECT_EQ(cell(0, PrinterTableModel::Status), "Offline");
    EXPECT_EQ(model().index(1, 0).data(Qt::ToolTipRole), "<qt>Bravo &lt;b&gt;</qt>");
    show();
    EXPECT_EQ(model().rowCount(), 7);
    EXPECT_EQ(bjnpScans_, 2);
}

TEST_F(Browser, RefusesWhatCannotBeWatched) {
    const PrinterRecordPtr unresolved = rawPort("zulu");
    unresolved->remove(keys::printerId);
    bonjour_ = {rawPort("alpha"), sharedQueue("queue"), unresolved};
    show();
    for (const int row : {1, 2}) {
        click(row);
        EXPECT_FALSE(canSelect()) << row;
        EXPECT_GT(model().index(row, 0).data(Qt::ToolTipRole).toString().size(), 40);
        QTest::keyClick(&table(), Qt::Key_Return);
        doubleClick(row);
        window_->selectButtonPressed();
    }
    EXPECT_TRUE(chosen_.empty());
    EXPECT_TRUE(window_->isVisible());
}

TEST_F(Browser, ChoosesByClickKeyAndDoubleClick) {
    bonjour_ = {rawPort("b"), rawPort("A")};
    const std::function<void()> ways[]{
        [&] { QTest::mouseClick(&button("selectButton"), Qt::LeftButton); },
        [&] { QTest::keyClick(&table(), Qt::Key_Return); }, [&] { doubleClick(1); }};
    for (const auto& choose : ways) {
        show();
        EXPECT_FALSE(canSelect());  // the last choice is not kept
        QTest::keyClick(&table(), Qt::Key_Down);
        QTest::keyClick(&table(), Qt::Key_Down);
        EXPECT_TRUE(canSelect());
        choose();
        EXPECT_FALSE(window_->isVisible());
    }
    EXPECT_EQ(chosen_, std::vector(3, bonjour_[0]));
    show();
    QTest::keyClick(&table(), Qt::Key_Escape);
    EXPECT_FALSE(window_->isVisible());
    EXPECT_EQ(chosen_.size(), 3U);
}

TEST_F(Browser, AQueueThatAnswersWithLevelsCanBeChosen) {
    const PrinterRecordPtr silent = sharedQueue("a silent one");
    bonjour_ = {silent, sharedQueue("queue")};
    onProbe_ = [&](PrinterRecord& printer) {
        return &printer == silent.get() ? 0 : probeIppRecord(printer, answerWithLevels);
    };
    show();
    EXPECT_EQ(silent->text(keys::serverType), "Mac");
    const PrinterRecord& queue = *bonjour_[1];
    EXPECT_EQ(queue.text(keys::serverType), "Mac cups1.4");
    EXPECT_EQ(queue.text(keys::printerStatus), "Idle");
    EXPECT_EQ(queue.texts(keys::rgbColors), std::vector<std::string>({"", "#00FFFF"}));
    EXPECT_FALSE(queue.contains(keys::colors));
    const Dictionary& inkDict = *queue.dictionary(keys::inkDict);
    EXPECT_EQ(inkDict.integer("Black Cartridge"), 70);
    EXPECT_EQ(inkDict.texts(keys::colors), std::vector<std::string>({"Black Cartridge", "Cyan"}));
    EXPECT_EQ(cell(1, PrinterTableModel::Status), "Idle");
    click(1);
    EXPECT_TRUE(canSelect());
    bonjour_[1]->set(keys::serverType, "Mac");  // announced anew
    bonjour_[1]->remove(keys::inkDict);
    found(bonjour_[1]);
    EXPECT_TRUE(QTest::qWaitFor([this] { return !canSelect(); }));
}

TEST_F(Browser, ProbingIsBoundedAndEndsWithTheWindow) {
    for (int i = 0; i < 100; ++i) bonjour_.push_back(sharedQueue(std::to_string(i)));
    for (const auto& [key, value] : {std::pair(keys::active, Value(kNo)), {keys::port, Value(0)}}) {
        bonjour_.push_back(sharedQueue("not there"));
        bonjour_.back()->set(key, value);
    }
    show();
    EXPECT_EQ(probes_, BrowserController::kMaximumProbes);

    probes_ = 0;
    onProbe_ = [this](PrinterRecord&) { return clock_.advance(seconds(7)), 0; };
    show();
    EXPECT_EQ(probes_, 5U);

    probes_ = 0;
    onProbe_ = [this](PrinterRecord&) {
        EXPECT_FALSE(button("refreshListButton").isEnabled());
        QTest::keyClick(&table(), Qt::Key_Escape);
        return 0;
    };
    show();
    QTest::qWait(20);
    EXPECT_EQ(probes_, 1U);
}

TEST_F(Browser, AnnouncementsChangeTheListAndKeepTheSelection) {
    bonjour_ = {rawPort("m"), rawPort("z")};
    show();
    click(0);
    probes_ = 0;
    found(bonjour_[0]);  // resolved again
    found(sharedQueue("a"));
    removed(bonjour_[1]);
    EXPECT_TRUE(QTest::qWaitFor([this] { return cell(0, 0) == "a"; }));
    EXPECT_EQ(column(0), QStringList({"a", "m"}));
    EXPECT_TRUE(canSelect());
    QTest::mouseClick(&button("selectButton"), Qt::LeftButton);
    EXPECT_EQ(chosen_, PrinterTable{bonjour_[0]});
    EXPECT_EQ(probes_ + static_cast<std::size_t>(bjnpScans_), 1U);
}

TEST_F(Browser, SelectsTheFirstRawPortPrinterByItselfOnce) {
    PrinterTable table;
    EXPECT_EQ(window_->browseBonjourPrinters(table), 0U);
    found(printerOf("lpd", "Network", "lpd:192.0.2.1"));
    found(printerOf("port 0", "Network", "port0:192.0.2.1"));
    EXPECT_TRUE(chosen_.empty());
    const PrinterRecordPtr first = printerOf("first", "Network", "PORT9101:192.0.2.1");
    found(first);
    found(rawPort("second"));
    EXPECT_EQ(chosen_, PrinterTable{first});

    const std::function<void()> endings[]{
        [this] { show(); }, [this] { Q_EMIT center_.VTnewPrinterSelected(rawPort("typed in")); },
        [&] {
            bonjour_ = {rawPort("announced")};
            EXPECT_EQ(window_->browseBonjourPrinters(table), 1U);
        }};
    for (const auto& end : endings) {
        window_->browseBonjourPrinters(table);
        end();
        chosen_.clear();
        found(rawPort("late"));
        EXPECT_TRUE(chosen_.empty());
    }
}

TEST_F(Browser, AnEmptyListSaysWhatToDo) {
    show();
    auto* hint = window_->findChild<QLabel*>(QStringLiteral("emptyHint"));
    EXPECT_TRUE(hint->isVisible());
    found(rawPort("a"));
    EXPECT_TRUE(waitForRows(1));
    EXPECT_FALSE(hint->isVisible());
}

}  // namespace
}  // namespace tintoral
