#pragma once

#include <QDBusConnection>
#include <QString>

class QObject;

namespace velloren {

/// A signal of the session bus, from whoever owns `service`; from anyone where that is empty.
struct BusSignal {
    QString service;
    QString path;
    QString interface;
    QString name;
    /// Only signals whose first argument is this; any where it is null.
    QString firstArgument = {};
};

/// Has `slot` (from SLOT) of `receiver` run at each such signal, for as long as the receiver lives. Arguments
/// of type variant come as QDBusVariant. A slot that cannot take the signal stops the process, as nothing
/// would ever be heard; without a connection there is nothing to hear. Main thread only.
void followSignal(QDBusConnection bus, const BusSignal& signal, QObject& receiver, const char* slot);

} // namespace velloren
