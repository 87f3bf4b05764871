#include "discovery/avahi_session.h"

#include <avahi-common/address.h>
#include <avahi-common/strlst.h>

#include <utility>

#include "support/byte_reader.h"

namespace tintoral {
namespace {

constexpr std::chrono::seconds kRetry{2};

constexpr std::array<const char*, 4> kServiceTypes{"_ipp._tcp", "_pdl-datastream._tcp",
                                                   "_printer._tcp", "_riousbprint._tcp"};

std::string textOf(const char* text) {
    return text ? text : "";
}

// Runs `function` from the thread's loop; not at all when `object` is gone by then.
template <typename Function>
void later(QObject* object, Function function) {
    QMetaObject::invokeMethod(object, std::move(function), Qt::QueuedConnection);
}

std::string dotted(const AvahiAddress* address) {
    if (!address || address->proto != AVAHI_PROTO_INET) return {};
    std::array<char, AVAHI_ADDRESS_STR_MAX> text{};
    avahi_address_snprint(text.data(), text.size(), address);
    return text.data();
}

TxtRecord txtRecordOf(AvahiStringList* strings) {
    TxtRecord txt;
    for (; strings; strings = avahi_string_list_get_next(strings)) {
        const Bytes bytes(avahi_string_list_get_text(strings), avahi_string_list_get_size(strings));
        txt.add(asText(bytes));
    }
    return txt;
}

}  // namespace

// What the library calls. It may call from within a function that is called here, and its objects
// are not freed from inside.
struct AvahiSession::Callbacks {
    static AvahiSession* session(void* data) { return static_cast<AvahiSession*>(data); }

    static void state(AvahiClient* client, AvahiClientState state, void* data) {
        later(session(data),
              [self = session(data), client, state] { self->handleState(client, state); });
    }

    static void domain(AvahiDomainBrowser*, AvahiIfIndex, AvahiProtocol, AvahiBrowserEvent event,
                       const char* domain, AvahiLookupResultFlags, void* data) {
        if (event == AVAHI_BROWSER_CACHE_EXHAUSTED || event == AVAHI_BROWSER_REMOVE) return;
        later(session(data),
              [self = session(data), name = textOf(domain)] { self->useDomain(name); });
    }

    static void service(AvahiServiceBrowser*, AvahiIfIndex interface, AvahiProtocol protocol,
                        AvahiBrowserEvent event, const char* name, const char* type,
                        const char* domain, AvahiLookupResultFlags, void* data) {
        AvahiSession* self = session(data);
        const Announcement announcement{interface, protocol, textOf(name), textOf(type),
                                        textOf(domain)};
        if (event == AVAHI_BROWSER_NEW) Q_EMIT self->serviceFound(announcement);
        if (event == AVAHI_BROWSER_REMOVE) Q_EMIT self->serviceRemoved(announcement);
        if (event == AVAHI_BROWSER_ALL_FOR_NOW) Q_EMIT self->allForNow(announcement.type);
    }
};

struct AvahiSession::Resolver {
    AvahiSession* session;
    Ticket ticket;
    ServiceId id;
    AvahiServiceResolverPtr handle;

    static void report(AvahiServiceResolver*, AvahiIfIndex, AvahiProtocol, AvahiResolverEvent event,
                       const char*, const char*, const char*, const char* host,
                       const AvahiAddress* address, std::uint16_t port, AvahiStringList* txt,
                       AvahiLookupResultFlags, void* data) {
        const auto& self = *static_cast<Resolver*>(data);
        if (event == AVAHI_RESOLVER_FAILURE) {
            Q_EMIT self.session->failed(self.ticket, self.id);
        } else {
            Q_EMIT self.session->resolved(
                self.ticket, {self.id, dotted(address), port, textOf(host), txtRecordOf(txt)});
        }
    }
};

AvahiSession::AvahiSession() {
    retry_.setSingleShot(true);
    connect(&retry_, &QTimer::timeout, this, &AvahiSession::connectToDaemon);
}

AvahiSession::~AvahiSession() {
    disconnectFromDaemon();
}

void AvahiSession::start() {
    connectToDaemon();
}

// Without a bus there is no client; with a bus but no daemon the client waits for the daemon.
void AvahiSession::connectToDaemon() {
    client_.reset(
        avahi_client_new(poll_.api(), AVAHI_CLIENT_NO_FAIL, Callbacks::state, this, nullptr));
    if (!client_) retry_.start(kRetry);
}

void AvahiSession::handleState(const AvahiClient* client, AvahiClientState state) {
    if (client != client_.get() || state == AVAHI_CLIENT_CONNECTING) return;
    if (state == AVAHI_CLIENT_FAILURE) {
        disconnectFromDaemon();
        Q_EMIT lost();
        retry_.start(kRetry);
    } else if (!std::exchange(searchedDomain_, true)) {
        searchDomain();
    }
}

void AvahiSession::disconnectFromDaemon() {
    resolvers_.clear();
    serviceBrowsers_ = {};
    domainBrowser_.reset();
    client_.reset();
    searchedDomain_ = false;
}

void AvahiSession::searchDomain() {
    domainBrowser_.reset(
        avahi_domain_browser_new(client_.get(), AVAHI_IF_UNSPEC, AVAHI_PROTO_UNSPEC, nullptr,
                                 AVAHI_DOMAIN_BROWSER_BROWSE, {}, Callbacks::domain, this));
    if (!domainBrowser_) Q_EMIT domainFound(ownDomain());
}

// The first answer decides; it names no domain when there is none or the search failed.
void AvahiSession::useDomain(const std::string& domain) {
    if (!domainBrowser_) return;
    domainBrowser_.reset();
    Q_EMIT domainFound(domain.empty() ? ownDomain() : domain);
}

std::string AvahiSession::ownDomain() const {
    const std::string domain = textOf(avahi_client_get_domain_name(client_.get()));
    return domain.empty() ? "local" : domain;
}

void AvahiSession::browse(const std::string& domain) {
    if (!client_) return;
    for (std::size_t i = 0; i < kServiceTypes.size(); ++i) {
        serviceBrowsers_[i].reset(avahi_service_browser_new(
            client_.get(), AVAHI_IF_UNSPEC, AVAHI_PROTO_UNSPEC, kServiceTypes[i], domain.c_str(),
            {}, Callbacks::service, this));
    }
}

void AvahiSession::resolve(Ticket ticket, const ServiceId& id, const Announcement& announcement,
                           Address wanted) {
    auto resolver = std::make_unique<Resolver>(Resolver{this, ticket, id, nullptr});
    if (client_) {
        resolver->handle.reset(avahi_service_resolver_new(
            client_.get(), announcement.interface, announcement.protocol, announcement.name.c_str(),
            announcement.type.c_str(), announcement.domain.c_str(), AVAHI_PROTO_INET,
            wanted == Address::None ? AVAHI_LOOKUP_NO_ADDRESS : AvahiLookupFlags{},
            Resolver::report, resolver.get()));
    }
    if (resolver->handle) {
        resolvers_.emplace(ticket, std::move(resolver));
    } else {
        Q_EMIT failed(ticket, id);
    }
    Q_EMIT resolverStarted();
}

void AvahiSession::release(Ticket ticket) {
    resolvers_.erase(ticket);
}

}  // namespace tintoral
