#include "Platform/Freedesktop/Session/SingleInstance.h"

#include "Platform/Freedesktop/Bus/BusObject.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDeadlineTimer>

#include <chrono>
#include <thread>
#include <utility>

namespace velloren {

namespace {

// Of the platform data of a call: nobody asked to see the application.
const QString bySessionKey = QStringLiteral("velloren-started-by-session");

constexpr std::chrono::seconds patience(10);
constexpr std::chrono::milliseconds pauseBetweenQuestions(20);

QString pathOf(QString name) {
    name.replace(QLatin1Char('.'), QLatin1Char('/')).replace(QLatin1Char('-'), QLatin1Char('_'));
    return QStringLiteral("/") + name;
}

} // namespace

std::optional<InstanceRank> announceRunning(const QDBusConnection& bus, const std::string& bundleIdentifier) {
    const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> reply = bus.interface()->registerService(
        QString::fromStdString(bundleIdentifier), QDBusConnectionInterface::QueueService);
    if (!reply.isValid() || reply.value() == QDBusConnectionInterface::ServiceNotRegistered)
        return std::nullopt;
    const bool waits = reply.value() == QDBusConnectionInterface::ServiceQueued;
    return waits ? InstanceRank::Later : InstanceRank::First;
}

SingleInstance::SingleInstance(QDBusConnection bus, const std::string& bundleIdentifier, Handler startedAgain)
    : bus(std::move(bus)), name(QString::fromStdString(bundleIdentifier)), path(pathOf(name)),
      startedAgain(std::move(startedAgain)) {
    exportObject(this->bus, path, *this);
}

SingleInstance::~SingleInstance() {
    bus.unregisterObject(path);
}

SingleInstance::Outcome SingleInstance::start(StartedBy startedBy) {
    const auto rank = announceRunning(bus, name.toStdString());
    if (!rank)
        return Outcome::Refused;
    return rank == InstanceRank::First ? Outcome::Stays : activateFirst(startedBy);
}

SingleInstance::Outcome SingleInstance::activateFirst(StartedBy startedBy) {
    const QDeadlineTimer limit(patience);
    do {
        const QDBusReply<QString> owner = bus.interface()->serviceOwner(name);
        if (!owner.isValid() || owner.value() == bus.baseService())
            return Outcome::Stays;
        auto call = QDBusMessage::createMethodCall(
            owner.value(), path, QStringLiteral("org.freedesktop.Application"), QStringLiteral("Activate"));
        call << (startedBy == StartedBy::Session ? QVariantMap{{bySessionKey, true}} : QVariantMap());
        const auto answer = bus.call(call, QDBus::Block, int(limit.remainingTime()));
        if (answer.type() == QDBusMessage::ReplyMessage)
            return Outcome::FirstActivated;
        std::this_thread::sleep_for(pauseBetweenQuestions);
    } while (!limit.hasExpired());
    return Outcome::FirstSilent;
}

void SingleInstance::Activate(const QVariantMap& platformData) {
    wasStartedAgain(platformData.contains(bySessionKey) ? StartedBy::Session : StartedBy::User);
}

void SingleInstance::Open(const QStringList&, const QVariantMap&) {
    wasStartedAgain(StartedBy::User);
}

void SingleInstance::ActivateAction(const QString&, const QVariantList&, const QVariantMap&) {
    wasStartedAgain(StartedBy::User);
}

void SingleInstance::wasStartedAgain(StartedBy by) {
    if (!startedAgain(by))
        sendErrorReply(QDBusError::Failed, QStringLiteral("the application is about to end"));
}

} // namespace velloren
