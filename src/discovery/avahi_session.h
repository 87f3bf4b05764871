// The Avahi daemon, which does multicast DNS (RFC 6762) and service discovery (RFC 6763) for every
// program of the computer, over the system's message bus.
//
// No daemon or no bus is no error: nothing is found, and when one comes up later (again) it is
// used. Every signal comes from the main loop, never from inside a callback of the library, so
// whoever receives it may do anything, also wait in a loop of its own.
#pragma once

#include <avahi-client/client.h>
#include <avahi-client/lookup.h>

#include <QObject>
#include <QTimer>
#include <array>
#include <compare>
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
    AvahiSession();
    ~AvahiSession() override;

    // Looks for the daemon and then for domains to browse; signals follow.
    void start();

    // Browses the four service types of printers in `domain`, instead of what was browsed before.
    void browse(const std::string& domain);

  Q_SIGNALS:
    // The first domain that the daemon reports; its own one when it reports none.
    void domainFound(const std::string& domain);
    void serviceFound(const tintoral::Announcement& announcement);
    void serviceRemoved(const tintoral::Announcement& announcement);
    // All that is known by now of a type (without trailing dot) has been reported.
    void allForNow(const std::string& type);
    // The daemon went. Resolvers must be released when the receiver returns.
    void lost();

  private:
    friend class ServiceResolver;
    struct Callbacks;

    void connectToDaemon();
    void handleState(const AvahiClient* client, AvahiClientState state);
    void disconnectFromDaemon();
    void searchDomain();
    void useDomain(const std::string& domain);
    std::string ownDomain() const;

    QtAvahiPoll poll_;
    QTimer retry_;
    AvahiClientPtr client_;
    bool searchedDomain_ = false;
    AvahiDomainBrowserPtr domainBrowser_;
    std::array<AvahiServiceBrowserPtr, 4> serviceBrowsers_;
};

// Resolves one service, and reports again whenever its address, port, host or TXT record changes.
// Its user gives it up with release().
class ServiceResolver : public QObject {
    Q_OBJECT

  public:
    enum class Address { IPv4, None };

    // With `Address::None` a service is resolved without asking for its address, so also when it
    // has no IPv4 address.
    ServiceResolver(AvahiSession& session, ServiceId id, Announcement announcement, Address wanted);

    const Announcement& announcement() const { return announcement_; }

    // False when the daemon did not take it, and after release().
    bool isRunning() const { return resolver_ != nullptr; }

    // Stops at once; the object deletes itself from the main loop.
    static void release(ServiceResolver* resolver);

  Q_SIGNALS:
    void resolved(const tintoral::ResolvedService& service);
    void failed(const tintoral::ServiceId& id);

  private:
    struct Callbacks;

    ServiceId id_;
    Announcement announcement_;
    AvahiServiceResolverPtr resolver_;
};

struct ReleaseResolver {
    void operator()(ServiceResolver* resolver) const { ServiceResolver::release(resolver); }
};
using ServiceResolverPtr = std::unique_ptr<ServiceResolver, ReleaseResolver>;

}  // namespace tintoral
