#include "Platform/Views/PopoverWindow.h"
#include "Tests/Support/AgentTest.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "VellorenMenu/MainViewController.h"
#include "VellorenMenu/MenuAppDelegate.h"

#include <gmock/gmock.h>

namespace velloren {

namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Stored = FakeUserManager::Stored;

class MainViewControllerTest : public AgentTest {
  protected:
    MainViewControllerTest() {
        application.setDelegate(&delegate);
        delegate.applicationDidFinishLaunching();
        log.clear();
    }

    static std::vector<Meeting> meetings(int count) {
        std::vector<Meeting> list;
        list.reserve(std::size_t(count));
        for (int index = 0; index < count; ++index)
            list.push_back({std::to_string(index), "Title " + std::to_string(index), std::nullopt});
        return list;
    }

    void appear() {
        controller->viewWillAppear();
        loop.runPending();
    }

    /// The heights of the no-meetings row, the three meeting rows and the create row.
    [[nodiscard]] std::vector<double> heights() const {
        std::vector<double> all;
        for (const ItemView* row : std::initializer_list<const ItemView*>{
                 controller->noMeetingView, controller->firstMeetingView, controller->secondMeetingView,
                 controller->thridMeetingView, controller->createMeetingView}) {
            EXPECT_EQ(row->isItemHidden(), row->heightConstraint->constant() == 0);
            all.push_back(row->heightConstraint->constant());
        }
        return all;
    }

    [[nodiscard]] std::vector<std::string> shownIds() const {
        return {controller->firstMeetingView->meetingId, controller->secondMeetingView->meetingId,
                controller->thridMeetingView->meetingId};
    }

    const std::vector<double> nothing{34, 0, 0, 0, 40};
    MenuAppDelegate delegate{link};
    std::unique_ptr<MainViewController> controller = MainViewController::controller();
};

} // namespace

TEST_F(MainViewControllerTest, ListsTheFirstThreeOfTheStoreWhileTheMainAppIsOff) {
    store.meetings = meetings(5);
    appear();
    EXPECT_THAT(heights(), ElementsAre(0, 60, 60, 60, 40));
    EXPECT_THAT(shownIds(), ElementsAre("0", "1", "2"));
    EXPECT_EQ(store.queries, std::vector{true});
    const std::string unit = "debug VellorenMenu/MainViewController";
    EXPECT_EQ(log.numberedLines.at(0), unit + ":36 viewWillAppear() MainViewController viewWillAppear(), "
                                              "Velloren main app is running=false");
    EXPECT_EQ(log.numberedLines.at(1),
              unit + ":47 viewWillAppear() Velloren Menu: user currently logged in main app <User ada>");
    EXPECT_EQ(log.lines.at(2), unit + " fetchMeetings() Fetching from Realm, meetings.count=5");
    store.counts = false;
    appear();
    EXPECT_EQ(log.messages.back(), "Fetching from Realm, meetings.count=unknown: too many to count in time");
}

TEST_F(MainViewControllerTest, CollapsesTheRowsThatHaveNoMeetingAndNeedsThemAll) {
    using Row = std::pair<std::optional<std::vector<Meeting>>, std::vector<double>>;
    for (const auto& [stored, expected] : {Row{meetings(2), {0, 60, 60, 0, 40}}, Row{meetings(0), nothing},
                                           Row{meetings(1), {0, 60, 0, 0, 40}}, Row{std::nullopt, nothing}}) {
        store.meetings = stored;
        appear();
        EXPECT_EQ(heights(), expected);
    }
    EXPECT_EQ(log.messages.back(), "Fetching from Realm failed, returned object is nil");
    delete controller->thridMeetingView.data();
    EXPECT_DEATH(controller->viewWillAppear(), "fatal error: a row of the popover is missing");
}

TEST_F(MainViewControllerTest, AsksNobodyElseWhileTheMainAppRunsUnconnected) {
    workspace.instances[mainApp] = 1;
    appear();
    EXPECT_EQ(log.messages.back(), "Fetching meetings from main app...");
    startMainApp();
    controller->thridMeetingView->openButton->click();
    EXPECT_THAT(std::exchange(mainAppObject.requests, {}), ElementsAre("open "))
        << "it never had an identifier";
    application.setDelegate(nullptr);
    appear();
    controller->createMeetingView->createMeetingClicked();
    controller->firstMeetingView->openMeetingClicked();
    EXPECT_EQ(heights(), nothing);
    EXPECT_TRUE(store.queries.empty());
    EXPECT_THAT(mainAppObject.requests, IsEmpty());
}

TEST_F(MainViewControllerTest, FetchesNothingForSomebodyWhoIsNotLoggedIn) {
    startMainApp();
    for (const Stored stored : {Stored::Nobody, Stored::LoggedOut}) {
        users.stored = stored;
        log.clear();
        appear();
        EXPECT_THAT(heights(), ElementsAre(34, 0, 0, 0, 0));
        EXPECT_THAT(log.messages, ElementsAre("MainViewController viewWillAppear(), Velloren main app is "
                                              "running=true"));
    }
    EXPECT_THAT(mainAppObject.requests, IsEmpty());
    EXPECT_TRUE(store.queries.empty());
}

TEST_F(MainViewControllerTest, ListsWhatTheMainAppAnsweredLastInItsOrder) {
    startMainApp();
    mainAppObject.meetings =
        std::vector<Dictionary>{{{"id", "z"}, {"title", "Last"}, {"startTime", "2001-03-07T14:05:00Z"}},
                                {{"id", "a"}, {"title", true}, {"startTime", Scalar()}},
                                {},
                                {{"id", "d"}}};
    controller->viewWillAppear();
    EXPECT_EQ(heights(), nothing) << "the answer is laid out on the main loop";
    loop.runPending();
    EXPECT_THAT(heights(), ElementsAre(0, 60, 60, 60, 40));
    EXPECT_THAT(shownIds(), ElementsAre("z", "a", ""));
    EXPECT_EQ(controller->firstMeetingView->titleLabel->stringValue(), "Last");
    EXPECT_TRUE(controller->firstMeetingView->timeLabel->stringValue().contains("Mar"));
    mainAppObject.withholds = true;
    appear();
    appear();
    mainAppObject.withheld.at(1)(std::vector<Dictionary>(3));
    mainAppObject.withheld.at(0)(std::vector<Dictionary>(1));
    loop.runPending();
    EXPECT_THAT(heights(), ElementsAre(0, 60, 0, 0, 40)) << "the answer that arrived last";
}

TEST_F(MainViewControllerTest, KeepsTheTimesTrueForAsLongAsTheyShowAndWakesUpForNothingElse) {
    const EnvironmentVariable zone("TZ", "UTC");
    const std::string start = "2031-03-07T14:05:00Z";
    store.meetings = std::vector<Meeting>{{"1", "", start}, {"2", "", start}, {"3", "", start}};
    const auto dates = [this] {
        std::vector<QString> texts;
        for (const auto& row :
             {controller->firstMeetingView, controller->secondMeetingView, controller->thridMeetingView})
            texts.push_back(row->timeLabel->stringValue());
        return texts;
    };
    loop.setClock(*meetingDateFormatter().dateFromString(start) - std::chrono::hours(15));
    controller->viewDidDisappear(); // of a popover that never got its place
    controller->viewDidAppear();
    EXPECT_EQ(loop.pendingTimers(), 0u) << "nothing shows yet";
    appear();
    EXPECT_THAT(dates(), Each(QString("Tomorrow at 14:05")));
    EXPECT_EQ(loop.pendingTimers(), 1u);
    controller->firstMeetingView->timeLabel->setStringValue(QString("untouched"));
    loop.advance(std::chrono::minutes(54));
    EXPECT_EQ(dates().front(), "untouched");
    loop.advance(std::chrono::minutes(1));
    EXPECT_THAT(dates(), Each(QString("Today at 14:05")));
    loop.setClock(loop.now() - std::chrono::hours(24));
    EXPECT_THAT(dates(), Each(QString("Tomorrow at 14:05"))) << "somebody set the clock";
    controller->viewDidDisappear();
    appear();
    EXPECT_EQ(loop.pendingTimers(), 0u) << "nothing wakes up for what nobody sees";
}

TEST_F(MainViewControllerTest, LaysAGreyBehindThePopoverAndSetsTheUploadRowAtEachEntry) {
    Popover popover;
    View anchor;
    auto* content = controller.get();
    const UploadItemView& upload = *content->uploadItemView;
    EXPECT_FALSE(upload.titleLabel->isHidden() || upload.animatingView->isHidden());
    popover.setContentViewController(std::move(controller));
    for (int showing = 0; showing < 2; ++showing) {
        sync.syncing = showing == 0;
        popover.showRelativeToRect({0, 0, 28, 22}, anchor, RectEdge::MaxY);
        EXPECT_EQ(upload.titleLabel->stringValue(), showing == 0 ? "Uploading meeting files" : "Up to date");
        EXPECT_TRUE(upload.titleLabel->isHidden() && upload.animatingView->isHidden() &&
                    upload.imageView->isHidden());
        const auto& frame = *static_cast<PopoverWindow*>(popover.contentWindow())->frameView();
        const auto backgrounds = [&] {
            auto views = frame.findChildren<View*>(QString(), Qt::FindDirectChildrenOnly);
            views.removeOne(static_cast<View*>(&content->view()));
            return views;
        };
        ASSERT_EQ(backgrounds().size(), 1) << "those of earlier windows went with them";
        const View* background = backgrounds().front();
        EXPECT_EQ(background->layer()->backgroundColor(), QColor(236, 236, 236));
        EXPECT_EQ(frame.children().first(), background) << "it lies behind the content";
        content->loadUpcoming(meetings(showing + 1));
        ASSERT_TRUE(waitUntil([&] { return background->size() == frame.size(); }));
        popover.performClose();
        runPendingEvents();
    }
}

} // namespace velloren
