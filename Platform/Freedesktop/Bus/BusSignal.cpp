#include "Platform/Freedesktop/Bus/BusSignal.h"

#include "Platform/Foundation/FatalError.h"

#include <QDBusVariant>
#include <QObject>

namespace velloren {

void followSignal(QDBusConnection bus, const BusSignal& signal, QObject& receiver, const char* slot) {
    qRegisterMetaType<QDBusVariant>(); // slots name their types by text, and this one is not known by its
                                       // name
    const QStringList arguments =
        signal.firstArgument.isNull() ? QStringList() : QStringList(signal.firstArgument);
    const bool followed = bus.connect(signal.service, signal.path, signal.interface, signal.name, arguments,
                                      QString(), &receiver, slot);
    if (!followed && bus.isConnected())
        fatalError("the signal " + signal.name.toStdString() + " does not fit " + slot);
}

} // namespace velloren
