#include "discovery/avahi_poll.h"

#include <poll.h>

#include <QSocketNotifier>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <limits>
#include <memory>

// The two types are for the main loop to define, in the library's own namespace. An object may be
// freed by its own callback: it falls silent at once and is deleted from the loop.
struct AvahiWatch : QObject {
    AvahiWatch(QObject* owner, int descriptor, AvahiWatchCallback function, void* userData)
        : QObject(owner),
          fd(descriptor),
          callback(function),
          data(userData),
          reading(descriptor, QSocketNotifier::Read),
          writing(descriptor, QSocketNotifier::Write) {
        connect(&reading, &QSocketNotifier::activated, this, [this] { activated(); });
        connect(&writing, &QSocketNotifier::activated, this, [this] { activated(); });
    }

    void watchFor(int events) {
        wanted = static_cast<short>(events);
        reading.setEnabled((events & (AVAHI_WATCH_IN | AVAHI_WATCH_HUP | AVAHI_WATCH_ERR)) != 0);
        writing.setEnabled((events & AVAHI_WATCH_OUT) != 0);
    }

    // Qt does not tell a hang-up or an error from data, so the descriptor is asked.
    void activated() {
        pollfd descriptor{fd, wanted, 0};
        if (::poll(&descriptor, 1, 0) <= 0) return;
        happened = static_cast<AvahiWatchEvent>(descriptor.revents);
        callback(this, fd, happened, data);
        happened = {};
    }

    int fd;
    AvahiWatchCallback callback;
    void* data;
    short wanted = 0;
    AvahiWatchEvent happened{};
    QSocketNotifier reading;
    QSocketNotifier writing;
};

struct AvahiTimeout : QObject {
    AvahiTimeout(QObject* owner, AvahiTimeoutCallback function, void* userData)
        : QObject(owner), callback(function), data(userData) {
        timer.setSingleShot(true);
        connect(&timer, &QTimer::timeout, this, [this] { callback(this, data); });
    }

    AvahiTimeoutCallback callback;
    void* data;
    QTimer timer;
};

namespace tintoral {
namespace {

using namespace std::chrono;

// From now to a moment of the wall clock, rounded up so that the callback never comes early.
milliseconds timeUntil(const timeval& moment) {
    const auto then = seconds(moment.tv_sec) + microseconds(moment.tv_usec);
    const auto left = ceil<milliseconds>(then - system_clock::now().time_since_epoch());
    constexpr milliseconds kLongest{std::numeric_limits<int>::max()};
    return std::clamp(left, milliseconds{0}, kLongest);
}

void updateWatch(AvahiWatch* watch, AvahiWatchEvent events) {
    watch->watchFor(events);
}

AvahiWatch* newWatch(const AvahiPoll* api, int fd, AvahiWatchEvent events,
                     AvahiWatchCallback callback, void* data) {
    auto* owner = static_cast<QObject*>(api->userdata);
    auto watch = std::make_unique<AvahiWatch>(owner, fd, callback, data);
    watch->watchFor(events);
    return watch.release();  // the owner's
}

AvahiWatchEvent watchEvents(AvahiWatch* watch) {
    return watch->happened;
}

void freeWatch(AvahiWatch* watch) {
    watch->watchFor(0);
    watch->deleteLater();
}

void updateTimeout(AvahiTimeout* timeout, const timeval* moment) {
    if (moment) {
        timeout->timer.start(timeUntil(*moment));
    } else {
        timeout->timer.stop();
    }
}

AvahiTimeout* newTimeout(const AvahiPoll* api, const timeval* moment, AvahiTimeoutCallback callback,
                         void* data) {
    auto* owner = static_cast<QObject*>(api->userdata);
    auto timeout = std::make_unique<AvahiTimeout>(owner, callback, data);
    updateTimeout(timeout.get(), moment);
    return timeout.release();  // the owner's
}

void freeTimeout(AvahiTimeout* timeout) {
    timeout->timer.stop();
    timeout->deleteLater();
}

}  // namespace

QtAvahiPoll::QtAvahiPoll(QObject* parent)
    : QObject(parent), api_{this,      newWatch,   updateWatch,   watchEvents,
                            freeWatch, newTimeout, updateTimeout, freeTimeout} {}

}  // namespace tintoral
