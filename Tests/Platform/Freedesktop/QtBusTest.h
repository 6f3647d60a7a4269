#pragma once

#include "Tests/Support/PrivateBus.h"
#include "Tests/Support/QtTest.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QStringList>

namespace velloren {

inline QVariant boxed(const QVariant& value) {
    return QVariant::fromValue(QDBusVariant(value));
}

/// A service of the session or the system that answers what the test likes, and nothing where that is
/// invalid.
class FakeService final : public QDBusVirtualObject {
  public:
    using Answers = std::function<QVariant(const QDBusMessage&)>;

    FakeService(const QDBusConnection& bus, Answers answers) : connection(bus), answers(std::move(answers)) {}

    void start(const QString& name, const QString& path) {
        connection.registerVirtualObject(path, this, QDBusConnection::SubPath);
        connection.interface()->registerService(name, QDBusConnectionInterface::ReplaceExistingService,
                                                QDBusConnectionInterface::AllowReplacement);
    }

    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& call, const QDBusConnection& caller) override {
        const QVariant answer = answers(call);
        return answer.isValid() && caller.send(call.createReply(answer));
    }

    void send(const QString& path, const QString& interface, const char* signal,
              const QVariantList& arguments = {}) {
        auto message = QDBusMessage::createSignal(path, interface, signal);
        message.setArguments(arguments);
        connection.send(message);
    }

  private:
    QDBusConnection connection;
    Answers answers;
};

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
