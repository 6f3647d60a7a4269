#pragma once

#include "Platform/Desktop/StatusBar.h"
#include "Platform/Freedesktop/Bus/BusStructure.h"
#include "Platform/Freedesktop/Tray/DBusMenu.h"
#include "Platform/Freedesktop/Tray/XEmbedIcon.h"
#include "Platform/Freedesktop/Windowing/X11/BarPixels.h"

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

    static constexpr auto members() {
        return std::tuple(&StatusNotifierPixmap::width, &StatusNotifierPixmap::height,
                          &StatusNotifierPixmap::pixels);
    }

    friend bool operator==(const StatusNotifierPixmap&, const StatusNotifierPixmap&) = default;
};

using StatusNotifierPixmaps = QList<StatusNotifierPixmap>;

struct StatusNotifierToolTip {
    QString iconName;
    StatusNotifierPixmaps pixmaps;
    QString title;
    QString text;

    static constexpr auto members() {
        return std::tuple(&StatusNotifierToolTip::iconName, &StatusNotifierToolTip::pixmaps,
                          &StatusNotifierToolTip::title, &StatusNotifierToolTip::text);
    }
};

/// A status item as an object on the session bus, with a bus name of its own. While nobody hosts such items
/// it stands in a tray of the older kind, if there is one.
class StatusNotifierItem final : public QObject, public StatusItem, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category MEMBER category CONSTANT)
    Q_PROPERTY(QString Id READ id)
    Q_PROPERTY(QString Title READ title)
    Q_PROPERTY(QString Status MEMBER status CONSTANT)
    Q_PROPERTY(int WindowId MEMBER windowId CONSTANT)
    Q_PROPERTY(bool ItemIsMenu MEMBER itemIsMenu CONSTANT)
    Q_PROPERTY(QDBusObjectPath Menu MEMBER menuPath CONSTANT)
    Q_PROPERTY(QString IconName MEMBER noText CONSTANT)
    Q_PROPERTY(velloren::StatusNotifierPixmaps IconPixmap READ iconPixmap)
    Q_PROPERTY(QString IconThemePath MEMBER noText CONSTANT)
    Q_PROPERTY(QString OverlayIconName MEMBER noText CONSTANT)
    Q_PROPERTY(velloren::StatusNotifierPixmaps OverlayIconPixmap MEMBER noPixmaps CONSTANT)
    Q_PROPERTY(QString AttentionIconName MEMBER noText CONSTANT)
    Q_PROPERTY(velloren::StatusNotifierPixmaps AttentionIconPixmap MEMBER noPixmaps CONSTANT)
    Q_PROPERTY(QString AttentionMovieName MEMBER noText CONSTANT)
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

    [[nodiscard]] QString id() const { return identity.id; }

    [[nodiscard]] QString title() const { return toolTipAllowed ? identity.title : QString(); }

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

    const QString category = QStringLiteral("ApplicationStatus");
    const QString status = QStringLiteral("Active");
    const int windowId = 0;
    const bool itemIsMenu = false;
    const QDBusObjectPath menuPath{QStringLiteral("/StatusNotifierItem/Menu")};
    // For what the item does not have; some hosts log an error where a property is missing.
    const QString noText;
    const StatusNotifierPixmaps noPixmaps;

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
