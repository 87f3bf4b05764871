#include "app/notification_center.h"

namespace tintoral {

NotificationCenter& NotificationCenter::defaultCenter() {
    static NotificationCenter center;
    return center;
}

}  // namespace tintoral
