#include "Platform/Freedesktop/Tray/StatusNotifierBar.h"

#include "Platform/Freedesktop/Tray/StatusNotifierItem.h"

#include <QCoreApplication>

namespace velloren {

namespace {

constexpr int barHeight = 22;

}

StatusNotifierBar::StatusNotifierBar(QDBusConnection bus, QString itemId, QString itemTitle)
    : bus(std::move(bus)), itemId(std::move(itemId)), itemTitle(std::move(itemTitle)) {}

std::unique_ptr<StatusItem> StatusNotifierBar::statusItemWithLength(double length) {
    const QString serviceName = QStringLiteral("org.kde.StatusNotifierItem-%1-%2")
                                    .arg(QCoreApplication::applicationPid())
                                    .arg(++itemsMade);
    return std::make_unique<StatusNotifierItem>(
        bus, StatusNotifierItem::Identity{itemId, itemTitle, serviceName}, QSize(qRound(length), barHeight));
}

} // namespace velloren
