// Whose turn it is to be resolved. Pure: it keeps the order, BonjourBrowser keeps the resolvers.
//
// A service waits, is being resolved, and then keeps its resolver, which reports changes of the TXT
// record, until another service needs the place. A service that does not answer in its turn gives
// way to those that wait and has further turns, until its time is over; so no number of silent
// services keeps others from being resolved.
#pragma once

#include <chrono>
#include <list>
#include <optional>

#include "discovery/service_record.h"

namespace tintoral {

class ResolverQueue {
  public:
    using Time = std::chrono::steady_clock::time_point;
    static constexpr std::size_t kMostResolvers = 100;  // at the same time
    static constexpr std::chrono::seconds kTimeOut{800};
    static constexpr std::chrono::seconds kTurn{3};  // when others wait
    static constexpr std::chrono::seconds kRest{1};  // after a failure

    // The service waits for its (first or another) turn, with all of its time. Whatever else was
    // known about it is forgotten, and its resolver is no longer counted.
    void add(const ServiceId& id, Time now);
    void remove(const ServiceId& id);
    void clear();

    // Of a service that is being resolved.
    void resolved(const ServiceId& id);
    void failed(const ServiceId& id, Time now);

    // What to do next, one step at a time: give a service a resolver or take away the one it has.
    // Nothing when there is nothing to do now.
    struct Step {
        enum class Action { Start, Stop };
        Action action;
        ServiceId id;
    };
    std::optional<Step> next(Time now);

    // Whether time alone can make another step due.
    bool isBusy() const { return !waiting_.empty() || !resolving_.empty(); }

  private:
    struct Entry {
        ServiceId id;
        Time end;    // of all its time
        Time since;  // being resolved: of its turn; waiting: not before
    };
    using Entries = std::list<Entry>;

    std::optional<Step> endOverdue(Time now);
    std::optional<Step> makeRoom(Time now);

    Entries waiting_;
    Entries resolving_;  // the longest turn first
    Entries resolved_;   // the longest resolved first
};

}  // namespace tintoral
