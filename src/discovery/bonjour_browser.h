// Printers that announce themselves on the network, for the whole run of the program.
//
// What is found goes into `printerTable` and out as VTBonjourPrinterFound and
// VTBonjourPrinterRemoved. A service that is announced over several interfaces is one printer,
// which is gone when its last announcement is. When the daemon stops, printers stay as they are;
// what the next one does not announce is then gone.
#pragma once

#include <QObject>
#include <QTimer>
#include <map>
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
    struct Service {
        std::set<Announcement> announcements;
        ServiceResolver::Address wanted = ServiceResolver::Address::IPv4;
        ServiceResolverPtr resolver;
        std::optional<Whereabouts> known;
    };

    void handleFound(const Announcement& announcement);
    void handleRemoved(const Announcement& announcement);
    void handleResolved(const ResolvedService& resolved);
    void handleFailed(const ServiceId& id);
    void handleAllForNow(const std::string& type);
    void forgetAnnouncements();
    void withdraw(const ServiceId& id);

    void resolveAgain(const ServiceId& id, Service& service);
    void startResolver(const ServiceId& id);
    void stopResolver(const ServiceId& id);
    void wakeQueue();
    void takeTurns();

    ServiceTable table_;
    AvahiSession session_;
    std::map<ServiceId, Service> services_;
    ResolverQueue queue_;
    QTimer turns_;
    ResolverQueue::Time pauseEnd_{};
};

}  // namespace tintoral
