// Printers that announce themselves on the network, for the whole run of the program.
//
// What is found goes into `printerTable` and out as VTBonjourPrinterFound and
// VTBonjourPrinterRemoved. A service that is announced over several interfaces is one printer,
// which is gone when its last announcement is. When the daemon stops, printers stay as they are;
// what the next one does not announce is then gone.
#pragma once

#include <QObject>
#include <QThread>
#include <QTimer>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "discovery/avahi_session.h"
#include "discovery/resolver_queue.h"
#include "discovery/service_table.h"

namespace tintoral {

class BonjourBrowser : public QObject {
    Q_OBJECT

  public:
    // Starts to look for a domain.
    BonjourBrowser();
    ~BonjourBrowser() override;

    // (Re)starts browsing, in that domain; ignored when it is empty.
    void startBonjourServiceBrowser(const std::string& domain);

    // Every service that was announced, the inactive ones too.
    const std::vector<PrinterRecordPtr>& printerTable() const { return table_.records(); }

    // See ServiceTable.
    std::optional<PrinterRecord> getPrinterDictByMakerAndModelName(std::string_view name) const {
        return table_.getPrinterDictByMakerAndModelName(name);
    }
    bool lookForAirPort(std::string_view address) const { return table_.lookForAirPort(address); }
    void setAirPort(std::string_view address) { table_.setAirPort(address); }

  private:
    // Where a service was when it was resolved last. A change of it is news; a change of the TXT
    // record alone is not.
    struct Whereabouts {
        std::string address;
        std::uint16_t port;
        std::string hostName;

        friend bool operator==(const Whereabouts&, const Whereabouts&) = default;
    };
    struct Resolver {
        AvahiSession::Ticket ticket;
        Announcement announcement;
    };
    struct Service {
        std::set<Announcement> announcements;
        AvahiSession::Address wanted = AvahiSession::Address::IPv4;
        std::optional<Resolver> resolver;
        std::optional<Whereabouts> known;
    };

    void connectSession();
    void handleFound(const Announcement& announcement);
    void handleRemoved(const Announcement& announcement);
    void handleResolved(AvahiSession::Ticket ticket, const ResolvedService& resolved);
    void handleFailed(AvahiSession::Ticket ticket, const ServiceId& id);
    void handleAllForNow(const std::string& type);
    void forgetAnnouncements();
    void withdraw(const ServiceId& id);

    void resolveAgain(const ServiceId& id, Service& service);
    void startResolver(const ServiceId& id);
    void release(Service& service);
    Service* resolvedBy(AvahiSession::Ticket ticket, const ServiceId& id);
    void wakeQueue();
    void takeTurns();

    ServiceTable table_;
    std::unique_ptr<QThread> thread_;  // the session's
    AvahiSession* session_;            // the thread's, gone when that has finished
    std::map<ServiceId, Service> services_;
    ResolverQueue queue_;
    QTimer turns_;
    AvahiSession::Ticket lastTicket_ = 0;
    bool isStarting_ = false;  // a resolver; one at a time
};

}  // namespace tintoral
