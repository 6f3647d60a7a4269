#pragma once

#include "Platform/Desktop/StatusBar.h"
#include "Platform/Freedesktop/Tray/DBusMenu.h"
#include "Platform/Freedesktop/Tray/XEmbedIcon.h"
#include "Platform/Freedesktop/Windowing/X11/BarPixels.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QList>
#include <QObject>
#include <QTimer>

#include <memory>

namespace velloren {

/// One size of an icon as it travels over the bus: ARGB32, each pixel in network byte order.
struct StatusNotifierPixmap {
    int width = 0;
    int height = 0;
    QByteArray pixels;

    friend bool operator==(const StatusNotifierPixmap&, const StatusNotifierPixmap&) = default;
};

using StatusNotifierPixmaps = QList<StatusNotifierPixmap>;

struct StatusNotifierToolTip {
    QString iconName;
    StatusNotifierPixmaps pixmaps;
    QString title;
    QString text;
};

QDBusArgument& operator<<(QDBusArgument& argument, const StatusNotifierPixmap& pixmap);
const QDBusArgument& operator>>(const QDBusArgument& argument, StatusNotifierPixmap& pixmap);
QDBusArgument& operator<<(QDBusArgument& argument, const StatusNotifierToolTip& toolTip);
const QDBusArgument& operator>>(const QDBusArgument& argument, StatusNotifierToolTip& toolTip);

/// A status item as an object on the session bus, with a bus name of its own. While nobody hosts such items
/// it stands in a tray of the older kind, if there is one.
class StatusNotifierItem final : public QObject, public StatusItem, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category)
    Q_PROPERTY(QString Id READ id)
    Q_PROPERTY(QString Title READ title)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(int WindowId READ windowId)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu)
    Q_PROPERTY(QDBusObjectPath Menu READ menuPath)
    Q_PROPERTY(QString IconName READ noText)
    Q_PROPERTY(velloren::StatusNotifierPixmaps IconPixmap READ iconPixmap)
    Q_PROPERTY(QString IconThemePath READ noText)
    Q_PROPERTY(QString OverlayIconName READ noText)
    Q_PROPERTY(velloren::StatusNotifierPixmaps OverlayIconPixmap READ noPixmaps)
    Q_PROPERTY(QString AttentionIconName READ noText)
    Q_PROPERTY(velloren::StatusNotifierPixmaps AttentionIconPixmap READ noPixmaps)
    Q_PROPERTY(QString AttentionMovieName READ noText)
    Q_PROPERTY(velloren::StatusNotifierToolTip ToolTip READ toolTip)

  public:
    struct Identity {
        QString id;
        QString title;
        QString serviceName;
    };

    StatusNotifierItem(const QDBusConnection& bus, Identity identity, QSize size);
    ~StatusNotifierItem() override;

    [[nodiscard]] StatusBarButton* button() override { return &itemButton; }

    void setToolTipAllowed(bool allowed) override;

    [[nodiscard]] QString category() const { return QStringLiteral("ApplicationStatus"); }

    [[nodiscard]] QString id() const { return identity.id; }

    [[nodiscard]] QString title() const { return toolTipAllowed ? identity.title : QString(); }

    [[nodiscard]] QString status() const { return QStringLiteral("Active"); }

    [[nodiscard]] int windowId() const { return 0; }

    [[nodiscard]] bool itemIsMenu() const { return false; }

    [[nodiscard]] QDBusObjectPath menuPath() const;

    /// For what the item does not have; some hosts log an error where a property is missing.
    [[nodiscard]] QString noText() const { return {}; }

    [[nodiscard]] StatusNotifierPixmaps noPixmaps() const { return {}; }

    [[nodiscard]] StatusNotifierPixmaps iconPixmap();
    [[nodiscard]] StatusNotifierToolTip toolTip() const;

  public Q_SLOTS: // the host's calls
    void Activate(int x, int y);
    void ContextMenu(int x, int y);
    void SecondaryActivate(int x, int y);
    void Scroll(int delta, const QString& orientation);
    void ProvideXdgActivationToken(const QString& token);

  Q_SIGNALS:
    void NewIcon();
    void NewTitle();
    void NewToolTip();

  private Q_SLOTS:
    void registerOnceHosted();
    void askForHost();

  private:
    void hearOfHost(const QDBusPendingReply<QDBusVariant>& answer);
    void registerIfDue();
    void followWatcher();
    void refreshIcon();
    void lookAtBar();
    void pressed(int x, int y);

    QDBusConnection bus;
    Identity identity;
    StatusBarButton itemButton;
    DBusMenu menuOnBus;
    QDBusServiceWatcher watcherOwner;
    QTimer hostMissing;
    std::unique_ptr<QDBusPendingCallWatcher> hostAnswer; ///< of the present watcher
    bool registrationDue = false;                        ///< once the present watcher has a host
    bool toolTipAllowed = true;
    XEmbedIcon legacyIcon;
    StatusNotifierPixmaps pixmaps;   ///< as a host was told last; none where nobody has asked
    std::optional<QPoint> iconPlace; ///< in the screen's own pixels; none until the icon was pressed
    x11::BarChanges barChanges;
};

} // namespace velloren

Q_DECLARE_METATYPE(velloren::StatusNotifierPixmap)
Q_DECLARE_METATYPE(velloren::StatusNotifierPixmaps)
Q_DECLARE_METATYPE(velloren::StatusNotifierToolTip)
