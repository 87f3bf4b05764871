// The loop of a thread as libavahi-client wants it: its watches and time-outs over Qt's notifiers
// and timers.
#pragma once

#include <avahi-common/watch.h>

#include <QObject>

namespace tintoral {

class QtAvahiPoll : public QObject {
  public:
    explicit QtAvahiPoll(QObject* parent);

    // Good for as long as this object lives, which owns all watches and time-outs made through it.
    const AvahiPoll* api() const { return &api_; }

  private:
    AvahiPoll api_{};
};

}  // namespace tintoral
