#include "Platform/Foundation/Bundle.h"
#include "Tests/Support/AgentTest.h"
#include "VellorenMenu/DateTexts.h"
#include "VellorenMenu/MenuAppDelegate.h"

#include <QDateTime>
#include <gmock/gmock.h>

namespace velloren {

namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;

class AgentMenuTest : public AgentTest {
  protected:
    AgentMenuTest() {
        application.setDelegate(&delegate);
        delegate.applicationDidFinishLaunching();
        loop.runPending();
        log.clear();
    }

    static std::vector<Dictionary> answered(const std::string& id) {
        return {{{"id", id}, {"title", "Title " + id}}};
    }

    /// The titles; one that cannot be chosen in parentheses, a separator as "---".
    [[nodiscard]] std::vector<std::string> titles() const {
        std::vector<std::string> titles;
        for (const StatusMenuEntry& entry : menu.entries()) {
            if (entry.kind == StatusMenuEntry::Kind::Separator)
                titles.emplace_back("---");
            else
                titles.push_back(entry.action ? entry.title : "(" + entry.title + ")");
        }
        return titles;
    }

    void choose(const std::string& title) {
        for (const StatusMenuEntry& entry : std::vector(menu.entries())) {
            if (entry.title == title)
                entry.action();
        }
    }

    MenuAppDelegate delegate{link};
    StatusMenu& menu = *statusBar.latestMenu;
};

} // namespace

TEST_F(AgentMenuTest, ListsWhatThePopoverShows) {
    const std::string start = "2031-03-07T14:05:00Z";
    store.meetings = std::vector<Meeting>{{"1", "One", start},
                                          {"2", std::nullopt, start},
                                          {std::nullopt, "Three", std::nullopt},
                                          {"4", "Four", start}};
    EXPECT_THAT(titles(), IsEmpty()) << "nobody asked yet";
    menu.aboutToShow();
    EXPECT_THAT(log.messages, IsEmpty());
    const std::string time = *relativeDate(start, loop.now());
    EXPECT_THAT(titles(), ElementsAre(time + " – One", time, "(Three)", "Create a new meeting", "---",
                                      "Support", "Help Center", "Quit"));
    const std::string second = menu.entries()[1].key;
    store.meetings->erase(store.meetings->begin());
    menu.aboutToShow();
    EXPECT_EQ(menu.entries()[0].key, second) << "it is the same entry in another place";
    EXPECT_NE(menu.entries()[1].key, second);
    store.meetings = {{"5", "2 خطة", start}, {"6", "خطة", std::nullopt}};
    menu.aboutToShow();
    EXPECT_EQ(titles()[0], "\u2068" + time + "\u2069 – \u20682 خطة\u2069") << "each in its own direction";
    EXPECT_EQ(titles()[1], "خطة");
    store.meetings.reset();
    menu.aboutToShow();
    EXPECT_EQ(titles()[0], "(No upcoming meetings)");
}

TEST_F(AgentMenuTest, ShowsTheStoreUntilTheMainAppAnswersTheLatestShowing) {
    store.meetings = std::vector<Meeting>{{"s", "Stored", std::nullopt}};
    workspace.instances[mainApp] = 1;
    menu.aboutToShow();
    EXPECT_EQ(titles()[0], "Stored") << "the main app runs and is not connected";
    startMainApp();
    mainAppObject.withholds = true;
    menu.aboutToShow();
    menu.aboutToShow();
    EXPECT_EQ(titles()[0], "Stored");
    mainAppObject.withheld[1](answered("late"));
    mainAppObject.withheld[0](answered("later still"));
    EXPECT_EQ(titles()[0], "Stored") << "the answer is taken on the main loop";
    loop.runPending();
    EXPECT_EQ(titles()[0], "Title late");
    users.stored = FakeUserManager::Stored::LoggedOut;
    menu.aboutToShow();
    EXPECT_THAT(titles(), ElementsAre("(No upcoming meetings)", "---", "Support", "Help Center", "Quit"));
    EXPECT_THAT(mainAppObject.requests, ElementsAre("fetch", "fetch"));
}

TEST_F(AgentMenuTest, IsFilledAsSoonAsItsContentMayBeAnotherOnceAHostHasAskedForIt) {
    delegate.showPopover(nullptr);
    EXPECT_FALSE(store.changed || users.changed);
    EXPECT_EQ(loop.pendingTimers(), 0U);
    menu.aboutToShow();
    const std::vector<std::pair<const char*, std::function<void()>>> tidings{
        {"a synchronisation",
         [&] {
             for (int write = 0; write < 1000; ++write)
                 store.changed();
         }},
        {"the user", [&] { users.changed(); }},
        {"the popover", [&] { delegate.showPopover(nullptr); }},
        {"the main app's end", [&] { workspace.stop(mainApp); }},
        {"the clock", [&] { loop.setClock(loop.now()); }},
        {"the start of a meeting", [&] { loop.advance(std::chrono::hours(1)); }}};
    const QDateTime soon = QDateTime::currentDateTimeUtc().addSecs(3500);
    for (const auto& [tiding, come] : tidings) {
        store.meetings = {{"s", tiding, soon.toString(Qt::ISODate).toStdString()}};
        store.queries.clear();
        come();
        loop.advance(RunLoop::Seconds(1));
        EXPECT_THAT(titles()[0], EndsWith(tiding));
        EXPECT_LE(store.queries.size(), 2U) << tiding << " makes the popover ask as well at most";
    }
}

TEST_F(AgentMenuTest, KeepsTheMainAppsAnswerAndAsksItOnlyWhenTheStoreHasOtherMeetings) {
    startMainApp();
    mainAppObject.meetings = answered("m");
    menu.aboutToShow();
    loop.advance(RunLoop::Seconds(1));
    EXPECT_EQ(titles()[0], "Title m");
    const auto asked = mainAppObject.requests.size();
    store.changed();
    loop.advance(RunLoop::Seconds(1));
    EXPECT_EQ(mainAppObject.requests.size(), asked)
        << "one that writes when it is asked would be asked for ever";
    mainAppObject.withholds = true;
    store.meetings = std::vector<Meeting>{{"s", "Stored", std::nullopt}};
    store.changed();
    loop.advance(RunLoop::Seconds(1));
    EXPECT_EQ(mainAppObject.requests.size(), asked + 1);
    EXPECT_EQ(titles()[0], "Title m") << "no menu in between";
    menu.aboutToShow();
    EXPECT_EQ(titles()[0], "Stored") << "it does not answer";
}

TEST_F(AgentMenuTest, DoesWhatThePopoverDoesAndClosesItButToQuit) {
    SharedInstance<Bundle>::provide([] { return Bundle::inFolder("/nowhere"); });
    startMainApp();
    mainAppObject.meetings = answered("m1");
    menu.aboutToShow();
    loop.runPending();
    workspace.asked = [this] { EXPECT_FALSE(delegate.popover().isShown()) << "it closes first"; };
    for (const char* title : {"Title m1", "Create a new meeting", "Support", "Help Center"}) {
        delegate.showPopover(nullptr);
        choose(title);
        EXPECT_FALSE(delegate.popover().isShown()) << title;
    }
    std::erase(mainAppObject.requests, "fetch");
    EXPECT_THAT(mainAppObject.requests, ElementsAre("open m1", "create"));
    EXPECT_THAT(workspace.openedURLs,
                ElementsAre(::testing::StartsWith("mailto:"), "https://help.velloren.example"));
    delegate.showPopover(nullptr);
    choose("Quit");
    EXPECT_TRUE(delegate.popover().isShown());
    EXPECT_EQ(log.messages.back(), "applicationWillTerminate");
    SharedInstance<Bundle>::reset();
}

} // namespace velloren
