#include "Platform/Desktop/GlobalEvents.h"
#include "Platform/Foundation/SharedInstance.h"
#include "Platform/Freedesktop/Tray/StatusNotifierBar.h"
#include "Platform/Freedesktop/Tray/StatusNotifierItem.h"
#include "Tests/Platform/Freedesktop/QtBusTest.h"
#include "Tests/Support/FakeDesktop.h"

#include <QDBusReply>
#include <QTimer>
#include <gmock/gmock.h>

namespace velloren {

namespace {

using ::testing::ElementsAre;

const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString itemInterface = QStringLiteral("org.kde.StatusNotifierItem");
const QString itemPath = QStringLiteral("/StatusNotifierItem");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");

/// A panel's watcher and host, on a connection of its own; it notes what registers with it.
class Watcher final : public QObject {
    Q_OBJECT

  public:
    explicit Watcher(const QDBusConnection& bus) : connection(bus) {}

    void takeOver() { service.start(watcherName, watcherPath); }

    void signal(const char* name) { service.send(watcherPath, watcherName, name); }

    QDBusConnection connection;
    QStringList items;
    qsizetype itemsWhenAsked = 0; ///< for the host
    bool hosted = true;
    int newIcons = 0;
    int newToolTips = 0;

  public Q_SLOTS:

    void newIcon() { ++newIcons; }

    void newToolTip() { ++newToolTips; }

  private:
    QVariant answerTo(const QDBusMessage& call) {
        if (call.member() == "RegisterStatusNotifierItem")
            items.append(call.arguments().value(0).toString());
        else
            itemsWhenAsked = items.size();
        return boxed(hosted);
    }

    FakeService service{connection, [this](const QDBusMessage& call) { return answerTo(call); }};
};

class StatusNotifierItemTest : public QtBusTest {
  protected:
    ~StatusNotifierItemTest() override {
        item.reset();
        SharedInstance<GlobalEvents>::reset();
        SharedInstance<WindowServer>::reset();
    }

    void registerItem() {
        watcher.takeOver();
        ASSERT_TRUE(waitUntil([&] { return watcher.items.size() == 1; })) << "it came after the item";
    }

    /// As a host does it; this thread answers as well.
    QDBusMessage call(const QString& method, const QVariantList& arguments, const QString& interface) {
        auto message = QDBusMessage::createMethodCall(watcher.items.last(), itemPath, interface, method);
        message.setArguments(arguments);
        return watcher.connection.call(message, QDBus::BlockWithGui);
    }

    QVariant property(const char* name) {
        return QDBusReply<QVariant>(call("Get", {itemInterface, name}, "org.freedesktop.DBus.Properties"));
    }

    Watcher watcher{connection("first")};
    FakeWindowServer& display = FakeWindowServer::install();
    FakeGlobalEvents& events = FakeGlobalEvents::install();
    StatusNotifierBar bar{connection("agent"), "com.velloren.velloren-mac.menu", "Velloren"};
    std::unique_ptr<StatusItem> item = bar.statusItemWithLength(28);
};

} // namespace

TEST_F(StatusNotifierItemTest, RegistersWithEachWatcherOnceThatHasAHostOrGetsNone) {
    watcher.hosted = false;
    watcher.takeOver();
    item.reset();
    watcher.itemsWhenAsked = -1;
    item = bar.statusItemWithLength(28);
    EXPECT_TRUE(waitUntil([&] { return watcher.itemsWhenAsked >= 0; }));
    EXPECT_EQ(watcher.itemsWhenAsked, 0) << "the watcher may have come just before";
    watcher.hosted = true;
    watcher.signal("StatusNotifierHostRegistered");
    EXPECT_TRUE(waitUntil([&] { return watcher.items.size() == 1; }));
    Watcher second(connection("second"));
    second.takeOver();
    EXPECT_TRUE(waitUntil([&] { return second.items == watcher.items; })) << "they change without a gap";
    second.signal("StatusNotifierHostRegistered");
    EXPECT_TRUE(waitUntil([&] { return second.items.size() == 2; })) << "hosts forget what they knew";

    watcher.hosted = second.hosted = false;
    second.itemsWhenAsked = -1;
    second.signal("StatusNotifierHostUnregistered");
    EXPECT_TRUE(waitUntil([&] { return second.itemsWhenAsked >= 0; })) << "another tray may be wanted now";
    watcher.takeOver();
    qsizetype itemsInTime = 0;
    QTimer::singleShot(std::chrono::milliseconds(1000), &second, [&] {
        second.takeOver();
        QTimer::singleShot(std::chrono::milliseconds(1500), &second,
                           [&] { itemsInTime = second.items.size(); });
    });
    EXPECT_TRUE(waitUntil([&] { return second.items.size() == 3; })) << "no host came";
    EXPECT_EQ(second.itemsWhenAsked, 2) << "one that is about to come would miss the item";
    EXPECT_EQ(itemsInTime, 2) << "the second has as long for its host to come as the first";
}

TEST_F(StatusNotifierItemTest, ShowsItsCentreInEachSizeAndTellsOfNewPicturesOnly) {
    View edge(item->button());
    edge.setGeometry(0, 0, 3, 22);
    View centre(item->button());
    centre.setGeometry(3, 0, 22, 22);
    edge.setWantsLayer(true);
    centre.setWantsLayer(true);
    registerItem();
    ASSERT_TRUE(watcher.connection.connect(watcher.items.last(), itemPath, itemInterface,
                                           QStringLiteral("NewIcon"), &watcher, SLOT(newIcon())));
    const auto expectPictures = [&](const char* pixel) {
        std::vector<int> sides;
        for (const auto& picture : qdbus_cast<StatusNotifierPixmaps>(property("IconPixmap"))) {
            const auto count = picture.width * picture.height;
            EXPECT_EQ(picture.pixels, QByteArray::fromHex(pixel).repeated(count)) << "ARGB, high byte first";
            sides.push_back(picture.width);
        }
        EXPECT_THAT(sides, ElementsAre(16, 22, 24, 32, 33, 44, 48, 64));
    };
    expectPictures("00000000");
    edge.layer()->setBackgroundColor(Qt::red);
    centre.layer()->setBackgroundColor(QColor(0, 80, 255));
    EXPECT_TRUE(waitUntil([&] { return watcher.newIcons == 1; }));
    expectPictures("ff0050ff");
    centre.layer()->setBackgroundColor(QColor(0, 80, 255));
    centre.layer()->setBackgroundColor(std::nullopt);
    EXPECT_TRUE(waitUntil([&] { return watcher.newIcons == 2; })) << "the same colour again is no new icon";
}

TEST_F(StatusNotifierItemTest, HandsOnPressesWithTheirPlaceButNotTheOnesTheMonitorSaw) {
    registerItem();
    EXPECT_EQ(property("ItemIsMenu"), false);
    EXPECT_EQ(property("Menu").value<QDBusObjectPath>().path(), QStringLiteral("/StatusNotifierItem/Menu"));
    EXPECT_EQ(property("Id"), QStringLiteral("com.velloren.velloren-mac.menu"));
    for (const char* name : {"AttentionIconName", "AttentionMovieName", "OverlayIconName", "IconThemePath"})
        EXPECT_EQ(property(name), QString()) << name << " is asked for";
    for (const char* name : {"AttentionIconPixmap", "OverlayIconPixmap"})
        EXPECT_EQ(property(name).userType(), qMetaTypeId<QDBusArgument>()) << name;
    const auto placeAfter = [&](const char* method, const QVariantList& arguments) {
        call(method, arguments, itemInterface);
        return item->button()->rectOnScreen(item->button()->rect()).center();
    };
    EXPECT_EQ(placeAfter("Activate", {300, 12}), QPoint(300, 12));
    EXPECT_EQ(placeAfter("ContextMenu", {310, 12}), QPoint(310, 12));
    events.clickSeenByMonitor = true;
    EXPECT_EQ(placeAfter("Activate", {500, 12}), QPoint(310, 12)) << "that very click closed the popover";
    EXPECT_EQ(placeAfter("SecondaryActivate", {500, 12}), QPoint(310, 12));
    EXPECT_EQ(placeAfter("Scroll", {1, "vertical"}), QPoint(310, 12));
    display.pointer = QPoint(700, 9);
    EXPECT_EQ(placeAfter("Activate", {0, 27}), QPoint(700, 9)) << "where the pointer is, the icon is";
}

TEST_F(StatusNotifierItemTest, HasNoToolTipWhileNoneIsAllowed) {
    registerItem();
    ASSERT_TRUE(watcher.connection.connect(watcher.items.last(), itemPath, itemInterface,
                                           QStringLiteral("NewToolTip"), &watcher, SLOT(newToolTip())));
    const auto title = [&] { return qdbus_cast<StatusNotifierToolTip>(property("ToolTip")).title; };
    EXPECT_EQ(title(), QStringLiteral("Velloren"));
    item->setToolTipAllowed(false);
    EXPECT_EQ(title(), QString());
    EXPECT_EQ(property("Title"), QString()) << "hosts show that where there is no tool tip";
    item->setToolTipAllowed(false);
    item->setToolTipAllowed(true);
    EXPECT_EQ(title(), QStringLiteral("Velloren"));
    EXPECT_TRUE(waitUntil([&] { return watcher.newToolTips == 2; })) << "hosts ask for it again";
}

} // namespace velloren

#include "StatusNotifierItemTests.moc"
