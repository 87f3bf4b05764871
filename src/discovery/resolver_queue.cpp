#include "discovery/resolver_queue.h"

#include <algorithm>

namespace tintoral {

using Action = ResolverQueue::Step::Action;

void ResolverQueue::add(const ServiceId& id, Time now) {
    remove(id);
    waiting_.push_back({id, now + kTimeOut, now});
}

void ResolverQueue::remove(const ServiceId& id) {
    for (Entries* entries : {&waiting_, &resolving_, &resolved_})
        entries->remove_if([&](const Entry& entry) { return entry.id == id; });
}

void ResolverQueue::clear() {
    for (Entries* entries : {&waiting_, &resolving_, &resolved_}) entries->clear();
}

void ResolverQueue::resolved(const ServiceId& id) {
    const auto entry = std::ranges::find(resolving_, id, &Entry::id);
    if (entry != resolving_.end()) resolved_.splice(resolved_.end(), resolving_, entry);
}

void ResolverQueue::failed(const ServiceId& id, Time now) {
    const auto entry = std::ranges::find(resolving_, id, &Entry::id);
    if (entry == resolving_.end()) return;
    entry->since = now + kRest;
    waiting_.splice(waiting_.end(), resolving_, entry);
}

std::optional<ResolverQueue::Step> ResolverQueue::next(Time now) {
    if (auto step = endOverdue(now)) return step;
    const auto due =
        std::ranges::find_if(waiting_, [&](const Entry& entry) { return entry.since <= now; });
    if (due == waiting_.end()) return std::nullopt;
    if (resolving_.size() + resolved_.size() >= kMostResolvers) return makeRoom(now);
    due->since = now;
    resolving_.splice(resolving_.end(), waiting_, due);
    return Step{Action::Start, resolving_.back().id};
}

std::optional<ResolverQueue::Step> ResolverQueue::endOverdue(Time now) {
    const auto isOver = [&](const Entry& entry) { return entry.end <= now; };
    waiting_.remove_if(isOver);
    const auto entry = std::ranges::find_if(resolving_, isOver);
    if (entry == resolving_.end()) return std::nullopt;
    const Step step{Action::Stop, entry->id};
    resolving_.erase(entry);
    return step;
}

std::optional<ResolverQueue::Step> ResolverQueue::makeRoom(Time now) {
    if (!resolved_.empty()) {
        const Step step{Action::Stop, resolved_.front().id};
        resolved_.pop_front();
        return step;
    }
    if (now - resolving_.front().since < kTurn) return std::nullopt;
    waiting_.splice(waiting_.end(), resolving_, resolving_.begin());
    return Step{Action::Stop, waiting_.back().id};
}

}  // namespace tintoral
