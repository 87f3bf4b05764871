#include "discovery/bonjour_browser.h"

#include <algorithm>
#include <vector>

#include "app/notification_center.h"
#include "support/text.h"

namespace tintoral {
namespace {

ServiceId idOf(const Announcement& announcement) {
    return {spelledOutText(announcement.name), announcement.type + "."};
}

ResolverQueue::Time now() {
    return std::chrono::steady_clock::now();
}

}  // namespace

BonjourBrowser::BonjourBrowser() {
    turns_.setSingleShot(true);
    connect(&turns_, &QTimer::timeout, this, &BonjourBrowser::takeTurns);
    connect(&session_, &AvahiSession::domainFound, this,
            &BonjourBrowser::startBonjourServiceBrowser);
    connect(&session_, &AvahiSession::serviceFound, this, &BonjourBrowser::handleFound);
    connect(&session_, &AvahiSession::serviceRemoved, this, &BonjourBrowser::handleRemoved);
    connect(&session_, &AvahiSession::allForNow, this, &BonjourBrowser::handleAllForNow);
    connect(&session_, &AvahiSession::lost, this, &BonjourBrowser::forgetAnnouncements);
    session_.start();
}

void BonjourBrowser::startBonjourServiceBrowser(const std::string& domain) {
    if (domain.empty()) return;
    forgetAnnouncements();
    session_.browse(domain);
}

void BonjourBrowser::handleFound(const Announcement& announcement) {
    const ServiceId id = idOf(announcement);
    if (!table_.found(id)) return;
    Service& service = services_[id];
    const bool isNew = service.announcements.empty();
    service.announcements.insert(announcement);
    // A printer that starts up may be announced over IPv6 before it has an IPv4 address.
    const bool mayHaveAddressNow = announcement.protocol == AVAHI_PROTO_INET && service.known &&
                                   service.known->address.empty();
    if (!isNew && !mayHaveAddressNow) return;
    service.wanted = ServiceResolver::Address::IPv4;
    service.known.reset();
    resolveAgain(id, service);
}

void BonjourBrowser::handleRemoved(const Announcement& announcement) {
    const ServiceId id = idOf(announcement);
    const auto entry = services_.find(id);
    if (entry == services_.end() || entry->second.announcements.erase(announcement) == 0) return;
    Service& service = entry->second;
    if (service.announcements.empty()) {
        withdraw(id);
    } else if (service.resolver && service.resolver->announcement() == announcement) {
        resolveAgain(id, service);
    }
}

// The service is forgotten before anybody is told: who is told may run the main loop meanwhile, and
// the service may be back after that.
void BonjourBrowser::withdraw(const ServiceId& id) {
    services_.erase(id);
    queue_.remove(id);
    const PrinterRecordPtr record = table_.find(id);
    if (!record) return;
    Q_EMIT NotificationCenter::defaultCenter().VTBonjourPrinterRemoved(record);
    if (!services_.contains(id)) table_.withdrawn(id);
}

void BonjourBrowser::forgetAnnouncements() {
    queue_.clear();
    for (auto& [id, service] : services_) {
        service.resolver.reset();
        service.announcements.clear();
    }
}

void BonjourBrowser::handleAllForNow(const std::string& type) {
    std::vector<ServiceId> gone;
    for (const auto& [id, service] : services_) {
        if (id.type == type + "." && service.announcements.empty()) gone.push_back(id);
    }
    for (const ServiceId& id : gone) withdraw(id);
}

void BonjourBrowser::handleResolved(const ResolvedService& resolved) {
    const auto entry = services_.find(resolved.id);
    if (entry == services_.end()) return;
    queue_.resolved(resolved.id);
    const Whereabouts whereabouts{resolved.address, resolved.port, resolved.hostName};
    if (entry->second.known == whereabouts) {
        table_.txtUpdated(resolved.id, resolved.txt);
        return;
    }
    entry->second.known = whereabouts;
    if (const PrinterRecordPtr record = table_.resolved(resolved))
        Q_EMIT NotificationCenter::defaultCenter().VTBonjourPrinterFound(record);
}

// The daemon gives up after a few seconds when a service has no IPv4 address, or does not answer at
// all; so the two ways to ask take turns. A service that was resolved keeps its resolver, which
// recovers by itself.
void BonjourBrowser::handleFailed(const ServiceId& id) {
    using enum ServiceResolver::Address;
    const auto entry = services_.find(id);
    if (entry == services_.end() || entry->second.known) return;
    Service& service = entry->second;
    service.wanted = service.wanted == IPv4 ? None : IPv4;
    service.resolver.reset();
    queue_.failed(id, now());
    wakeQueue();
}

void BonjourBrowser::resolveAgain(const ServiceId& id, Service& service) {
    service.resolver.reset();
    queue_.add(id, now());
    wakeQueue();
}

void BonjourBrowser::startResolver(const ServiceId& id) {
    const auto entry = services_.find(id);
    if (entry == services_.end() || entry->second.announcements.empty()) return;
    Service& service = entry->second;
    service.resolver.reset(std::make_unique<ServiceResolver>(
                               session_, id, *service.announcements.begin(), service.wanted)
                               .release());
    connect(service.resolver.get(), &ServiceResolver::resolved, this,
            &BonjourBrowser::handleResolved);
    connect(service.resolver.get(), &ServiceResolver::failed, this, &BonjourBrowser::handleFailed);
    if (!service.resolver->isRunning()) handleFailed(id);
}

void BonjourBrowser::stopResolver(const ServiceId& id) {
    const auto entry = services_.find(id);
    if (entry != services_.end()) entry->second.resolver.reset();
}

void BonjourBrowser::wakeQueue() {
    const auto pause = std::chrono::ceil<std::chrono::milliseconds>(pauseEnd_ - now());
    turns_.start(std::max(pause, std::chrono::milliseconds{0}));
}

// A step at a time, each an exchange with the daemon that the main loop waits for. With the pause
// behind it no more than a fifth of the window's time goes there, however busy the daemon is.
void BonjourBrowser::takeTurns() {
    constexpr std::chrono::milliseconds kUntilTimeMakesOneDue{500};
    constexpr int kShare = 4;
    const ResolverQueue::Time start = now();
    const auto step = queue_.next(start);
    if (!step) {
        if (queue_.isBusy()) turns_.start(kUntilTimeMakesOneDue);
        return;
    }
    if (step->action == ResolverQueue::Step::Action::Start) {
        startResolver(step->id);
    } else {
        stopResolver(step->id);
    }
    pauseEnd_ = now() + kShare * (now() - start);
    wakeQueue();
}

}  // namespace tintoral
