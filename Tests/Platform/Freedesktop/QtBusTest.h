#pragma once

#include "Tests/Support/PrivateBus.h"
#include "Tests/Support/QtTest.h"

#include <QDBusConnection>
#include <QStringList>

namespace velloren {

/// A session bus, and connections to it that end with the test.
class QtBusTest : public QtTest {
  protected:
    ~QtBusTest() override {
        for (const QString& name : names)
            QDBusConnection::disconnectFromBus(name);
    }

    QDBusConnection connection(const QString& name) {
        names.append(name);
        return QDBusConnection::connectToBus(QDBusConnection::SessionBus, name);
    }

    PrivateBus bus;

  private:
    QStringList names;
};

} // namespace velloren
