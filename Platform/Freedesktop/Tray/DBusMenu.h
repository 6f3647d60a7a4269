#pragma once

#include "Platform/Desktop/StatusMenu.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusVariant>
#include <QList>
#include <QObject>

#include <vector>

namespace velloren {

/// An entry with all that lies below it, as it travels over the bus.
struct DBusMenuLayout {
    int id = 0;
    QVariantMap properties;
    QList<QDBusVariant> children; ///< of this type again
};

/// Properties of one entry.
struct DBusMenuProperties {
    int id = 0;
    QVariantMap properties;
};

/// Names of properties that one entry has no longer.
struct DBusMenuRemovals {
    int id = 0;
    QStringList names;
};

/// What happened to an entry.
struct DBusMenuEvent {
    int id = 0;
    QString type;
    QDBusVariant data;
    uint timestamp = 0;
};

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuLayout& layout);
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuLayout& layout);
QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuProperties& properties);
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuProperties& properties);
QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuRemovals& removals);
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuRemovals& removals);
QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuEvent& event);
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuEvent& event);

/// A status item's menu as an object on the session bus. An entry keeps its number for as long as its key is
/// among the entries, and no other entry ever has it: what a host says of a number is never taken for said of
/// what stands in its place meanwhile. Numbers that are not in use, and lists longer than any menu, are
/// answered with an error. Main thread only.
class DBusMenu final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version READ version)
    Q_PROPERTY(QString TextDirection READ textDirection)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath)

  public:
    /// The menu outlives this.
    DBusMenu(const QDBusConnection& bus, QString path, StatusMenu& menu);
    ~DBusMenu() override;

    [[nodiscard]] uint version() const { return 3; }

    [[nodiscard]] QString textDirection() const;

    [[nodiscard]] QString status() const { return QStringLiteral("normal"); }

    [[nodiscard]] QStringList iconThemePath() const { return {}; }

  public Q_SLOTS: // the host's calls
    uint GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                   velloren::DBusMenuLayout& layout);
    QList<velloren::DBusMenuProperties> GetGroupProperties(const QList<int>& ids,
                                                           const QStringList& propertyNames);
    QDBusVariant GetProperty(int id, const QString& name);
    void Event(int id, const QString& type, const QDBusVariant& data, uint timestamp);
    QList<int> EventGroup(const QList<velloren::DBusMenuEvent>& events);
    bool AboutToShow(int id);
    QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors);

  Q_SIGNALS:
    void LayoutUpdated(uint revision, int parent);
    void ItemsPropertiesUpdated(const QList<velloren::DBusMenuProperties>& updated,
                                const QList<velloren::DBusMenuRemovals>& removed);

  private:
    struct Item {
        int id;
        StatusMenuEntry entry;
    };

    void entriesChanged();
    [[nodiscard]] Item takeItem(std::vector<Item>& former, const StatusMenuEntry& entry);
    [[nodiscard]] const Item* find(int id) const;
    [[nodiscard]] bool isKnown(int id) const;
    [[nodiscard]] QVariantMap propertiesOf(int id) const;
    [[nodiscard]] bool handle(int id, const QString& type);
    void refuse(const QString& reason);

    QDBusConnection bus;
    QString path;
    StatusMenu& menu;
    std::vector<Item> items;
    int latestId = 0;
    uint revision = 1;
};

} // namespace velloren

Q_DECLARE_METATYPE(velloren::DBusMenuLayout)
Q_DECLARE_METATYPE(velloren::DBusMenuProperties)
Q_DECLARE_METATYPE(velloren::DBusMenuRemovals)
Q_DECLARE_METATYPE(velloren::DBusMenuEvent)
