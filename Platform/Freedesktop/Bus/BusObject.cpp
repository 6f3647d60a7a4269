#include "Platform/Freedesktop/Bus/BusObject.h"

#include "Platform/Foundation/FatalError.h"

namespace velloren {

void exportObject(QDBusConnection bus, const QString& path, QObject& object) {
    constexpr auto all = QDBusConnection::ExportAllProperties | QDBusConnection::ExportAllSlots |
                         QDBusConnection::ExportAllSignals;
    if (!bus.registerObject(path, &object, all) && bus.isConnected())
        fatalError("another object is on the bus at " + path.toStdString());
}

} // namespace velloren
