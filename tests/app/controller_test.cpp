// The main window with real clicks, against a virtual printer on a real socket.
#include "app/app_controller.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QSystemTrayIcon>
#include <QTableView>
#include <QTextBrowser>
#include <QTimer>
#include <QtTest/QTest>
#include <optional>

#include "app/graph_view.h"
#include "app/ink_history_controller.h"
#include "app/notification_center.h"
#include "app/printer_list_model.h"
#include "history/ink_history_store.h"
#include "monitor/address_probe.h"
#include "simulators/tcp_peer.h"
#include "simulators/virtual_epson.h"
#include "support/notification_server.h"
#include "support/temporary_folder.h"
#include "support/test_clock.h"

namespace tintoral {
namespace {

using std::chrono::minutes;

class MainWindow : public testing::Test {
  protected:
    MainWindow() {
        peer_.emplace("127.0.0.1", 9100, script());
        start();
    }

    test::TcpScript script() {
        return {[this] { epson_.connected(); },
                [this](Bytes bytes) { return epson_.onReceive(bytes); }};
    }

    // Starts the program (again) on the same home.
    void start() {
        controller_.reset();
        PrinterSources sources = sources_;
        isPainted_ = false;
        sources.startBonjour = [this] {
            isPainted_ = true;
            if (sources_.startBonjour) sources_.startBonjour();
        };
        controller_.emplace(std::move(sources));
        controller_->awakeFromNib();
        controller_->myWindow().show();
        // What comes after the first painting begins with this and is done when the loop is back.
        ASSERT_TRUE(QTest::qWaitFor([this] { return isPainted_; }));
    }

    static PrinterRecordPtr printerAt(const std::string& host) {
        return makeAddressedRecord({host, Connection::RawPort, 9100, "EPSON Stylus C64"});
    }

    void choose(const PrinterRecordPtr& printer) {
        Q_EMIT NotificationCenter::defaultCenter().VTnewPrinterSelected(printer);
    }

    template <typename Widget>
    Widget& find(const char* name) {
        return *controller_->myWindow().findChild<Widget*>(QLatin1String(name));
    }
    std::string status() { return find<QLabel>("statusField").text().toStdString(); }
    QPushButton& updateButton() { return find<QPushButton>("updateButton"); }
    int contentHeight() { return find<QWidget>("content").height(); }
    QStringList popupTitles() {
        QStringList titles;
        const auto& popup = find<QComboBox>("printerIdPopup");
        for (int i = 0; i < popup.count(); ++i) titles << popup.itemText(i);
        return titles;
    }

    test::TemporaryFolder home_;
    test::ScopedEnvironment homeVariable_{"HOME", home_.path()};
    test::ScopedEnvironment configVariable_{"XDG_CONFIG_HOME", home_ / "config"};
    test::TestClock clock_;
    ScopedClock scopedClock_{clock_};
    PrinterSources sources_;
    bool isPainted_ = false;
    test::VirtualEpson epson_;
    std::optional<test::TcpPeer> peer_;
    std::optional<AppController> controller_;
};

TEST_F(MainWindow, WithoutPrintersOffersToSelectOne) {
    EXPECT_EQ(status(), "Printer is not selected");
    EXPECT_FALSE(updateButton().isEnabled());
    EXPECT_EQ(find<QLabel>("lastUpdateField").text(), "Last update: not updated yet");
    EXPECT_EQ(contentHeight(), 422);
    EXPECT_EQ(popupTitles(), QStringList({"", "Select printer"}));
    EXPECT_EQ(find<QComboBox>("printerIdPopup").currentIndex(), 1);
    for (const char* item :
         {"actionInkHistory", "actionDiagnose", "actionUseModelIcon", "actionNozzleCleaning",
          "actionPrintNozzleCheckPattern", "actionCleaningAndTestPrint"}) {
        EXPECT_FALSE(find<QAction>(item).isEnabled()) << item;
    }
    EXPECT_TRUE(find<QAction>("actionCheckUpdate").isEnabled());
}

TEST_F(MainWindow, AChosenPrinterIsUpdatedShownAndKept) {
    const PrinterRecordPtr printer = printerAt("127.0.0.1");
    const std::string id = printer->text(keys::printerId);
    choose(printer);
    EXPECT_EQ(status(), "Idle");
    EXPECT_TRUE(updateButton().isEnabled());
    EXPECT_EQ(contentHeight(), 422 - 6 * 25);
    EXPECT_EQ(popupTitles(), QStringList({QString::fromStdString(id), "", "Select printer"}));
    const auto kept = lastLevelForPrinterId(id);
    ASSERT_TRUE(kept);
    EXPECT_EQ(kept->integer("Cyan"), 42);
    const UserDefaults defaults;
    EXPECT_EQ(defaults.printerId(), id);
    ASSERT_EQ(defaults.printerTable().size(), 1U);
    EXPECT_EQ(defaults.printerTable()[0].as<Dictionary>()->text(keys::commandType), "RC");
}

TEST_F(MainWindow, RestartShowsTheLastLevelsAndAsksAgainOnlyWhenTheyAreStale) {
    choose(printerAt("127.0.0.1"));
    ASSERT_TRUE(peer_->waitForClients(1));
    const std::size_t heardBefore = epson_.heard().size();
    start();
    EXPECT_EQ(contentHeight(), 422 - 6 * 25);
    EXPECT_TRUE(updateButton().isEnabled());
    EXPECT_EQ(epson_.heard().size(), heardBefore);
    clock_.advance(minutes(11));
    start();
    EXPECT_GT(epson_.heard().size(), heardBefore);
    EXPECT_EQ(status(), "Idle");
}

TEST_F(MainWindow, AnUnreachablePrinterKeepsItsLastLevels) {
    choose(printerAt("127.0.0.1"));
    peer_.reset();
    QTest::mouseClick(&updateButton(), Qt::LeftButton);
    EXPECT_EQ(status(), "Offline");
    EXPECT_FALSE(updateButton().isEnabled());
    EXPECT_EQ(contentHeight(), 422 - 6 * 25);
    EXPECT_NE(find<QLabel>("lastUpdateField").text(), "Last update: not updated yet");
}

TEST_F(MainWindow, SaysWhatIsWrongWithTheSettingsUntilItIsNot) {
    const auto file = userDefaultsPath();
    test::writeFile(file, "damaged");
    start();
    EXPECT_EQ(find<QLabel>("saveNotice").text().toStdString(),
              "The settings could not be read; they are kept as " + file.string() + ".damaged");
    start();
    EXPECT_EQ(controller_->myWindow().findChild<QLabel*>("saveNotice"), nullptr);
    const int width = controller_->myWindow().width();
    std::filesystem::remove_all(home_ / "config");
    test::writeFile(home_ / "config", "in the way");
    choose(printerAt("127.0.0.1"));
    const auto& notice = find<QLabel>("saveNotice");
    EXPECT_EQ(notice.text(), "Levels and settings cannot be saved: Not a directory");
    EXPECT_TRUE(notice.isVisible());
    EXPECT_EQ(controller_->myWindow().width(), width);
    EXPECT_EQ(contentHeight(), 422 - 6 * 25);
    std::filesystem::remove(home_ / "config");
    QTest::mouseClick(&updateButton(), Qt::LeftButton);
    EXPECT_FALSE(notice.isVisible());
    EXPECT_EQ(UserDefaults().printerTable().size(), 1U) << "tried again";
}

TEST_F(MainWindow, MaintenanceGoesToThePrinterThatKnowsIt) {
    choose(printerAt("127.0.0.1"));
    EXPECT_TRUE(find<QAction>("actionPrintNozzleCheckPattern").isEnabled());
    EXPECT_FALSE(find<QAction>("actionCleaningAndTestPrint").isEnabled());
    find<QAction>("actionNozzleCleaning").trigger();
    EXPECT_TRUE(peer_->waitForClients(2));
    EXPECT_EQ(epson_.jobs(), std::vector<std::string>{"cleaning"});
}

TEST_F(MainWindow, AnnouncementsChangeTheSelectedPrinterAndNoOther) {
    const PrinterRecordPtr other = printerAt("127.0.0.2");
    choose(other);
    const PrinterRecordPtr selected = printerAt("127.0.0.1");
    choose(selected);
    auto& center = NotificationCenter::defaultCenter();
    Q_EMIT center.VTBonjourPrinterRemoved(other);
    EXPECT_EQ(status(), "Idle");
    Q_EMIT center.VTBonjourPrinterRemoved(selected);
    EXPECT_EQ(status(), "Offline");
    EXPECT_FALSE(updateButton().isEnabled());
    Q_EMIT center.VTBonjourPrinterFound(selected);
    EXPECT_EQ(status(), "Online");
    EXPECT_TRUE(updateButton().isEnabled());
}

TEST_F(MainWindow, AFirstStartKeepsAllThatIsFoundAndSelectsTheFirst) {
    const PrinterRecordPtr silent = printerAt("127.0.0.2");
    silent->set(keys::port, 0);
    sources_.usb = [] { return PrinterTable(); };
    sources_.bjnp = [&] {
        return PrinterTable{silent, printerAt("127.0.0.1"), printerAt("127.0.0.3")};
    };
    sources_.bonjour = [&] { return ADD_FAILURE(), PrinterTable(); };
    start();
    EXPECT_EQ(status(), "Idle");
    EXPECT_EQ(UserDefaults().printerId(), printerAt("127.0.0.1")->text(keys::printerId));
    EXPECT_EQ(UserDefaults().printerTable().size(), 2U);
    EXPECT_EQ(popupTitles().size(), 4);
    sources_.bjnp = [&] { return ADD_FAILURE(), PrinterTable(); };
    start();
    EXPECT_EQ(popupTitles().size(), 4);
}

TEST_F(MainWindow, AFirstStartWithoutPrintersWaitsForAnAnnouncement) {
    auto& center = NotificationCenter::defaultCenter();
    const PrinterRecordPtr printer = printerAt("127.0.0.1");
    bool isPainted = false;
    sources_.startBonjour = [&] { isPainted = controller_->myWindow().isVisible(); };
    start();
    EXPECT_TRUE(isPainted);
    Q_EMIT center.VTBonjourPrinterFound(printer);
    EXPECT_EQ(status(), "Idle");
    EXPECT_EQ(UserDefaults().printerId(), printer->text(keys::printerId));
}

TEST_F(MainWindow, PopupSwitchesPrintersAndSelectPrinterDoesNotStay) {
    choose(printerAt("127.0.0.2"));
    EXPECT_EQ(status(), "Offline");
    choose(printerAt("127.0.0.1"));
    auto& popup = find<QComboBox>("printerIdPopup");
    EXPECT_EQ(popup.currentIndex(), 0);
    Q_EMIT popup.activated(1);
    EXPECT_EQ(status(), "Offline");
    EXPECT_EQ(find<QLabel>("lastUpdateField").text(), "Last update: not updated yet");
    Q_EMIT popup.activated(3);
    EXPECT_EQ(popup.currentIndex(), 1);
    auto* browser = controller_->myWindow().findChild<QDialog*>(QStringLiteral("PrinterBrowser"));
    ASSERT_TRUE(browser);
    EXPECT_TRUE(browser->isVisible());
}

TEST_F(MainWindow, AnOfflinePrinterIsAskedAgainWhenItIsChosenAnew) {
    choose(printerAt("127.0.0.1"));
    peer_.reset();
    updateButton().click();
    EXPECT_EQ(status(), "Offline");
    choose(printerAt("127.0.0.2"));
    peer_.emplace("127.0.0.1", 9100, script());
    clock_.advance(minutes(11));
    Q_EMIT find<QComboBox>("printerIdPopup").activated(1);
    EXPECT_EQ(status(), "Idle");
}

TEST_F(MainWindow, TheHistoryWindowShowsTheSelectedPrinterAndItsUpdates) {
    choose(printerAt("127.0.0.1"));
    auto* history = controller_->myWindow().findChild<InkHistoryController*>();
    ASSERT_TRUE(history);
    EXPECT_FALSE(history->findChild<GraphView*>()) << "no widgets before it is shown";
    find<QAction>("actionInkHistory").trigger();
    EXPECT_TRUE(history->isVisible());
    const auto* view = history->findChild<GraphView*>();
    EXPECT_EQ(view->inkHistory()->size(), 1U);
    QTest::mouseClick(&updateButton(), Qt::LeftButton);
    EXPECT_EQ(view->inkHistory()->size(), 2U);
}

TEST_F(MainWindow, ThePrinterListUpdatesAndForgetsAnyPrinter) {
    const PrinterRecordPtr first = printerAt("127.0.0.1");
    const std::string firstId = first->text(keys::printerId);
    choose(first);
    const PrinterRecordPtr second = printerAt("127.0.0.2");
    choose(second);
    first->remove(keys::inkDict);
    find<QAction>("actionPrinterList").trigger();
    auto& panel = find<QDialog>("PrinterList");
    const auto& table = *panel.findChild<QTableView*>();
    const auto cell = [&](int row, int column) {
        return table.model()->index(row, column).data().toString().toStdString();
    };
    ASSERT_EQ(table.model()->rowCount(), 2);
    EXPECT_EQ(table.selectionModel()->selectedRows().value(0).row(), 1) << "the main window's";
    EXPECT_EQ(cell(1, PrinterListModel::Status), "Offline");
    EXPECT_NE(cell(0, PrinterListModel::Levels).find("Cyan 42 %"), std::string::npos)
        << "from the history";

    Q_EMIT NotificationCenter::defaultCenter().VTBonjourPrinterRemoved(first);
    EXPECT_EQ(cell(0, PrinterListModel::Status), "Offline");
    Q_EMIT NotificationCenter::defaultCenter().VTBonjourPrinterFound(first);
    QTest::mouseClick(table.viewport(), Qt::LeftButton, {}, {20, 10});
    const std::size_t heardBefore = epson_.heard().size();
    QTest::mouseClick(panel.findChild<QPushButton*>(QStringLiteral("updateButton")),
                      Qt::LeftButton);
    EXPECT_GT(epson_.heard().size(), heardBefore);
    EXPECT_EQ(inkHistory(firstId)->size(), 2U);
    EXPECT_EQ(cell(0, PrinterListModel::Status), "Idle");
    EXPECT_EQ(status(), "Offline") << "the main window stays with its printer";

    choose(first);
    QTimer::singleShot(0, &panel, [] {
        auto* question = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        for (QAbstractButton* answer : question->buttons()) {
            if (answer->text() == QStringLiteral("&Forget")) answer->click();
        }
        question->reject();
    });
    QTest::mouseClick(panel.findChild<QPushButton*>(QStringLiteral("forgetButton")),
                      Qt::LeftButton);
    EXPECT_EQ(status(), "Printer is not selected");
    EXPECT_EQ(table.model()->rowCount(), 1);
    EXPECT_EQ(popupTitles().size(), 3);
    EXPECT_EQ(inkHistory(firstId)->size(), 3U) << "the history stays";
    start();
    EXPECT_EQ(status(), "Printer is not selected");
    EXPECT_EQ(popupTitles().value(0).toStdString(), second->text(keys::printerId));
}

TEST_F(MainWindow, TheAboutPanelHasVersionLinkAndLicences) {
    find<QAction>("actionAbout").trigger();
    auto& panel = find<QDialog>("AboutPanel");
    EXPECT_TRUE(panel.isVisible());
    const QString title = panel.findChild<QLabel*>(QStringLiteral("titleField"))->text();
    EXPECT_TRUE(title.contains(QStringLiteral("Tintoral " TINTORAL_VERSION)));
    EXPECT_TRUE(title.contains(QStringLiteral("<a href=\"http")));
    const QString readMe = panel.findChild<QTextBrowser*>()->toPlainText();
    for (const char* library :
         {"MIT", "Qt: GNU LGPL 3.0", "Avahi", "libusb", "libplist", "libstdc++"})
        EXPECT_TRUE(readMe.contains(QLatin1String(library))) << library;
    QTest::keyClick(&panel, Qt::Key_Escape);
    EXPECT_FALSE(panel.isVisible());
}

TEST_F(MainWindow, ClosingKeepsTheSelection) {
    choose(printerAt("127.0.0.1"));
    const PrinterRecordPtr second = printerAt("127.0.0.2");
    choose(second);
    Q_EMIT find<QComboBox>("printerIdPopup").activated(1);
    controller_->myWindow().close();
    EXPECT_EQ(UserDefaults().printerId(), printerAt("127.0.0.1")->text(keys::printerId));
}

TEST_F(MainWindow, TheStatusIconSaysTheSameInWordsAndBringsTheWindowBack) {
    auto& icon = *controller_->findChild<QSystemTrayIcon*>();
    const auto lines = [&] {
        QStringList texts;
        for (const QAction* action : icon.contextMenu()->actions())
            texts << (action->isEnabled() ? "" : "- ") + action->text();
        return texts.join('|').toStdString();
    };
    EXPECT_EQ(lines(), "&Show Tintoral|- &Update||&Quit");
    EXPECT_EQ(icon.toolTip(), "Tintoral\nPrinter is not selected");
    const PrinterRecordPtr printer =
        makeAddressedRecord({"127.0.0.1", Connection::RawPort, 9100, "EPSON X"});
    printer->set(keys::printerName, "<b>Tom & Ann</b>\x1b");
    printer->set(keys::colors, std::vector<std::string>{"Red & Black", std::string(70, 'c')});
    epson_.change({.inks = {{0, 45}, {1, -3}}});
    choose(printer);
    EXPECT_EQ(lines(), "&Show Tintoral|&Update||- <b>Tom && Ann</b>|- Red && Black: 45 %|- " +
                           std::string(59, 'c') + "\u2026: not empty||&Quit");
    EXPECT_FALSE(Qt::mightBeRichText(icon.toolTip()));
    EXPECT_TRUE(icon.toolTip().startsWith("Tintoral\n<b>Tom & Ann</b>\nIdle\nRed & Black: 45 %\n"));
    const QIcon swatch = icon.contextMenu()->actions().at(4)->icon();
    EXPECT_EQ(swatch.pixmap(16, QIcon::Disabled).toImage(), swatch.pixmap(16).toImage());

    controller_->myWindow().showMinimized();
    Q_EMIT icon.activated(QSystemTrayIcon::Context);
    EXPECT_TRUE(controller_->myWindow().isMinimized());
    Q_EMIT icon.activated(QSystemTrayIcon::Trigger);
    EXPECT_FALSE(controller_->myWindow().isMinimized());
    EXPECT_TRUE(controller_->myWindow().isActiveWindow());
}

class Desktop : public MainWindow {
  protected:
    static void SetUpTestSuite() {
        if (test::hasMessageBus()) bus_.emplace();
    }
    static void TearDownTestSuite() { bus_.reset(); }
    void SetUp() override {
        if (!bus_) GTEST_SKIP() << "no dbus-daemon";
        ASSERT_TRUE(QDBusConnection::sessionBus().isConnected()) << "asked for by a test before";
        server_.emplace();
        printer_->set(keys::colors, std::vector<std::string>{"Black", "<i>Cyan"});
        choose(printer_);
    }

    // The printer has these levels, and is asked; then all that the desktop is asked for.
    std::string whenLevelsAre(int black, int cyan) {
        epson_.change({.inks = {{0, black}, {1, cyan}}});
        controller_->updateButtonPressed();
        return told();
    }
    std::string told() { return server_->takeLog().join(' ').toStdString(); }

    static std::optional<test::SessionBus> bus_;
    std::optional<test::NotificationServer> server_;
    PrinterRecordPtr printer_ =
        makeAddressedRecord({"127.0.0.1", Connection::RawPort, 9100, "EPSON X"});
};
std::optional<test::SessionBus> Desktop::bus_;

TEST_F(Desktop, IsToldOfLowInkOnceForEachThresholdEvenAfterARestart) {
    EXPECT_EQ(whenLevelsAre(60, 21), "");
    EXPECT_EQ(whenLevelsAre(60, 20), "+1 &lt;i&gt;Cyan: 20 %");
    const QVariantList& arguments = server_->lastArguments();
    EXPECT_EQ(arguments.value(3).toString().toStdString(), "Ink is low: EPSON X (127.0.0.1)");
    EXPECT_EQ(arguments.value(5), QStringList({"default", "Show"}));
    EXPECT_EQ(whenLevelsAre(60, 20), "");
    EXPECT_EQ(whenLevelsAre(20, 18), "~1 Black: 20 %|&lt;i&gt;Cyan: 18 %");
    EXPECT_EQ(whenLevelsAre(60, 18), "~1 &lt;i&gt;Cyan: 18 %");
    start();
    EXPECT_EQ(told(), "-1");
    EXPECT_EQ(whenLevelsAre(60, 17), "") << "known before the restart";
    EXPECT_EQ(whenLevelsAre(60, 10), "+2 &lt;i&gt;Cyan: 10 %");
    server_->dismiss(2);
    told();
    EXPECT_EQ(whenLevelsAre(60, 9), "") << "the person has seen it";
    EXPECT_EQ(whenLevelsAre(19, 9), "+3 Black: 19 %|&lt;i&gt;Cyan: 9 %");
    EXPECT_EQ(whenLevelsAre(100, 100), "-3");
    EXPECT_EQ(whenLevelsAre(100, 20), "+4 &lt;i&gt;Cyan: 20 %");
}

TEST_F(Desktop, AClickOnANotificationBringsTheWindowBack) {
    EXPECT_EQ(whenLevelsAre(5, 60), "+1 Black: 5 %");
    controller_->myWindow().showMinimized();
    server_->click(7);
    told();
    EXPECT_TRUE(controller_->myWindow().isMinimized()) << "somebody else's notification";
    server_->click(1);
    told();
    EXPECT_FALSE(controller_->myWindow().isMinimized());
}

TEST_F(Desktop, IsNotToldWhenSwitchedOffAndToldAgainWhenSwitchedOn) {
    auto& item = find<QAction>("actionNotifyLowInk");
    EXPECT_TRUE(item.isChecked());
    EXPECT_EQ(whenLevelsAre(5, 60), "+1 Black: 5 %");
    item.trigger();
    EXPECT_EQ(told(), "-1");
    start();
    EXPECT_FALSE(find<QAction>("actionNotifyLowInk").isChecked());
    EXPECT_EQ(whenLevelsAre(4, 60), "");
    find<QAction>("actionNotifyLowInk").trigger();
    EXPECT_EQ(whenLevelsAre(4, 60), "+2 Black: 4 %");
}

TEST_F(Desktop, WithoutAServerNothingCountsAsTold) {
    server_.reset();
    epson_.change({.inks = {{0, 5}, {1, 60}}});
    controller_->updateButtonPressed();
    const auto isTakenBack = [&] { return !printer_->contains(keys::announcedInks); };
    EXPECT_FALSE(isTakenBack());
    EXPECT_TRUE(QTest::qWaitFor(isTakenBack));
    EXPECT_FALSE(UserDefaults().printerTable()[0].as<Dictionary>()->contains(keys::announcedInks));
    server_.emplace();
    EXPECT_EQ(whenLevelsAre(5, 60), "+1 Black: 5 %");
}

}  // namespace
}  // namespace tintoral
