#pragma once

#include "Platform/Desktop/StatusMenu.h"
#include "Platform/Freedesktop/Bus/BusStructure.h"

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

    static constexpr auto members() {
        return std::tuple(&DBusMenuLayout::id, &DBusMenuLayout::properties, &DBusMenuLayout::children);
    }
};

/// Properties of one entry.
struct DBusMenuProperties {
    int id = 0;
    QVariantMap properties;

    static constexpr auto members() {
        return std::tuple(&DBusMenuProperties::id, &DBusMenuProperties::properties);
    }
};

/// Names of properties that one entry has no longer.
struct DBusMenuRemovals {
    int id = 0;
    QStringList names;

    static constexpr auto members() { return std::tuple(&DBusMenuRemovals::id, &DBusMenuRemovals::names); }
};

/// A status item's menu as an object on the session bus. An entry keeps its number for as long as its key is
/// among the entries, and no other entry ever has it: what a host says of a number is never taken for said of
/// what stands in its place meanwhile. Numbers that are not in use are answered with an error. Of the
/// protocol it is version 2: what version 3 adds are the same calls for several entries at once. Main thread
/// only.
class DBusMenu final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version MEMBER version CONSTANT)
    Q_PROPERTY(QString TextDirection MEMBER textDirection CONSTANT)
    Q_PROPERTY(QString Status MEMBER status CONSTANT)
    Q_PROPERTY(QStringList IconThemePath MEMBER iconThemePath CONSTANT)

  public:
    /// The menu outlives this.
    DBusMenu(const QDBusConnection& bus, QString path, StatusMenu& menu);
    ~DBusMenu() override;

  public Q_SLOTS: // the host's calls
    uint GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                   velloren::DBusMenuLayout& layout);
    QList<velloren::DBusMenuProperties> GetGroupProperties(const QList<int>& ids,
                                                           const QStringList& propertyNames);
    void Event(int id, const QString& type, const QDBusVariant& data, uint timestamp);
    bool AboutToShow(int id);

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
    void refuse();

    const uint version = 2;
    const QString textDirection;
    const QString status = QStringLiteral("normal");
    const QStringList iconThemePath;
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
