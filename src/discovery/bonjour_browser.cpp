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

BonjourBrowser::BonjourBrowser()
    : thread_(std::make_unique<QThread>()), session_(std::make_unique<AvahiSession>().release()) {
    turns_.setSingleShot(true);
    connect(&turns_, &QTimer::timeout, this, &BonjourBrowser::takeTurns);
    connectSession();
    session_->moveToThread(thread_.get());
    connect(thread_.get(), &QThread::started, session_, &AvahiSession::start);
    connect(thread_.get(), &QThread::finished, session_, &QObject::deleteLater);
    thread_->start();
}

// A thread that waits for a daemon which does not answer is left to end with the program.
BonjourBrowser::~BonjourBrowser() {
    constexpr unsigned long kPatience = 2000;  // ms
    thread_->quit();
    if (!thread_->wait(kPatience)) static_cast<void>(thread_.release());
}

void BonjourBrowser::connectSession() {
    connect(session_, &AvahiSession::domainFound, this,
            &BonjourBrowser::startBonjourServiceBrowser);
    connect(session_, &AvahiSession::serviceFound, this, &BonjourBrowser::handleFound);
    connect(session_, &AvahiSession::serviceRemoved, this, &BonjourBrowser::handleRemoved);
    connect(session_, &AvahiSession::allForNow, this, &BonjourBrowser::handleAllForNow);
    connect(session_, &AvahiSession::lost, this, &BonjourBrowser::forgetAnnouncements);
    connect(session_, &AvahiSession::resolved, this, &BonjourBrowser::handleResolved);
    connect(session_, &AvahiSession::failed, this, &BonjourBrowser::handleFailed);
    connect(session_, &AvahiSession::resolverStarted, this, [this] {
        isStarting_ = false;
        wakeQueue();
    });
}

void BonjourBrowser::startBonjourServiceBrowser(const std::string& domain) {
    if (domain.empty()) return;
    forgetAnnouncements();
    QMetaObject::invokeMethod(session_, [session = session_, domain] { session->browse(domain); });
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
    service.wanted = AvahiSession::Address::IPv4;
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
    } else if (service.resolver && service.resolver->announcement == announcement) {
        resolveAgain(id, service);
    }
}

// The service is forgotten before anybody is told: who is told may run the main loop meanwhile, and
// the service may be back after that.
void BonjourBrowser::withdraw(const ServiceId& id) {
    release(services_[id]);
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
        release(service);
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

// Null for what the session reported before it heard that nobody wants to know.
BonjourBrowser::Service* BonjourBrowser::resolvedBy(AvahiSession::Ticket ticket,
                                                    const ServiceId& id) {
    const auto entry = services_.find(id);
    const bool isWanted = entry != services_.end() && entry->second.resolver &&
                          entry->second.resolver->ticket == ticket;
    return isWanted ? &entry->second : nullptr;
}

void BonjourBrowser::handleResolved(AvahiSession::Ticket ticket, const ResolvedService& resolved) {
    Service* service = resolvedBy(ticket, resolved.id);
    if (!service) return;
    queue_.resolved(resolved.id);
    const Whereabouts whereabouts{resolved.address, resolved.port, resolved.hostName};
    if (service->known == whereabouts) {
        table_.txtUpdated(resolved.id, resolved.txt);
        return;
    }
    service->known = whereabouts;
    if (const PrinterRecordPtr record = table_.resolved(resolved))
        Q_EMIT NotificationCenter::defaultCenter().VTBonjourPrinterFound(record);
}

// The daemon gives up after a few seconds when a service has no IPv4 address, or does not answer at
// all; so the two ways to ask take turns. A service that was resolved keeps its resolver, which
// recovers by itself.
void BonjourBrowser::handleFailed(AvahiSession::Ticket ticket, const ServiceId& id) {
    using enum AvahiSession::Address;
    Service* service = resolvedBy(ticket, id);
    if (!service || service->known) return;
    service->wanted = service->wanted == IPv4 ? None : IPv4;
    release(*service);
    queue_.failed(id, now());
    wakeQueue();
}

void BonjourBrowser::resolveAgain(const ServiceId& id, Service& service) {
    release(service);
    queue_.add(id, now());
    wakeQueue();
}

void BonjourBrowser::startResolver(const ServiceId& id) {
    const auto entry = services_.find(id);
    if (entry == services_.end() || entry->second.announcements.empty()) return;
    Service& service = entry->second;
    release(service);
    service.resolver = {++lastTicket_, *service.announcements.begin()};
    isStarting_ = true;
    QMetaObject::invokeMethod(
        session_, [session = session_, id, resolver = *service.resolver, wanted = service.wanted] {
            session->resolve(resolver.ticket, id, resolver.announcement, wanted);
        });
}

void BonjourBrowser::release(Service& service) {
    if (!service.resolver) return;
    QMetaObject::invokeMethod(session_, [session = session_, ticket = service.resolver->ticket] {
        session->release(ticket);
    });
    service.resolver.reset();
}

void BonjourBrowser::wakeQueue() {
    if (!isStarting_) turns_.start(0);
}

// A step at a time: the next resolver is asked for when the daemon has answered for the last one,
// so that it gets no more to do than it does.
void BonjourBrowser::takeTurns() {
    constexpr std::chrono::milliseconds kUntilTimeMakesOneDue{500};
    const auto step = queue_.next(now());
    if (!step) {
        if (queue_.isBusy()) turns_.start(kUntilTimeMakesOneDue);
        return;
    }
    if (step->action == ResolverQueue::Step::Action::Start) {
        startResolver(step->id);
    } else if (const auto entry = services_.find(step->id); entry != services_.end()) {
        release(entry->second);
    }
    wakeQueue();
}

}  // namespace tintoral
