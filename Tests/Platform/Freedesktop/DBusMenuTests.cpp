#include "Platform/Freedesktop/Tray/DBusMenu.h"
#include "Tests/Platform/Freedesktop/QtBusTest.h"

#include <QDBusMessage>
#include <gmock/gmock.h>

namespace velloren {

namespace {

using ::testing::ElementsAre;
using Kind = StatusMenuEntry::Kind;

const QString menuPath = QStringLiteral("/menu");
const QString menuInterface = QStringLiteral("com.canonical.dbusmenu");
const QStringList everything;

/// A host on a connection of its own, as a plain client of the bus.
class DBusMenuTest : public QtBusTest {
  protected:
    DBusMenuTest() {
        menu.setAboutToShowHandler([this] {
            ++fills;
            menu.setEntries(content);
        });
    }

    StatusMenuEntry item(const std::string& key, const std::string& title) {
        return {Kind::Item, key, title, [this, key] { chosen.push_back(key); }};
    }

    QDBusMessage call(const char* method, const QVariantList& arguments) {
        auto message = QDBusMessage::createMethodCall(agent.baseService(), menuPath, menuInterface, method);
        message.setArguments(arguments);
        return host.call(message, QDBus::BlockWithGui);
    }

    bool fails(const char* method, const QVariantList& arguments) {
        return call(method, arguments).type() == QDBusMessage::ErrorMessage;
    }

    std::vector<DBusMenuLayout> shown(int depth = -1, const QStringList& properties = everything) {
        const QDBusMessage reply = call("GetLayout", {0, depth, properties});
        EXPECT_EQ(reply.signature(), "u(ia{sv}av)");
        revision = reply.arguments().value(0).toUInt();
        std::vector<DBusMenuLayout> entries;
        for (const auto& child : qdbus_cast<DBusMenuLayout>(reply.arguments().value(1)).children)
            entries.push_back(qdbus_cast<DBusMenuLayout>(child.variant()));
        return entries;
    }

    QDBusConnection agent = connection(QStringLiteral("agent"));
    QDBusConnection host = connection(QStringLiteral("host"));
    StatusMenu menu;
    DBusMenu exported{agent, menuPath, menu};
    std::vector<StatusMenuEntry> content;
    int fills = 0;
    uint revision = 0;
    std::vector<std::string> chosen;
};

/// Notices the menu's signals as a host does.
class Signals final : public QObject {
    Q_OBJECT

  public:
    explicit Signals(QDBusConnection host) {
        host.connect({}, menuPath, menuInterface, {}, this, SLOT(hear(QDBusMessage)));
    }

    QMap<QString, QDBusMessage> latest;

  public Q_SLOTS:

    void hear(const QDBusMessage& message) { latest[message.member()] = message; }
};

} // namespace

TEST_F(DBusMenuTest, ListsTitlesOfOtherPeopleAsOnePlainLine) {
    content = {item("1", "<b>a_b</b>\n\tc"), item("2", "\u2068" + std::string(5000, 'x') + "\u2069"),
               StatusMenuEntry{Kind::Item, "3", "No", nullptr},
               StatusMenuEntry{Kind::Separator, {}, {}, nullptr}};
    const auto entries = shown();
    ASSERT_EQ(entries.size(), 4U) << "the first layout is filled already";
    EXPECT_EQ(entries[0].properties, (QVariantMap{{"label", "<b>a__b</b>  c"}}));
    const QString cut = entries[1].properties.value(QStringLiteral("label")).toString();
    EXPECT_EQ(cut.size(), 82);
    EXPECT_TRUE(cut.endsWith(QStringLiteral("x\u2026\u2069"))) << "what was isolated stays isolated";
    EXPECT_EQ(entries[2].properties, (QVariantMap{{"label", "No"}, {"enabled", false}}));
    EXPECT_EQ(entries[3].properties, (QVariantMap{{"type", "separator"}}));

    EXPECT_TRUE(shown(0).empty());
    EXPECT_EQ(shown(-1, {"enabled"})[2].properties, (QVariantMap{{"enabled", false}}));
    EXPECT_EQ(call("GetGroupProperties", {QVariant::fromValue(QList<int>{}), everything}).signature(),
              "a(ia{sv})");
}

TEST_F(DBusMenuTest, IsFilledAnewForEachShowing) {
    content = {item("a", "A")};
    EXPECT_EQ(call("AboutToShow", {0}).arguments(), QVariantList{true});
    EXPECT_EQ(call("AboutToShow", {0}).arguments(), QVariantList{false}) << "nothing is new to the host";
    content.push_back(item("b", "B"));
    EXPECT_EQ(call("AboutToShow", {0}).arguments(), QVariantList{true});
    EXPECT_EQ(fills, 3);
}

TEST_F(DBusMenuTest, TellsOfLaterChangesAndKeepsTheNumbersOfWhatStays) {
    content = {item("a", "A"), {Kind::Item, "b", "B", nullptr}};
    const Signals signals(host);
    const auto before = shown(); // once that is answered, the bus knows of the signals asked for as well
    menu.setEntries({item("c", "C"), item("b", "later")});
    EXPECT_TRUE(waitUntil([&] { return signals.latest.size() == 2; }));
    EXPECT_EQ(signals.latest["ItemsPropertiesUpdated"].signature(), "a(ia{sv})a(ias)");
    const QVariantList news = signals.latest["ItemsPropertiesUpdated"].arguments();
    const auto updated = qdbus_cast<QList<DBusMenuProperties>>(news.value(0));
    const auto removed = qdbus_cast<QList<DBusMenuRemovals>>(news.value(1));
    ASSERT_TRUE(updated.size() == 1 && removed.size() == 1) << "what is new comes with the layout";
    EXPECT_EQ(updated[0].id, before[1].id);
    EXPECT_EQ(updated[0].properties, (QVariantMap{{"label", "later"}}));
    EXPECT_EQ(removed[0].id, before[1].id);
    EXPECT_EQ(removed[0].names, QStringList{"enabled"});
    EXPECT_GT(signals.latest["LayoutUpdated"].arguments().value(0).toUInt(), revision);
    EXPECT_EQ(shown()[1].id, before[1].id);
    EXPECT_EQ(revision, signals.latest["LayoutUpdated"].arguments().value(0).toUInt());
    const QVariant data = QVariant::fromValue(QDBusVariant(0));
    EXPECT_TRUE(fails("Event", {before[0].id, "clicked", data, 0U}));
    call("Event", {before[1].id, "clicked", data, 0U});
    EXPECT_TRUE(waitUntil([&] { return !chosen.empty(); }));
    EXPECT_THAT(chosen, ElementsAre("b")) << "what stands where another stood is not chosen for it";
}

TEST_F(DBusMenuTest, DoesWhatIsChosenInOrderAndRefusesWhatMakesNoSense) {
    content = {item("a", "A"), item("b", "B"), {Kind::Item, "c", "C", nullptr}};
    const auto entries = shown();
    const QVariant data = QVariant::fromValue(QDBusVariant(0));
    EXPECT_FALSE(fails("Event", {entries[1].id, "clicked", data, 0U}));
    EXPECT_FALSE(fails("Event", {entries[2].id, "clicked", data, 0U}));
    EXPECT_FALSE(fails("Event", {entries[0].id, "hovered", data, 0U}));
    EXPECT_FALSE(fails("Event", {0, "opened", data, 0U}));
    EXPECT_FALSE(fails("Event", {entries[0].id, "clicked", data, 0U}));
    EXPECT_TRUE(waitUntil([&] { return chosen.size() >= 2; }));
    EXPECT_THAT(chosen, ElementsAre("b", "a"));
    EXPECT_TRUE(fails("Event", {-1, "clicked", data, 0U}));
    EXPECT_TRUE(fails("GetLayout", {99, -1, everything}));
    EXPECT_TRUE(fails("AboutToShow", {99}));
}

} // namespace velloren

#include "DBusMenuTests.moc"
