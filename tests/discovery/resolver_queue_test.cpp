#include "discovery/resolver_queue.h"

#include <gtest/gtest.h>

#include <set>

namespace tintoral {
namespace {

using std::chrono::seconds;
using Action = ResolverQueue::Step::Action;

constexpr std::size_t kMost = ResolverQueue::kMostResolvers;

ServiceId idOf(std::size_t i) {
    return {std::to_string(i), "_ipp._tcp."};
}

class Resolvers : public testing::Test {
  protected:
    void addServices(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) queue_.add(idOf(i), now_);
    }

    // Takes every step that is due, as BonjourBrowser does.
    void run(seconds passed = seconds(0)) {
        now_ += passed;
        while (const auto step = queue_.next(now_)) {
            if (step->action == Action::Start) {
                EXPECT_TRUE(running_.insert(step->id).second) << step->id.name;
            } else {
                EXPECT_EQ(running_.erase(step->id), 1U) << step->id.name;
            }
            ASSERT_LE(running_.size(), kMost);
        }
    }

    ResolverQueue queue_;
    ResolverQueue::Time now_{};
    std::set<ServiceId> running_;
};

TEST_F(Resolvers, SilentServicesGiveWayToThoseThatWait) {
    addServices(3 * kMost);
    run();
    EXPECT_TRUE(running_.contains(idOf(0)));
    EXPECT_EQ(running_.size(), kMost);
    queue_.add(idOf(9999), now_);
    for (int turn = 0; turn < 3; ++turn) run(ResolverQueue::kTurn);
    EXPECT_TRUE(running_.contains(idOf(9999)));
    EXPECT_TRUE(running_.contains(idOf(0))) << "turns come round";
    run(ResolverQueue::kTimeOut);
    EXPECT_TRUE(running_.empty());
    EXPECT_FALSE(queue_.isBusy());
}

TEST_F(Resolvers, AResolvedServiceKeepsItsResolverUntilItsPlaceIsNeeded) {
    addServices(kMost);
    run();
    for (std::size_t i = 0; i < kMost; ++i) queue_.resolved(idOf(i));
    EXPECT_FALSE(queue_.isBusy());
    run(ResolverQueue::kTimeOut);
    EXPECT_EQ(running_.size(), kMost);
    queue_.add(idOf(9999), now_);
    run();
    EXPECT_TRUE(running_.contains(idOf(9999)));
    EXPECT_FALSE(running_.contains(idOf(0)));
    EXPECT_TRUE(running_.contains(idOf(1)));
}

TEST_F(Resolvers, AFailedServiceRestsAndOneThatWentIsForgotten) {
    addServices(2);
    run();
    queue_.failed(idOf(0), now_);
    running_.erase(idOf(0));
    queue_.remove(idOf(1));
    running_.erase(idOf(1));
    run();
    EXPECT_TRUE(running_.empty());
    run(ResolverQueue::kRest);
    EXPECT_EQ(running_, std::set{idOf(0)});
    queue_.failed(idOf(0), now_);
    running_.clear();
    run(ResolverQueue::kTimeOut);
    EXPECT_TRUE(running_.empty());
    EXPECT_FALSE(queue_.isBusy());
}

}  // namespace
}  // namespace tintoral
