#pragma once

#include "Platform/Desktop/StatusBar.h"

#include <QDBusConnection>

namespace velloren {

/// The status bar of desktops that follow the StatusNotifierItem protocol. An item registers with the bar's
/// watcher whenever there is a new one, or a new host, so it appears as soon as a panel does and stays
/// through every restart of it.
class StatusNotifierBar final : public StatusBar {
  public:
    /// `itemId` and `itemTitle` are what hosts know the item by; `bus` is the session bus.
    StatusNotifierBar(QDBusConnection bus, QString itemId, QString itemTitle);

    [[nodiscard]] std::unique_ptr<StatusItem> statusItemWithLength(double length) override;

  private:
    QDBusConnection bus;
    QString itemId;
    QString itemTitle;
    int itemsMade = 0;
};

} // namespace velloren
