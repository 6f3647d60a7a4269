#include "Platform/Freedesktop/Tray/StatusNotifierItem.h"

#include "Platform/Desktop/GlobalEvents.h"
#include "Platform/Freedesktop/Bus/BusObject.h"
#include "Platform/Freedesktop/Bus/BusSignal.h"
#include "Platform/Freedesktop/Windowing/X11/X11Display.h"
#include "Platform/Views/WindowServer.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QtEndian>

#include <array>

namespace velloren {

namespace {

// Bars at twice the scale want 44, between the two 33.
constexpr std::array iconSides{16, 22, 24, 32, 33, 44, 48, 64};

// Panels have trays of both kinds, and offer the older one first when they start.
constexpr std::chrono::seconds patienceForHost(2);

const QString itemPath = QStringLiteral("/StatusNotifierItem");
const QString watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");

bool saysNobodyIsThere(const QDBusError& error) {
    return error.type() == QDBusError::ServiceUnknown ||
           error.name() == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner");
}

StatusNotifierPixmap pixmapOf(const QImage& image) {
    StatusNotifierPixmap pixmap{image.width(), image.height(), {}};
    const qsizetype count = qsizetype{image.width()} * image.height();
    pixmap.pixels.resize(count * qsizetype{sizeof(quint32)});
    qToBigEndian<quint32>(image.constBits(), count, pixmap.pixels.data());
    return pixmap;
}

} // namespace

StatusNotifierItem::StatusNotifierItem(const QDBusConnection& bus, Identity identity, QSize size)
    : bus(bus), identity(std::move(identity)), itemButton(size), menuOnBus(bus, menuPath.path(), menu()),
      legacyIcon(itemButton, this->identity.title.toStdString(),
                 [this](QPoint place) { pressed(place.x(), place.y()); }),
      barChanges([this] { lookAtBar(); }) {
    qDBusRegisterMetaType<StatusNotifierPixmap>();
    qDBusRegisterMetaType<StatusNotifierPixmaps>();
    qDBusRegisterMetaType<StatusNotifierToolTip>();

    itemButton.setDisplayHandler([this] { refreshIcon(); });
    hostMissing.setSingleShot(true);
    hostMissing.setInterval(patienceForHost);
    connect(&hostMissing, &QTimer::timeout, this, [this] {
        legacyIcon.setWanted(true);
        registerIfDue();
    });
    exportObject(this->bus, itemPath, *this);
    followWatcher();
    this->bus.registerService(
        this->identity.serviceName); // waits for the bus, and the watcher answers meanwhile
}

StatusNotifierItem::~StatusNotifierItem() {
    bus.unregisterObject(itemPath);
    // QDBusConnection would wait for the answer, and a bus that hangs gives none.
    auto release = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("ReleaseName"));
    release.setArguments({identity.serviceName});
    bus.send(release);
}

StatusNotifierPixmaps StatusNotifierItem::iconPixmap() {
    if (pixmaps.isEmpty()) {
        for (const int side : iconSides)
            pixmaps.append(pixmapOf(itemButton.picture(side)));
    }
    return pixmaps;
}

StatusNotifierToolTip StatusNotifierItem::toolTip() const {
    return {{}, {}, title(), {}};
}

void StatusNotifierItem::setToolTipAllowed(bool allowed) {
    if (std::exchange(toolTipAllowed, allowed) == allowed)
        return;
    Q_EMIT NewTitle(); // which hosts show in the place of a tool tip that is empty
    Q_EMIT NewToolTip();
}

void StatusNotifierItem::Activate(int x, int y) {
    pressed(x, y);
}

void StatusNotifierItem::ContextMenu(int x, int y) {
    pressed(x, y);
}

void StatusNotifierItem::SecondaryActivate(int, int) {}

void StatusNotifierItem::Scroll(int, const QString&) {}

void StatusNotifierItem::ProvideXdgActivationToken(const QString& token) {
    // On an X display the token is of no use, and GNOME shows the pointer busy until somebody uses it or
    // declines.
    if (x11::connection())
        sendErrorReply(QDBusError::UnknownMethod);
    else
        qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
}

void StatusNotifierItem::followWatcher() {
    watcherOwner.setConnection(bus);
    watcherOwner.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    watcherOwner.addWatchedService(watcherService);
    connect(&watcherOwner, &QDBusServiceWatcher::serviceOwnerChanged, this,
            &StatusNotifierItem::registerOnceHosted);
    const auto follow = [this](const char* signal, const char* slot) {
        followSignal(bus, {{}, watcherPath, watcherService, QString::fromLatin1(signal)}, *this, slot);
    };
    follow("StatusNotifierHostRegistered", SLOT(registerOnceHosted())); // hosts forget what they knew
    follow("StatusNotifierHostUnregistered", SLOT(askForHost()));
    registerOnceHosted();
}

/// Not at once: bars that are watcher and host lose what comes while the host looks around.
void StatusNotifierItem::registerOnceHosted() {
    registrationDue = true;
    hostMissing.stop(); // each watcher has the whole time for its host to come
    askForHost();
}

void StatusNotifierItem::registerIfDue() {
    if (!std::exchange(registrationDue, false))
        return;
    auto call = QDBusMessage::createMethodCall(watcherService, watcherPath, watcherService,
                                               QStringLiteral("RegisterStatusNotifierItem"));
    // Not by the item's name: GNOME's extension then watches the name as well, and forgets an item whose
    // properties come just when it hears of it.
    call << bus.baseService();
    call.setAutoStartService(false);
    bus.send(call);
    lookAtBar();
    barChanges.expect();
}

void StatusNotifierItem::askForHost() {
    auto question = QDBusMessage::createMethodCall(watcherService, watcherPath,
                                                   QStringLiteral("org.freedesktop.DBus.Properties"),
                                                   QStringLiteral("Get"));
    question << watcherService << QStringLiteral("IsStatusNotifierHostRegistered");
    question.setAutoStartService(false);
    hostAnswer =
        std::make_unique<QDBusPendingCallWatcher>(bus.asyncCall(question)); // the former one's is void
    connect(hostAnswer.get(), &QDBusPendingCallWatcher::finished, this,
            [this](QDBusPendingCallWatcher* answer) { hearOfHost(*answer); });
}

void StatusNotifierItem::hearOfHost(const QDBusPendingReply<QDBusVariant>& answer) {
    const bool hosted = answer.isValid() && answer.value().variant().toBool();
    const bool mayCome = answer.isValid() || !saysNobodyIsThere(answer.error());
    if (!hosted && mayCome) {
        if (!hostMissing.isActive())
            hostMissing.start();
        return;
    }
    hostMissing.stop();
    legacyIcon.setWanted(!hosted);
    if (hosted)
        registerIfDue();
}

void StatusNotifierItem::refreshIcon() {
    barChanges.expect(); // what changes the icon may come with a change of the bar
    if (const StatusNotifierPixmaps former = std::exchange(pixmaps, {}); !former.isEmpty()) {
        if (iconPixmap() == former)
            return;
        Q_EMIT NewIcon();
    }
    legacyIcon.redraw();
}

void StatusNotifierItem::lookAtBar() {
    if (legacyIcon.isInTray()) {
        legacyIcon.redraw(); // sees what is behind it
        return;
    }
    std::optional<std::string> ofBar;
    if (iconPlace)
        ofBar = x11::appearanceOfBarAt(*iconPlace);
    itemButton.setSeenAppearance(ofBar ? ofBar : x11::appearanceOfBars());
}

void StatusNotifierItem::pressed(int x, int y) {
    // The press of this very click has closed the popover already: it must not open it again.
    if (GlobalEvents::shared().takeClickSeenByMonitor())
        return;
    iconPlace = x11::pointerPlace();
    barChanges.expect();
    // The pointer is on the icon, whatever unit the host counts in, and whatever it takes for the place.
    itemButton.press(WindowServer::shared().pointerLocation().value_or(QPoint(x, y)));
}

} // namespace velloren
