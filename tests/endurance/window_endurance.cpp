// window_endurance TURNS: opens and closes every window so many times, without a display; begins
// the whole program anew; lets fifty announced printers come and go in each turn; and works with a
// history of ten years.
#include <QApplication>
#include <QtTest/QTest>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>

#include "app/app_controller.h"
#include "app/graph_view.h"
#include "app/ink_history_controller.h"
#include "app/notification_center.h"
#include "discovery/service_table.h"
#include "history/ink_history_store.h"
#include "monitor/address_probe.h"
#include "support/footprint.h"
#include "support/temporary_folder.h"
#include "support/test_clock.h"

namespace tintoral {
namespace {

using namespace test;

// What Qt keeps for later (glyphs, pixmaps, styled text) may come and go by so much.
constexpr std::size_t kCaches = 65536;
// What Qt 6.4 loses without a display each time that any dialog is shown, an empty one too.
constexpr std::size_t kLostByQt = 400;
constexpr int kAppearances = 50;
constexpr int kWarmUp = 10;
constexpr int kReadingsPerDay = 10;
constexpr int kEntries = 10 * 365 * kReadingsPerDay;
constexpr const char* kTenYears = "Ten years";

// All that was deleted for later is gone too.
void settle() {
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void closeAllBut(const QWidget* window) {
    for (QWidget* other : QApplication::topLevelWidgets()) {
        if (other != window && other->isVisible()) other->close();
    }
    settle();
}

class Program {
  public:
    Program() {
        controller_.awakeFromNib();
        controller_.myWindow().show();
        QTest::qWait(1);
        Q_EMIT NotificationCenter::defaultCenter().VTnewPrinterSelected(nobody_);
        settle();
    }

    bool openAndClose(void (AppController::*open)()) {
        (controller_.*open)();
        QTest::qWait(1);
        const bool opened = hasOpened();
        closeAllBut(&controller_.myWindow());
        return opened && !hasOpened();
    }

  private:
    bool hasOpened() {
        const auto windows = QApplication::topLevelWidgets();
        return std::ranges::any_of(windows, [&](const QWidget* window) {
            return window != &controller_.myWindow() && window->isVisible();
        });
    }

    PrinterRecordPtr nobody_ =
        makeAddressedRecord({"127.0.0.1", Connection::RawPort, 9100, "EPSON Stylus C64"});
    AppController controller_{PrinterSources()};
};

constexpr struct {
    const char* name;
    void (AppController::*open)();
} kWindows[] = {
    {"selection window", &AppController::showSelectionWindow},
    {"printer list", &AppController::showPrinterListPanel},
    {"ink history", &AppController::showInkHistory},
    {"diagnosis", &AppController::diagnoseMenuSelected},
    {"about panel", &AppController::showAboutPanel},
};

bool windows(int turns) {
    Program program;
    bool good = true;
    for (const auto& window : kWindows) {
        good = repeat(window.name, kWarmUp, turns,
                      kCaches + kLostByQt * static_cast<std::size_t>(turns),
                      [&] { return program.openAndClose(window.open); }) &&
               good;
    }
    return good;
}

bool programs(int turns) {
    return repeat("the program, every window", kWarmUp, turns, kCaches, [] {
        Program program;
        return std::ranges::all_of(
            kWindows, [&](const auto& window) { return program.openAndClose(window.open); });
    });
}

// Every service has a name of its own, so the table forgets the oldest.
class Announcements {
  public:
    Announcements() { window_.show(); }

    bool comeAndGo() {
        std::vector<ServiceId> services;
        services.reserve(kAppearances);
        for (int i = 0; i < kAppearances; ++i)
            services.push_back({"P" + std::to_string(++number_), "_pdl-datastream._tcp."});
        for (const ServiceId& id : services) {
            table_.found(id);
            Q_EMIT center_.VTBonjourPrinterFound(
                table_.resolved({id, "192.0.2.1", 9100, "host.local", {}}));
        }
        window_.updateUI();
        for (const ServiceId& id : services) {
            Q_EMIT center_.VTBonjourPrinterRemoved(table_.find(id));
            table_.withdrawn(id);
        }
        window_.updateUI();
        settle();
        return table_.records().size() <= ServiceTable::kMostInactive;
    }

  private:
    NotificationCenter& center_ = NotificationCenter::defaultCenter();
    int number_ = 0;
    ServiceTable table_;
    ModelTable models_;
    BrowserController window_{models_, {}, nullptr};
};

bool announcements(int turns) {
    Announcements announcements;
    return repeat("fifty printers come and go", kWarmUp, turns, kCaches,
                  [&] { return announcements.comeAndGo(); });
}

Dictionary reading(int number) {
    Dictionary entry;
    Array colors;
    for (const char* ink : {"Black", "Cyan", "Magenta", "Yellow", "Light Cyan", "Light Magenta"}) {
        colors.emplace_back(ink);
        entry.set(ink, 100 - number / kReadingsPerDay % 101);
    }
    entry.set("Colors", std::move(colors));
    const auto age = std::chrono::hours(24) / kReadingsPerDay * (kEntries - number);
    entry.set("Date", std::chrono::floor<std::chrono::seconds>(currentDate() - age));
    return entry;
}

// A reading stored, the window opened on it, its chart drawn and the window closed.
bool storeAndDraw(int number) {
    InkHistoryController window(nullptr);
    window.selectHistoryFor(kTenYears);
    window.showWindow();
    auto* view = window.findChild<GraphView*>(QStringLiteral("graphview"));
    const bool isStored = window.saveInkReadingsForPrinterId(reading(number), kTenYears);
    const bool isShown = view->inkHistory() && view->inkHistory()->size() >= kEntries;
    view->grab();
    window.close();
    settle();
    return isStored && isShown;
}

bool tenYears(int turns) {
    Array entries;
    for (int number = 0; number < kEntries; ++number) entries.emplace_back(reading(number));
    writePropertyListFile(historyFolder() / kTenYears, std::move(entries), {},
                          PropertyListFormat::Binary);
    int number = kEntries;
    return repeat("a history of ten years", 1, turns, kCaches,
                  [&] { return storeAndDraw(number++); });
}

int run(int turns) {
    const TemporaryFolder home;
    const ScopedEnvironment homeVariable("HOME", home.path());
    const ScopedEnvironment configVariable("XDG_CONFIG_HOME", home / "config");
    prepareHistoryFolder();
    TestClock clock;
    const ScopedClock scope(clock);
    printFootprintTitles();
    bool good = windows(turns);
    good = programs(turns) && good;
    good = announcements(turns) && good;
    good = tenYears(turns) && good;
    return good ? 0 : 1;
}

}  // namespace
}  // namespace tintoral

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    return tintoral::run(std::atoi(argv[1]));
}
