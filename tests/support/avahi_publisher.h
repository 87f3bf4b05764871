// Announces services over the Avahi daemon, as printers and queues do, and changes and withdraws
// them. What the daemon refuses throws std::runtime_error.
#pragma once

#include <avahi-client/client.h>
#include <avahi-client/publish.h>
#include <avahi-common/simple-watch.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace tintoral::test {

struct PublishedService {
    std::string name;
    std::string type;  // without trailing dot
    std::uint16_t port = 9100;
    std::vector<std::string> txt{};
    std::string host = "printer1.local";
    AvahiProtocol protocol = AVAHI_PROTO_INET;  // over which it is announced
};

class AvahiPublisher {
  public:
    // Waits for the daemon, 10 s at most.
    AvahiPublisher();
    ~AvahiPublisher();  // withdraws everything
    AvahiPublisher(const AvahiPublisher&) = delete;
    AvahiPublisher& operator=(const AvahiPublisher&) = delete;

    // What is published under one label is withdrawn under it.
    void publishAddress(const std::string& label, const std::string& host,
                        const std::string& address);
    void publish(const std::string& label, const std::vector<PublishedService>& services);
    void withdraw(const std::string& label) { groups_.erase(label); }

    // Gives one published service another TXT record.
    void changeTxt(const std::string& label, const PublishedService& service);

  private:
    template <auto function>
    struct Deleter {
        template <typename T>
        void operator()(T* object) const {
            function(object);
        }
    };
    using Group = std::unique_ptr<AvahiEntryGroup, Deleter<avahi_entry_group_free>>;

    void connect();
    AvahiEntryGroup* newGroup(const std::string& label);

    // Never run: every call waits for its answer, and nobody looks at what comes unasked.
    std::unique_ptr<AvahiSimplePoll, Deleter<avahi_simple_poll_free>> poll_;
    std::unique_ptr<AvahiClient, Deleter<avahi_client_free>> client_;
    std::map<std::string, Group> groups_;
};

}  // namespace tintoral::test
