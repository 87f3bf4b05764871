#include "support/avahi_publisher.h"

#include <avahi-common/address.h>
#include <avahi-common/error.h>
#include <avahi-common/strlst.h>

#include <stdexcept>
#include <thread>

namespace tintoral::test {
namespace {

void check(int result, const std::string& what) {
    if (result < 0) throw std::runtime_error(what + ": " + avahi_strerror(result));
}

// The library keeps its lists from the last string to the first.
struct StringList {
    explicit StringList(const std::vector<std::string>& strings) {
        for (const std::string& string : strings)
            list = avahi_string_list_add(list, string.c_str());
    }
    ~StringList() { avahi_string_list_free(list); }
    StringList(const StringList&) = delete;
    StringList& operator=(const StringList&) = delete;

    AvahiStringList* list = nullptr;
};

void addService(AvahiEntryGroup* group, const PublishedService& service) {
    const StringList txt(service.txt);
    check(avahi_entry_group_add_service_strlst(group, AVAHI_IF_UNSPEC, service.protocol, {},
                                               service.name.c_str(), service.type.c_str(), "local",
                                               service.host.c_str(), service.port, txt.list),
          service.name);
}

}  // namespace

AvahiPublisher::AvahiPublisher() : poll_(avahi_simple_poll_new()) {
    using namespace std::chrono_literals;
    constexpr int kAttempts = 200;
    for (int i = 0; i < kAttempts; ++i) {
        connect();
        if (client_ && avahi_client_get_state(client_.get()) == AVAHI_CLIENT_S_RUNNING) return;
        std::this_thread::sleep_for(50ms);
    }
    throw std::runtime_error("the Avahi daemon does not come up");
}

AvahiPublisher::~AvahiPublisher() {
    groups_.clear();
}

void AvahiPublisher::connect() {
    client_.reset(avahi_client_new(
        avahi_simple_poll_get(poll_.get()), {}, [](AvahiClient*, AvahiClientState, void*) {},
        nullptr, nullptr));
}

AvahiEntryGroup* AvahiPublisher::newGroup(const std::string& label) {
    Group& group = groups_[label];
    group.reset(avahi_entry_group_new(
        client_.get(), [](AvahiEntryGroup*, AvahiEntryGroupState, void*) {}, nullptr));
    if (!group) throw std::runtime_error("no entry group");
    return group.get();
}

void AvahiPublisher::publishAddress(const std::string& label, const std::string& host,
                                    const std::string& address) {
    AvahiAddress parsed{};
    avahi_address_parse(address.c_str(), AVAHI_PROTO_UNSPEC, &parsed);
    AvahiEntryGroup* group = newGroup(label);
    check(avahi_entry_group_add_address(group, AVAHI_IF_UNSPEC, AVAHI_PROTO_UNSPEC,
                                        AVAHI_PUBLISH_NO_REVERSE, host.c_str(), &parsed),
          host);
    check(avahi_entry_group_commit(group), host);
}

void AvahiPublisher::publish(const std::string& label,
                             const std::vector<PublishedService>& services) {
    AvahiEntryGroup* group = newGroup(label);
    for (const PublishedService& service : services) addService(group, service);
    check(avahi_entry_group_commit(group), label);
}

void AvahiPublisher::changeTxt(const std::string& label, const PublishedService& service) {
    const StringList txt(service.txt);
    check(avahi_entry_group_update_service_txt_strlst(groups_.at(label).get(), AVAHI_IF_UNSPEC,
                                                      service.protocol, {}, service.name.c_str(),
                                                      service.type.c_str(), "local", txt.list),
          service.name);
}

}  // namespace tintoral::test
