#include "Platform/Desktop/GlobalEvents.h"
#include "Platform/Foundation/SharedInstance.h"
#include "Platform/Freedesktop/Tray/StatusNotifierBar.h"
#include "Platform/Freedesktop/Tray/StatusNotifierItem.h"
#include "Tests/Support/FakeDesktop.h"
#include "Tests/Support/PrivateBus.h"
#include "Tests/Support/QtTest.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <gmock/gmock.h>

namespace velloren {

namespace {

using ::testing::ElementsAre;

const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString itemInterface = QStringLiteral("org.kde.StatusNotifierItem");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");

/// A panel's watcher, on a connection of its own; it counts what registers with it.
class Watcher final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")

  public:
    Watcher(const PrivateBus& bus, const char* name)
        : connection(QDBusConnection::connectToBus(QString::fromStdString(bus.address()),
                                                   QString::fromLatin1(name))) {
        connection.registerObject(watcherPath, this,
                                  QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals);
    }

    ~Watcher() override { QDBusConnection::disconnectFromBus(connection.name()); }

    void takeOver() {
        connection.interface()->registerService(watcherName, QDBusConnectionInterface::ReplaceExistingService,
                                                QDBusConnectionInterface::AllowReplacement);
    }

    QDBusConnection connection;
    QStringList items;

  public Q_SLOTS:

    void RegisterStatusNotifierItem(const QString& item) { items.append(item); }

  Q_SIGNALS:
    void StatusNotifierHostRegistered();
};

/// Notices the item's signals as a host does.
class Host final : public QObject {
    Q_OBJECT

  public:
    int newIcons = 0;

  public Q_SLOTS:

    void newIcon() { ++newIcons; }
};

class StatusNotifierItemTest : public QtTest {
  protected:
    ~StatusNotifierItemTest() override {
        item.reset();
        SharedInstance<GlobalEvents>::reset();
        QDBusConnection::disconnectFromBus(QStringLiteral("agent"));
    }

    void makeItem() {
        item = bar.statusItemWithLength(28);
        item->button()->setWantsLayer(true);
        layer = item->button()->layer();
    }

    /// As a host does it; this thread answers as well.
    static QDBusMessage call(const Watcher& watcher, const QString& interface, const QString& method,
                             const QVariantList& arguments) {
        auto message = QDBusMessage::createMethodCall(
            watcher.items.last(), QStringLiteral("/StatusNotifierItem"), interface, method);
        message.setArguments(arguments);
        return watcher.connection.call(message, QDBus::BlockWithGui);
    }

    static QVariant property(const Watcher& watcher, const QString& name) {
        const QDBusReply<QVariant> value = call(watcher, QStringLiteral("org.freedesktop.DBus.Properties"),
                                                QStringLiteral("Get"), {itemInterface, name});
        return value.value();
    }

    PrivateBus bus;
    FakeGlobalEvents& events = FakeGlobalEvents::install();
    StatusNotifierBar bar{
        QDBusConnection::connectToBus(QString::fromStdString(bus.address()), QStringLiteral("agent")),
        QStringLiteral("com.velloren.velloren-mac.menu"), QStringLiteral("Velloren")};
    std::unique_ptr<StatusItem> item;
    Layer* layer = nullptr;
};

} // namespace

TEST_F(StatusNotifierItemTest, RegistersWithEachWatcherAlsoWhenTheyChangeWithoutAGap) {
    makeItem();
    Watcher first(bus, "first");
    first.takeOver();
    EXPECT_TRUE(waitUntil([&] { return first.items.size() == 1; })) << "it came after the item";
    Watcher second(bus, "second");
    second.takeOver();
    EXPECT_TRUE(waitUntil([&] { return second.items.size() == 1; }));
    EXPECT_EQ(first.items, second.items);
    Q_EMIT second.StatusNotifierHostRegistered();
    EXPECT_TRUE(waitUntil([&] { return second.items.size() == 2; })) << "hosts forget what they knew";
    EXPECT_EQ(first.items.size(), 1);
}

TEST_F(StatusNotifierItemTest, ShowsASquarePictureInEachSizeAndTellsOfNewOnesOnly) {
    Watcher watcher(bus, "first");
    watcher.takeOver();
    makeItem();
    ASSERT_TRUE(waitUntil([&] { return watcher.items.size() == 1; }));
    Host host;
    watcher.connection.connect(watcher.items.last(), QStringLiteral("/StatusNotifierItem"), itemInterface,
                               QStringLiteral("NewIcon"), &host, SLOT(newIcon()));
    const auto pictures = [&] {
        return qdbus_cast<StatusNotifierPixmaps>(property(watcher, QStringLiteral("IconPixmap")));
    };
    std::vector<int> sides;
    for (const StatusNotifierPixmap& picture : pictures()) {
        EXPECT_EQ(picture.width, picture.height);
        EXPECT_EQ(picture.pixels.size(), picture.width * picture.height * 4);
        EXPECT_EQ(picture.pixels, QByteArray(picture.pixels.size(), '\0')) << "nothing is on it yet";
        sides.push_back(picture.width);
    }
    EXPECT_THAT(sides, ElementsAre(16, 22, 24, 32, 48, 64));

    layer->setBackgroundColor(QColor(0, 80, 255));
    EXPECT_TRUE(waitUntil([&] { return host.newIcons == 1; }));
    EXPECT_EQ(pictures().first().pixels.first(8).toHex(), "ff0050ffff0050ff") << "ARGB, high byte first";
    layer->setBackgroundColor(QColor(0, 80, 255));
    layer->setBackgroundColor(std::nullopt);
    EXPECT_TRUE(waitUntil([&] { return host.newIcons == 2; })) << "the same colour again is no new icon";
}

TEST_F(StatusNotifierItemTest, HandsOnPressesWithTheirPlaceButNotTheOnesTheMonitorSaw) {
    Watcher watcher(bus, "first");
    watcher.takeOver();
    makeItem();
    ASSERT_TRUE(waitUntil([&] { return watcher.items.size() == 1; }));
    EXPECT_EQ(property(watcher, QStringLiteral("ItemIsMenu")), false);
    EXPECT_EQ(property(watcher, QStringLiteral("Id")), QStringLiteral("com.velloren.velloren-mac.menu"));
    const auto tell = [&](const char* method, const QVariantList& arguments) {
        call(watcher, itemInterface, QString::fromLatin1(method), arguments);
    };
    const auto place = [&] { return item->button()->rectOnScreen(item->button()->rect()).center(); };
    tell("Activate", {300, 12});
    EXPECT_EQ(place(), QPoint(300, 12));
    tell("ContextMenu", {310, 12});
    EXPECT_EQ(place(), QPoint(310, 12));
    events.clickSeenByMonitor = true;
    tell("Activate", {500, 12});
    EXPECT_EQ(place(), QPoint(310, 12)) << "that very click closed the popover";
    tell("SecondaryActivate", {500, 12});
    tell("Scroll", {1, QStringLiteral("vertical")});
    EXPECT_EQ(place(), QPoint(310, 12));
}

} // namespace velloren

#include "StatusNotifierItemTests.moc"
