#include "Platform/Freedesktop/Session/BusLoss.h"

#include "Platform/Freedesktop/Bus/BusSignal.h"

#include <utility>

namespace velloren {

BusLoss::BusLoss(const QDBusConnection& bus, std::function<void()> lost) : lost(std::move(lost)) {
    followSignal(bus,
                 {QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                  QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected")},
                 *this, SLOT(disconnected()));
}

void BusLoss::disconnected() {
    lost();
}

} // namespace velloren
