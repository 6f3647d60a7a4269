#pragma once

#include <QDBusConnection>
#include <QObject>

#include <functional>

namespace velloren {

/// Tells that this process's connection to a bus has ended, for as long as this lives. Main thread only.
class BusLoss final : public QObject {
    Q_OBJECT

  public:
    BusLoss(const QDBusConnection& bus, std::function<void()> lost);

  private Q_SLOTS:
    void disconnected();

  private:
    std::function<void()> lost;
};

} // namespace velloren
