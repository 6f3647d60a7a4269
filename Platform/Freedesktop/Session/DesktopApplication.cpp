#include "Platform/Freedesktop/Session/DesktopApplication.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDeadlineTimer>

#include <chrono>
#include <thread>

namespace velloren {

namespace {

// Of the platform data of a call: nobody asked to see the application.
const QString bySessionKey = QStringLiteral("velloren-started-by-session");

constexpr std::chrono::seconds patience(10);
constexpr std::chrono::milliseconds pauseBetweenQuestions(20);

QString objectPath(const std::string& bundleIdentifier) {
    QString path = QStringLiteral("/") + QString::fromStdString(bundleIdentifier);
    return path.replace(QLatin1Char('.'), QLatin1Char('/')).replace(QLatin1Char('-'), QLatin1Char('_'));
}

QDBusMessage callTo(const QString& owner, const std::string& bundleIdentifier, StartedBy startedBy) {
    auto call = QDBusMessage::createMethodCall(owner, objectPath(bundleIdentifier),
                                               QStringLiteral("org.freedesktop.Application"),
                                               QStringLiteral("Activate"));
    QVariantMap platformData;
    if (startedBy == StartedBy::Session)
        platformData.insert(bySessionKey, true);
    call.setArguments({platformData});
    return call;
}

bool answers(const QDBusConnection& bus, const QDBusMessage& call, const QDeadlineTimer& limit) {
    const int timeout = int(limit.remainingTime());
    return bus.call(call, QDBus::Block, timeout).type() == QDBusMessage::ReplyMessage;
}

} // namespace

DesktopApplication::DesktopApplication(QDBusConnection bus, const std::string& bundleIdentifier,
                                       Handler startedAgain)
    : bus(std::move(bus)), path(objectPath(bundleIdentifier)), startedAgain(std::move(startedAgain)) {
    this->bus.registerObject(path, this, QDBusConnection::ExportAllSlots);
}

DesktopApplication::~DesktopApplication() {
    bus.unregisterObject(path);
}

void DesktopApplication::Activate(const QVariantMap& platformData) {
    wasStartedAgain(platformData.contains(bySessionKey) ? StartedBy::Session : StartedBy::User);
}

void DesktopApplication::Open(const QStringList&, const QVariantMap&) {
    wasStartedAgain(StartedBy::User);
}

void DesktopApplication::ActivateAction(const QString&, const QVariantList&, const QVariantMap&) {
    wasStartedAgain(StartedBy::User);
}

void DesktopApplication::wasStartedAgain(StartedBy by) {
    if (!startedAgain(by))
        sendErrorReply(QDBusError::Failed, QStringLiteral("the application is about to end"));
}

OtherInstance activateOtherInstance(const QDBusConnection& bus, const std::string& bundleIdentifier,
                                    StartedBy startedBy) {
    const QDeadlineTimer limit(patience);
    do {
        const QDBusReply<QString> owner =
            bus.interface()->serviceOwner(QString::fromStdString(bundleIdentifier));
        if (!owner.isValid() || owner.value() == bus.baseService())
            return OtherInstance::Gone;
        if (answers(bus, callTo(owner.value(), bundleIdentifier, startedBy), limit))
            return OtherInstance::Activated;
        std::this_thread::sleep_for(pauseBetweenQuestions);
    } while (!limit.hasExpired());
    return OtherInstance::Silent;
}

} // namespace velloren
