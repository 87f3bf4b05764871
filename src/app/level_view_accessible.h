// What assistive technology sees of the level view: a group that holds a progress bar for each ink,
// with the ink's name, its level in words and, where it is known, as a number from 0 to 100.
#pragma once

#include <QAccessible>
#include <QString>

class QObject;

namespace tintoral {

// For QAccessible::installFactory(). Null for any other object than a level view; Qt owns the
// result.
QAccessibleInterface* levelViewAccessible(const QString& className, QObject* object);

}  // namespace tintoral
