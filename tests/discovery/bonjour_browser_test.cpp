// The browser against a real Avahi daemon on a private message bus.
#include "discovery/bonjour_browser.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QtTest/QTest>
#include <filesystem>
#include <optional>

#include "app/notification_center.h"
#include "support/avahi_daemon.h"
#include "support/avahi_publisher.h"
#include "support/mdns_peer.h"

namespace tintoral {
namespace {

using test::PublishedService;

class Bonjour : public testing::Test {
  protected:
    Bonjour() {
        NotificationCenter& center = NotificationCenter::defaultCenter();
        connections_ = {
            QObject::connect(&center, &NotificationCenter::VTBonjourPrinterFound,
                             [this](const auto& record) { note("found", *record); }),
            QObject::connect(&center, &NotificationCenter::VTBonjourPrinterRemoved,
                             [this](const auto& record) { note("removed", *record); }),
        };
    }
    ~Bonjour() override {
        for (const auto& connection : connections_) QObject::disconnect(connection);
    }

    void SetUp() override {
        if (!test::hasAvahi()) GTEST_SKIP() << "no avahi-daemon or dbus-daemon on this machine";
    }

    void startDaemon() {
        if (!bus_) bus_.emplace();
        daemon_.emplace();
        publisher_.emplace();
        publisher_->publishAddress("host", "printer1.local", "10.77.0.11");
    }
    void stopDaemon() {
        publisher_.reset();
        daemon_.reset();
    }

    void note(const std::string& what, const PrinterRecord& record) {
        events_.push_back(what + " " + record.text(keys::printerName) + " " +
                          record.text(keys::active));
    }

    PrinterRecordPtr record(std::string_view name) const {
        for (const PrinterRecordPtr& record : browser_->printerTable()) {
            if (record->text(keys::printerName) == name) return record;
        }
        return nullptr;
    }
    std::string value(std::string_view name, std::string_view key) const {
        const PrinterRecordPtr found = record(name);
        return found ? found->text(key) : "";
    }
    bool becomes(std::string_view name, std::string_view key, std::string_view expected,
                 int seconds = 15) const {
        return QTest::qWaitFor([&] { return value(name, key) == expected; }, seconds * 1000);
    }

    // By a host of its own, at 10.77.0.12.
    void announce(const std::vector<test::MdnsService>& services) {
        peer_.emplace("10.77.0.12");
        peer_->announce(services);
        QObject::connect(&sendTimer_, &QTimer::timeout, [this] { peer_->sendNext(); });
        sendTimer_.start(50);  // slowly enough that a withdrawn record can die before the next
    }

    std::vector<std::string> events_;
    std::optional<test::MessageBus> bus_;
    std::optional<test::AvahiDaemon> daemon_;
    std::optional<test::AvahiPublisher> publisher_;
    std::optional<test::MdnsPeer> peer_;
    QTimer sendTimer_;
    std::optional<BonjourBrowser> browser_;

  private:
    std::array<QMetaObject::Connection, 2> connections_;
};

TEST_F(Bonjour, FollowsAPrinterThroughItsLife) {
    startDaemon();
    browser_.emplace();
    PublishedService hp{"HP \"a/b\"", "_pdl-datastream._tcp", 9101};
    hp.txt = {"usb_MFG=HP", "ty=wrong", "usb_MDL=HP LaserJet 4", "usb_S=1", "usb_S=2"};
    publisher_->publish("hp", {hp});
    ASSERT_TRUE(becomes(hp.name, keys::kind, "port9101:10.77.0.11"));
    EXPECT_EQ(value(hp.name, keys::printerId), "AirPort:HP \"a/b\"");
    EXPECT_EQ(value(hp.name, keys::serviceType), "_pdl-datastream._tcp.");
    EXPECT_EQ(value(hp.name, keys::hostName), "printer1.local");
    EXPECT_EQ(value(hp.name, keys::usbS), "1") << "the first string of a key counts";
    EXPECT_TRUE(browser_->getPrinterDictByMakerAndModelName("HP LaserJet 4"));

    hp.txt = {"usb_MFG=HP", "usb_S=3"};
    publisher_->changeTxt("hp", hp);
    EXPECT_TRUE(becomes(hp.name, keys::usbS, "3"));
    EXPECT_EQ(events_, std::vector<std::string>({"found HP \"a/b\" YES"}));

    const PrinterRecordPtr kept = record(hp.name);
    publisher_->withdraw("hp");
    ASSERT_TRUE(becomes(hp.name, keys::active, "NO"));
    EXPECT_EQ(events_.back(), "removed HP \"a/b\" YES");
    publisher_->publish("hp", {hp});
    EXPECT_TRUE(QTest::qWaitFor([&] { return events_.size() == 3; }, 15000));
    EXPECT_EQ(events_.back(), "found HP \"a/b\" YES");
    EXPECT_EQ(record(hp.name), kept);
    EXPECT_EQ(browser_->printerTable().size(), 1U);
}

TEST_F(Bonjour, AServiceOverSeveralProtocolsIsOnePrinterUntilTheLastGoes) {
    if (!std::filesystem::exists("/proc/net/if_inet6")) GTEST_SKIP() << "no IPv6 here";
    startDaemon();
    browser_.emplace();
    const std::vector<test::MdnsService> queue{{"Q", "_printer._tcp", 515}};
    test::MdnsPeer overIPv4("10.77.0.11");
    test::MdnsPeer overIPv6("10.77.0.12", test::MdnsPeer::OverIPv6());
    QTest::qWait(3000);  // until the daemon has an IPv6 address of its own
    overIPv4.announce(queue);
    overIPv4.sendNext();
    ASSERT_TRUE(becomes("Q", keys::kind, "lpd:10.77.0.11"));
    overIPv6.announce(queue);
    overIPv6.sendNext();
    QTest::qWait(500);
    overIPv4.withdraw(queue);
    overIPv4.sendNext();
    EXPECT_TRUE(becomes("Q", keys::kind, "lpd:10.77.0.12")) << "what is left is resolved";
    EXPECT_EQ(value("Q", keys::active), "YES");
    overIPv6.withdraw(queue);
    overIPv6.sendNext();
    EXPECT_TRUE(becomes("Q", keys::active, "NO"));
    EXPECT_EQ(browser_->printerTable().size(), 1U);
}

TEST_F(Bonjour, WithoutAnAddressTheHostNameIsTaken) {
    startDaemon();
    browser_.emplace();
    publisher_->publish("lost",
                        {{.name = "Q", .type = "_ipp._tcp", .txt = {"rp=x"}, .host = "no.local"}});
    EXPECT_TRUE(becomes("Q", keys::ippURL, "http://no.local:631/x", 20));
}

TEST_F(Bonjour, BusAndDaemonMayComeLateAndComeAgain) {
    browser_.emplace();
    QTest::qWait(100);
    bus_.emplace();
    QTest::qWait(2500);  // a client that waits for the daemon is there by now
    startDaemon();
    publisher_->publish(
        "both", {{.name = "stays", .type = "_ipp._tcp"}, {.name = "goes", .type = "_ipp._tcp"}});
    ASSERT_TRUE(becomes("stays", keys::kind, "ipp:10.77.0.11"));
    ASSERT_TRUE(becomes("goes", keys::kind, "ipp:10.77.0.11"));
    stopDaemon();
    QTest::qWait(500);
    EXPECT_EQ(value("stays", keys::active), "YES") << "nobody said that it went";
    events_.clear();
    startDaemon();
    publisher_->publish("one", {{.name = "stays", .type = "_ipp._tcp"}});
    EXPECT_TRUE(becomes("goes", keys::active, "NO"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return events_.size() >= 2; }, 15000));
    EXPECT_EQ(value("stays", keys::active), "YES");
    stopDaemon();
    bus_.reset();
    startDaemon();
    publisher_->publish("after", {{.name = "new", .type = "_ipp._tcp"}});
    EXPECT_TRUE(becomes("new", keys::kind, "ipp:10.77.0.11"));
}

std::vector<test::MdnsService> manyServices(std::size_t count, bool resolvable) {
    std::vector<test::MdnsService> services;
    for (std::size_t i = 0; i < count; ++i) {
        services.push_back({"P" + std::to_string(i),
                            "_pdl-datastream._tcp",
                            9100,
                            {"usb_MFG=EPSON", "usb_MDL=Stylus C84"},
                            resolvable});
    }
    return services;
}

// The pauses between two turns of the main loop.
class Heartbeat {
  public:
    Heartbeat() {
        QObject::connect(&timer_, &QTimer::timeout,
                         [this] { longest_ = std::max(longest_, sinceBeat_.restart()); });
        sinceBeat_.start();
        timer_.start(0);
    }
    qint64 longestPauseMs() const { return longest_; }

  private:
    QTimer timer_;
    QElapsedTimer sinceBeat_;
    qint64 longest_ = 0;
};

TEST_F(Bonjour, AFloodThatComesAndGoesLeavesTheMainLoopFree) {
    constexpr std::size_t kCount = 300;
    startDaemon();
    browser_.emplace();
    const auto services = manyServices(kCount, true);
    const Heartbeat heartbeat;
    announce(services);
    EXPECT_TRUE(QTest::qWaitFor([&] { return events_.size() == kCount; }, 60000));
    EXPECT_EQ(value("P7", keys::makerAndModelName), "EPSON Stylus C84");
    peer_->withdraw(services);
    EXPECT_TRUE(QTest::qWaitFor([&] { return events_.size() == 2 * kCount; }, 60000));
    EXPECT_EQ(browser_->printerTable().size(), ServiceTable::kMostInactive);
    EXPECT_LT(heartbeat.longestPauseMs(), 1000);
}

TEST_F(Bonjour, ADaemonThatDoesNotAnswerLeavesTheMainLoopFree) {
    startDaemon();
    browser_.emplace();
    publisher_->publish("Q", {{.name = "Q", .type = "_ipp._tcp"}});
    ASSERT_TRUE(becomes("Q", keys::kind, "ipp:10.77.0.11"));
    const Heartbeat heartbeat;
    daemon_->freeze();
    browser_->startBonjourServiceBrowser("local");
    QTest::qWait(2000);
    EXPECT_LT(heartbeat.longestPauseMs(), 1000);
    daemon_->thaw();
    events_.clear();
    EXPECT_TRUE(QTest::qWaitFor([&] { return events_.size() == 1; }, 15000)) << "asked again";
}

TEST_F(Bonjour, ServicesThatNeverAnswerKeepNoOthersWaiting) {
    constexpr std::size_t kCount = 3 * ResolverQueue::kMostResolvers;
    startDaemon();
    browser_.emplace();
    announce(manyServices(kCount, false));
    ASSERT_TRUE(QTest::qWaitFor([&] { return browser_->printerTable().size() == kCount; }, 30000));
    publisher_->publish("real", {{.name = "real", .type = "_ipp._tcp"}});
    EXPECT_TRUE(becomes("real", keys::kind, "ipp:10.77.0.11", 30));
}

TEST_F(Bonjour, NamesThatDifferStayApartWhateverTheyHold) {
    startDaemon();
    browser_.emplace();
    std::vector<test::MdnsService> services;
    for (const char* name : {"a\ab", "a\bb", "a\\b.c/d", "\xC3\xA9"})
        services.push_back({name, "_ipp._tcp", 631, {"rp=q\x1B[2J", "rp=second", "ty", "=", ""}});
    announce(services);
    for (const char* name : {"a<U+0007>b", "a<U+0008>b", "a\\b.c/d", "\xC3\xA9"})
        EXPECT_TRUE(becomes(name, keys::ippURL, "http://10.77.0.12:631/q[2J")) << name;
    EXPECT_EQ(browser_->printerTable().size(), services.size());
}

}  // namespace
}  // namespace tintoral
