#include "Platform/Freedesktop/Session/DesktopApplication.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>

namespace velloren {

namespace {

// Of the platform data of a call: nobody asked to see the application.
const QString bySessionKey = QStringLiteral("velloren-started-by-session");

constexpr int answerTimeout = 5000; // milliseconds

QString objectPath(const std::string& bundleIdentifier) {
    QString path = QStringLiteral("/") + QString::fromStdString(bundleIdentifier);
    return path.replace(QLatin1Char('.'), QLatin1Char('/')).replace(QLatin1Char('-'), QLatin1Char('_'));
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
    startedAgain(platformData.contains(bySessionKey) ? StartedBy::Session : StartedBy::User);
}

void DesktopApplication::Open(const QStringList&, const QVariantMap&) {
    startedAgain(StartedBy::User);
}

void DesktopApplication::ActivateAction(const QString&, const QVariantList&, const QVariantMap&) {
    startedAgain(StartedBy::User);
}

OtherInstance activateOtherInstance(const QDBusConnection& bus, const std::string& bundleIdentifier,
                                    StartedBy startedBy) {
    const QDBusReply<QString> owner = bus.interface()->serviceOwner(QString::fromStdString(bundleIdentifier));
    if (!owner.isValid() || owner.value() == bus.baseService())
        return OtherInstance::Gone;
    auto call = QDBusMessage::createMethodCall(owner.value(), objectPath(bundleIdentifier),
                                               QStringLiteral("org.freedesktop.Application"),
                                               QStringLiteral("Activate"));
    QVariantMap platformData;
    if (startedBy == StartedBy::Session)
        platformData.insert(bySessionKey, true);
    call.setArguments({platformData});
    const QDBusMessage answer = bus.call(call, QDBus::Block, answerTimeout);
    return answer.type() == QDBusMessage::ReplyMessage ? OtherInstance::Activated : OtherInstance::Silent;
}

} // namespace velloren
