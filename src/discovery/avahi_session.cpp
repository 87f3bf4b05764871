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

// Runs `function` from the main loop; not at all when `object` is gone by then.
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

// What the library calls. It may call from within a function that is called here.
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
        later(session(data), [self = session(data), event,
                              announcement = Announcement{interface, protocol, textOf(name),
                                                          textOf(type), textOf(domain)}] {
            if (event == AVAHI_BROWSER_NEW) Q_EMIT self->serviceFound(announcement);
            if (event == AVAHI_BROWSER_REMOVE) Q_EMIT self->serviceRemoved(announcement);
            if (event == AVAHI_BROWSER_ALL_FOR_NOW) Q_EMIT self->allForNow(announcement.type);
        });
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
        Q_EMIT lost();
        disconnectFromDaemon();
        retry_.start(kRetry);
    } else if (!std::exchange(searchedDomain_, true)) {
        searchDomain();
    }
}

void AvahiSession::disconnectFromDaemon() {
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

struct ServiceResolver::Callbacks {
    static void resolver(AvahiServiceResolver*, AvahiIfIndex, AvahiProtocol,
                         AvahiResolverEvent event, const char*, const char*, const char*,
                         const char* host, const AvahiAddress* address, std::uint16_t port,
                         AvahiStringList* txt, AvahiLookupResultFlags, void* data) {
        auto* self = static_cast<ServiceResolver*>(data);
        if (event == AVAHI_RESOLVER_FAILURE) {
            later(self, [self] {
                if (self->isRunning()) Q_EMIT self->failed(self->id_);
            });
            return;
        }
        const ResolvedService service{self->id_, dotted(address), port, textOf(host),
                                      txtRecordOf(txt)};
        later(self, [self, service] {
            if (self->isRunning()) Q_EMIT self->resolved(service);
        });
    }
};

ServiceResolver::ServiceResolver(AvahiSession& session, ServiceId id, Announcement announcement,
                                 Address wanted)
    : QObject(&session), id_(std::move(id)), announcement_(std::move(announcement)) {
    if (!session.client_) return;
    resolver_.reset(avahi_service_resolver_new(
        session.client_.get(), announcement_.interface, announcement_.protocol,
        announcement_.name.c_str(), announcement_.type.c_str(), announcement_.domain.c_str(),
        AVAHI_PROTO_INET, wanted == Address::None ? AVAHI_LOOKUP_NO_ADDRESS : AvahiLookupFlags{},
        Callbacks::resolver, this));
}

void ServiceResolver::release(ServiceResolver* resolver) {
    resolver->resolver_.reset();
    resolver->deleteLater();
}

}  // namespace tintoral
