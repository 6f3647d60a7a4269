#pragma once

#include "Platform/Link/Link.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>

#include <memory>

namespace velloren {

/// Keeps the main app's endpoint in the registry: from `start` on, again whenever the registry was started
/// afresh, and no longer once it ends. Main thread only.
class Registration final : public QObject {
    Q_OBJECT

  public:
    Registration(Link& link, const QDBusConnection& bus, Endpoint endpoint);
    ~Registration() override;

    void start();

  private:
    void registerEndpoint();

    Link& link;
    Endpoint endpoint;
    QDBusServiceWatcher registryOwner;
    bool started = false;
};

} // namespace velloren
