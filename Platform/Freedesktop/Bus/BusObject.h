#pragma once

#include <QDBusConnection>
#include <QString>

namespace velloren {

/// Lets others on the bus call the slots, read the properties and hear the signals of `object` at `path`,
/// until it is unregistered there or ends. A path where another object stands stops the process; without a
/// connection there is nobody to call it. Main thread only.
void exportObject(QDBusConnection bus, const QString& path, QObject& object);

} // namespace velloren
