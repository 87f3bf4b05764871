// The Avahi daemon, which does multicast DNS (RFC 6762) and service discovery (RFC 6763) for every
// program of the computer, over the system's message bus.
//
// No daemon or no bus is no error: nothing is found, and when one comes up later (again) it is
// used.
//
// Each call of the library waits for the daemon, which under a flood of announcements answers after
// seconds. So the session lives in a thread of its own: its functions are invoked in that thread,
// and its signals are queued for the main loop. Nothing is shared between the two.
#pragma once

#include <avahi-client/client.h>
#include <avahi-client/lookup.h>

#include <QObject>
#include <QTimer>
#include <array>
#include <compare>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "discovery/avahi_poll.h"
#include "discovery/service_record.h"

namespace tintoral {

// One announcement of a service; one service may be announced over several interfaces and
// protocols. The texts are as the daemon gives them.
struct Announcement {
    AvahiIfIndex interface;
    AvahiProtocol protocol;
    std::string name;
    std::string type;  // without trailing dot
    std::string domain;

    // clang-tidy 14 takes the comparison of this for a null pointer.
    // NOLINTNEXTLINE(modernize-use-nullptr)
    friend auto operator<=>(const Announcement&, const Announcement&) = default;
};

// The library's objects; a client must outlive all others made with it.
template <auto function>
struct AvahiDeleter {
    template <typename T>
    void operator()(T* object) const {
        function(object);
    }
};
using AvahiClientPtr = std::unique_ptr<AvahiClient, AvahiDeleter<avahi_client_free>>;
using AvahiDomainBrowserPtr =
    std::unique_ptr<AvahiDomainBrowser, AvahiDeleter<avahi_domain_browser_free>>;
using AvahiServiceBrowserPtr =
    std::unique_ptr<AvahiServiceBrowser, AvahiDeleter<avahi_service_browser_free>>;
using AvahiServiceResolverPtr =
    std::unique_ptr<AvahiServiceResolver, AvahiDeleter<avahi_service_resolver_free>>;

class AvahiSession : public QObject {
    Q_OBJECT

  public:
    // Names one resolver for whoever asked for it. Never used again.
    using Ticket = std::uint64_t;
    enum class Address { IPv4, None };

    AvahiSession();
    ~AvahiSession() override;

    // Looks for the daemon and then for domains to browse; signals follow.
    void start();

    // Browses the four service types of printers in `domain`, instead of what was browsed before.
    void browse(const std::string& domain);

    // Resolves one service, and reports again whenever its address, port, host or TXT record
    // changes, until release() or lost(). With `Address::None` it is resolved without asking for
    // its address, so also when it has no IPv4 address.
    void resolve(Ticket ticket, const ServiceId& id, const Announcement& announcement,
                 Address wanted);
    void release(Ticket ticket);

  Q_SIGNALS:
    // The first domain that the daemon reports; its own one when it reports none.
    void domainFound(const std::string& domain);
    void serviceFound(const tintoral::Announcement& announcement);
    void serviceRemoved(const tintoral::Announcement& announcement);
    // All that is known by now of a type (without trailing dot) has been reported.
    void allForNow(const std::string& type);
    // The daemon went, and with it everything that is resolved.
    void lost();

    // The last resolve() is done with the daemon, whatever came of it.
    void resolverStarted();
    // May still come after release().
    void resolved(tintoral::AvahiSession::Ticket ticket, const tintoral::ResolvedService& service);
    void failed(tintoral::AvahiSession::Ticket ticket, const tintoral::ServiceId& id);

  private:
    struct Callbacks;
    struct Resolver;

    void connectToDaemon();
    void handleState(const AvahiClient* client, AvahiClientState state);
    void disconnectFromDaemon();
    void searchDomain();
    void useDomain(const std::string& domain);
    std::string ownDomain() const;

    QtAvahiPoll poll_{this};
    QTimer retry_{this};
    AvahiClientPtr client_;
    bool searchedDomain_ = false;
    AvahiDomainBrowserPtr domainBrowser_;
    std::array<AvahiServiceBrowserPtr, 4> serviceBrowsers_;
    std::map<Ticket, std::unique_ptr<Resolver>> resolvers_;
};

}  // namespace tintoral
