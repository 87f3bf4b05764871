// bonjour_endurance SERVICES ROUNDS: so many announced printers come and go so many times, through
// a real Avahi daemon, while the selection window shows them. One round is a flood: it fills the
// caches, so its footprint is not judged.
#include <QApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <QtTest/QTest>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "app/browser_controller.h"
#include "app/notification_center.h"
#include "discovery/bonjour_browser.h"
#include "support/avahi_daemon.h"
#include "support/footprint.h"
#include "support/mdns_peer.h"

namespace tintoral {
namespace {

using namespace test;

// What Qt keeps for later, and records of services that are gone (service_table.h).
constexpr std::size_t kCaches = 65536;
constexpr int kWarmUp = 2;
constexpr qint64 kLongestPauseMs = 500;  // on a machine that is busy
constexpr int kBeatMs = 5;

std::vector<MdnsService> services(int count) {
    std::vector<MdnsService> all;
    all.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        all.push_back({"P" + std::to_string(i),
                       "_pdl-datastream._tcp",
                       9100,
                       {"usb_MFG=EPSON", "usb_MDL=Stylus C84"}});
    }
    return all;
}

class Flood {
  public:
    explicit Flood(int count) : services_(services(count)), count_(count) {
        const NotificationCenter& center = NotificationCenter::defaultCenter();
        QObject::connect(&center, &NotificationCenter::VTBonjourPrinterFound, &receiver_,
                         [this] { ++found_; });
        QObject::connect(&center, &NotificationCenter::VTBonjourPrinterRemoved, &receiver_,
                         [this] { ++removed_; });
        QObject::connect(&sending_, &QTimer::timeout, &receiver_, [this] { send(); });
        QObject::connect(&beat_, &QTimer::timeout, &receiver_, [this] { beat(); });
        window_.startBonjourBrowser();
        window_.showWindow();
        sinceBeat_.start();
        beat_.start(kBeatMs);
        sending_.start(5);
    }

    // Everybody comes and goes.
    bool round() {
        found_ = removed_ = 0;
        sent_ = 0;
        peer_.announce(services_);
        const bool came = QTest::qWaitFor([this] { return found_ >= count_; }, 120'000);
        sent_ = 0;
        peer_.withdraw(services_);
        const bool gone = QTest::qWaitFor([this] { return removed_ >= count_; }, 120'000);
        if (!came || !gone) std::fprintf(stderr, "%d came, %d went\n", found_, removed_);
        return came && gone;
    }

    qint64 longestPauseMs() const { return longestPause_; }

  private:
    // Packets are lost, so all are sent again; but not before a withdrawn record can have died.
    void send() {
        constexpr std::size_t kRest = 600;
        if (sent_++ % (peer_.packetCount() + kRest) < peer_.packetCount()) peer_.sendNext();
    }

    // The time that this thread was ready to run and others ran is the machine's.
    void beat() {
        const qint64 waited = waitedForTheProcessorMs();
        const qint64 pause = sinceBeat_.restart() - kBeatMs - (waited - waitedBefore_);
        waitedBefore_ = waited;
        longestPause_ = std::max(longestPause_, pause);
    }

    static qint64 waitedForTheProcessorMs() {
        qint64 ran = 0;
        qint64 waited = 0;  // nanoseconds
        std::ifstream("/proc/thread-self/schedstat") >> ran >> waited;
        return waited / 1'000'000;
    }

    PrinterSources sources() {
        return {.usb = {},
                .bjnp = {},
                .startBonjour = [this] { browser_ = std::make_unique<BonjourBrowser>(); },
                .bonjour = [this] { return browser_ ? browser_->printerTable() : PrinterTable(); },
                .probeIpp = {}};
    }

    std::vector<MdnsService> services_;
    int count_;
    int found_ = 0;
    int removed_ = 0;
    std::size_t sent_ = 0;
    MessageBus bus_;
    AvahiDaemon daemon_;
    MdnsPeer peer_{"10.77.0.12"};
    ModelTable models_;
    std::unique_ptr<BonjourBrowser> browser_;
    BrowserController window_{models_, sources(), nullptr};
    QTimer sending_;
    QTimer beat_;
    QElapsedTimer sinceBeat_;
    qint64 longestPause_ = 0;
    qint64 waitedBefore_ = waitedForTheProcessorMs();
    QObject receiver_;
};

bool repeatedly(Flood& flood, int rounds) {
    printFootprintTitles();
    return repeat("announced printers", kWarmUp, rounds, kCaches, [&] { return flood.round(); });
}

int run(int count, int rounds) {
    if (!hasAvahi()) return 77;
    Flood flood(count);
    const bool good = rounds > 1 ? repeatedly(flood, rounds) : flood.round();
    std::printf("%-28s longest pause of the main loop %lld ms\n", "",
                static_cast<long long>(flood.longestPauseMs()));
    return good && flood.longestPauseMs() < kLongestPauseMs ? 0 : 1;
}

}  // namespace
}  // namespace tintoral

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    return tintoral::run(std::atoi(argv[1]), std::atoi(argv[2]));
}
