#include "Platform/Freedesktop/Session/DesktopApplication.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>

namespace velloren {

namespace {

constexpr int answerTimeout = 5000; // milliseconds

QString objectPath(const std::string& bundleIdentifier) {
    QString path = QStringLiteral("/") + QString::fromStdString(bundleIdentifier);
    return path.replace(QLatin1Char('.'), QLatin1Char('/')).replace(QLatin1Char('-'), QLatin1Char('_'));
}

} // namespace

DesktopApplication::DesktopApplication(QDBusConnection bus, const std::string& bundleIdentifier,
                                       std::function<void()> activated)
    : bus(std::move(bus)), path(objectPath(bundleIdentifier)), activated(std::move(activated)) {
    this->bus.registerObject(path, this, QDBusConnection::ExportAllSlots);
}

DesktopApplication::~DesktopApplication() {
    bus.unregisterObject(path);
}

void DesktopApplication::Activate(const QVariantMap&) {
    activated();
}

void DesktopApplication::Open(const QStringList&, const QVariantMap&) {
    activated();
}

void DesktopApplication::ActivateAction(const QString&, const QVariantList&, const QVariantMap&) {
    activated();
}

OtherInstance activateOtherInstance(const QDBusConnection& bus, const std::string& bundleIdentifier) {
    const QDBusReply<QString> owner = bus.interface()->serviceOwner(QString::fromStdString(bundleIdentifier));
    if (!owner.isValid() || owner.value() == bus.baseService())
        return OtherInstance::Gone;
    auto call = QDBusMessage::createMethodCall(owner.value(), objectPath(bundleIdentifier),
                                               QStringLiteral("org.freedesktop.Application"),
                                               QStringLiteral("Activate"));
    call.setArguments({QVariantMap()});
    const QDBusMessage answer = bus.call(call, QDBus::Block, answerTimeout);
    return answer.type() == QDBusMessage::ReplyMessage ? OtherInstance::Activated : OtherInstance::Silent;
}

} // namespace velloren
