#include "Platform/Freedesktop/Tray/DBusMenu.h"

#include "Platform/Freedesktop/Bus/BusObject.h"
#include "Platform/Views/PlainText.h"

#include <QDBusMetaType>
#include <QGuiApplication>

#include <algorithm>
#include <utility>

namespace velloren {

namespace {

constexpr int root = 0;
constexpr qsizetype longestLabel = 80; // characters; hosts make their menu as wide as its longest label

const QString label = QStringLiteral("label");
const QString enabled = QStringLiteral("enabled");
const QString type = QStringLiteral("type");
const QString childrenDisplay = QStringLiteral("children-display");

/// The text with an end for each part whose direction is its own: the end may have been cut off.
QString withIsolatesClosed(QString text) {
    constexpr char16_t first = 0x2066, last = 0x2068, end = 0x2069;
    qsizetype open = 0;
    for (const QChar character : std::as_const(text)) {
        if (character >= first && character <= last)
            ++open;
        else if (character == end && open > 0)
            --open;
    }
    return text.append(QString(open, QChar(end)));
}

/// A single underscore marks the key that chooses an entry.
QString asLabel(const std::string& title) {
    return withIsolatesClosed(asOneLine(QString::fromStdString(title), longestLabel))
        .replace(QLatin1Char('_'), QStringLiteral("__"));
}

/// What differs from the defaults.
QVariantMap propertiesOf(const StatusMenuEntry& entry) {
    if (entry.kind == StatusMenuEntry::Kind::Separator)
        return {{type, QStringLiteral("separator")}};
    QVariantMap properties{{label, asLabel(entry.title)}};
    if (!entry.action)
        properties.insert(enabled, false);
    return properties;
}

/// Those of the names asked for; no names ask for all.
QVariantMap filtered(QVariantMap properties, const QStringList& names) {
    if (!names.isEmpty())
        properties.removeIf([&](QVariantMap::iterator each) { return !names.contains(each.key()); });
    return properties;
}

} // namespace

DBusMenu::DBusMenu(const QDBusConnection& bus, QString path, StatusMenu& menu)
    : textDirection(QGuiApplication::isRightToLeft() ? QStringLiteral("rtl") : QStringLiteral("ltr")),
      bus(bus), path(std::move(path)), menu(menu) {
    qDBusRegisterMetaType<DBusMenuLayout>();
    qDBusRegisterMetaType<DBusMenuProperties>();
    qDBusRegisterMetaType<QList<DBusMenuProperties>>();
    qDBusRegisterMetaType<DBusMenuRemovals>();
    qDBusRegisterMetaType<QList<DBusMenuRemovals>>();

    menu.setChangedHandler([this] { entriesChanged(); });
    exportObject(this->bus, this->path, *this);
}

DBusMenu::~DBusMenu() {
    menu.setChangedHandler(nullptr);
    bus.unregisterObject(path);
}

uint DBusMenu::GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                         DBusMenuLayout& layout) {
    if (!isKnown(parentId)) {
        refuse();
        return 0;
    }
    // Hosts lay the menu out long before they first show it, and some never make it larger while it shows.
    if (items.empty())
        menu.aboutToShow();
    layout = {parentId, filtered(propertiesOf(parentId), propertyNames), {}};
    if (parentId == root && recursionDepth != 0) {
        for (const Item& item : items) {
            const DBusMenuLayout child{item.id, filtered(propertiesOf(item.id), propertyNames), {}};
            layout.children.append(QDBusVariant(QVariant::fromValue(child)));
        }
    }
    return revision;
}

QList<DBusMenuProperties> DBusMenu::GetGroupProperties(const QList<int>& ids,
                                                       const QStringList& propertyNames) {
    QList<DBusMenuProperties> group;
    const auto append = [&](int id) { group.append({id, filtered(propertiesOf(id), propertyNames)}); };
    for (const int id : ids) {
        if (isKnown(id))
            append(id);
    }
    if (ids.isEmpty()) {
        append(root);
        for (const Item& item : items)
            append(item.id);
    }
    return group;
}

void DBusMenu::Event(int id, const QString& type, const QDBusVariant&, uint) {
    const Item* item = find(id);
    if (!item && id != root)
        refuse();
    // Later: the host gets its answer first, whatever the action does.
    else if (item && item->entry.action && type == QLatin1String("clicked"))
        QMetaObject::invokeMethod(this, item->entry.action, Qt::QueuedConnection);
}

bool DBusMenu::AboutToShow(int id) {
    const uint former = revision;
    if (id == root)
        menu.aboutToShow();
    else if (!find(id))
        refuse();
    return revision != former;
}

void DBusMenu::entriesChanged() {
    std::vector<Item> former = items;
    std::vector<Item> next;
    QList<DBusMenuProperties> updated;
    QList<DBusMenuRemovals> removed;
    for (const StatusMenuEntry& entry : menu.entries()) {
        const auto [id, earlier] = takeItem(former, entry);
        next.push_back({id, entry});
        const QVariantMap properties = velloren::propertiesOf(entry);
        const QVariantMap before = velloren::propertiesOf(earlier);
        if (properties == before)
            continue;
        updated.append({id, properties});
        if (before.contains(enabled) && !properties.contains(enabled))
            removed.append({id, {enabled}});
    }
    const bool sameLayout = std::equal(next.begin(), next.end(), items.begin(), items.end(),
                                       [](const Item& one, const Item& other) { return one.id == other.id; });
    items = std::move(next);
    if (!sameLayout)
        Q_EMIT LayoutUpdated(++revision, root);
    if (!updated.isEmpty())
        Q_EMIT ItemsPropertiesUpdated(updated, removed);
}

/// Takes the entry out of those that were there; one that was not gets a number of its own.
DBusMenu::Item DBusMenu::takeItem(std::vector<Item>& former, const StatusMenuEntry& entry) {
    const auto place = std::find_if(former.begin(), former.end(), [&](const Item& item) {
        return item.entry.kind == entry.kind && item.entry.key == entry.key;
    });
    if (place == former.end())
        return {++latestId, entry};
    Item item = std::move(*place);
    former.erase(place);
    return item;
}

const DBusMenu::Item* DBusMenu::find(int id) const {
    const auto place =
        std::find_if(items.begin(), items.end(), [id](const Item& item) { return item.id == id; });
    return place == items.end() ? nullptr : &*place;
}

bool DBusMenu::isKnown(int id) const {
    return id == root || find(id);
}

QVariantMap DBusMenu::propertiesOf(int id) const {
    const Item* item = find(id);
    return item ? velloren::propertiesOf(item->entry)
                : QVariantMap{{childrenDisplay, QStringLiteral("submenu")}};
}

void DBusMenu::refuse() {
    sendErrorReply(QDBusError::InvalidArgs, QStringLiteral("no such entry"));
}

} // namespace velloren
