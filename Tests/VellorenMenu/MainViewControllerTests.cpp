#include "Platform/Views/PopoverWindow.h"
#include "Tests/Support/AgentTest.h"
#include "VellorenMenu/MainViewController.h"
#include "VellorenMenu/MenuAppDelegate.h"

#include <gmock/gmock.h>

namespace velloren {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Stored = FakeUserManager::Stored;

class OtherDelegate final : public ApplicationDelegate {
  public:
    void applicationDidFinishLaunching() override {}

    void applicationShouldHandleReopen() override {}

    TerminateReply applicationShouldTerminate(const std::string&) override {
        return TerminateReply::TerminateNow;
    }

    void applicationWillTerminate() override {}
};

class MainViewControllerTest : public AgentTest {
  protected:
    MainViewControllerTest() {
        application.setDelegate(&delegate);
        delegate.applicationDidFinishLaunching();
        loop().runPending();
        log.clear();
    }

    static Meeting meeting(const std::string& id) { return {id, "Title " + id, std::nullopt}; }

    static std::vector<Meeting> meetings(int count) {
        std::vector<Meeting> list;
        list.reserve(static_cast<std::size_t>(count));
        for (int index = 0; index < count; ++index)
            list.push_back(meeting(std::to_string(index)));
        return list;
    }

    static Dictionary withId(const std::string& id) {
        Dictionary dictionary;
        dictionary.emplace("id", id);
        return dictionary;
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

    MenuAppDelegate delegate{link};
    std::unique_ptr<MainViewController> controller = MainViewController::controller();
};

} // namespace

TEST_F(MainViewControllerTest, ListsTheFirstThreeOfTheStoreWhileTheMainAppIsOff) {
    store.meetings = meetings(5);
    controller->viewWillAppear();
    EXPECT_THAT(heights(), ElementsAre(0, 60, 60, 60, 40));
    EXPECT_THAT(shownIds(), ElementsAre("0", "1", "2"));
    EXPECT_EQ(controller->secondMeetingView->titleLabel->stringValue(), "Title 1");
    EXPECT_EQ(store.queries, std::vector{true});
    EXPECT_THAT(log.numberedLines().size(), 3u);
    EXPECT_EQ(
        log.numberedLines()[0],
        "debug VellorenMenu/MainViewController:36 viewWillAppear() MainViewController viewWillAppear(), "
        "Velloren main app is running=false");
    EXPECT_EQ(log.numberedLines()[1],
              "debug VellorenMenu/MainViewController:47 viewWillAppear() Velloren Menu: "
              "user currently logged in main app <User ada>");
    EXPECT_EQ(log.lines()[2],
              "debug VellorenMenu/MainViewController fetchMeetings() Fetching from Realm, meetings.count=5");
}

TEST_F(MainViewControllerTest, CollapsesTheRowsThatHaveNoMeeting) {
    const std::vector<std::vector<double>> expected{{34, 0, 0, 0, 40}, {0, 60, 0, 0, 40}, {0, 60, 60, 0, 40}};
    for (int count : {2, 0, 1}) {
        store.meetings = meetings(count);
        controller->viewWillAppear();
        EXPECT_EQ(heights(), expected[std::size_t(count)]) << count;
    }
}

TEST_F(MainViewControllerTest, ShowsThatThereIsNothingWhenTheStoreCannotBeRead) {
    store.meetings.reset();
    controller->viewWillAppear();
    EXPECT_THAT(heights(), ElementsAre(34, 0, 0, 0, 40));
    EXPECT_EQ(log.messages().back(), "Fetching from Realm failed, returned object is nil");
    controller->loadUpcoming(meetings(1));
    EXPECT_THAT(heights(), ElementsAre(0, 60, 0, 0, 40));
    controller->loadUpcoming(std::nullopt);
    EXPECT_THAT(heights(), ElementsAre(34, 0, 0, 0, 40));
}

TEST_F(MainViewControllerTest, FetchesNothingForSomebodyWhoIsNotLoggedIn) {
    startMainApp();
    store.meetings = meetings(2);
    for (const Stored stored : {Stored::Nobody, Stored::LoggedOut}) {
        users.stored = stored;
        log.clear();
        controller->viewWillAppear();
        loop().runPending();
        EXPECT_THAT(heights(), ElementsAre(34, 0, 0, 0, 0));
        EXPECT_THAT(log.messages(), ElementsAre("MainViewController viewWillAppear(), Velloren main app is "
                                                "running=true"));
    }
    EXPECT_THAT(mainAppObject.requests, IsEmpty());
    EXPECT_TRUE(store.queries.empty());
}

TEST_F(MainViewControllerTest, ListsWhatTheMainAppAnswersInItsOrder) {
    startMainApp();
    Dictionary first = withId("z");
    first.emplace("title", "Last");
    first.emplace("startTime", "2001-03-07T14:05:00Z");
    Dictionary second = withId("a");
    second.emplace("title", true);
    second.emplace("startTime", Scalar());
    mainAppObject.meetings = std::vector{first, second, Dictionary(), withId("d")};
    controller->secondMeetingView->titleLabel->setStringValue(QStringLiteral("earlier"));
    controller->viewWillAppear();
    EXPECT_THAT(heights(), ElementsAre(34, 0, 0, 0, 40)) << "the answer is laid out on the main loop";
    loop().runPending();
    EXPECT_THAT(heights(), ElementsAre(0, 60, 60, 60, 40));
    EXPECT_THAT(shownIds(), ElementsAre("z", "a", ""));
    EXPECT_EQ(controller->secondMeetingView->titleLabel->stringValue(), "earlier");
    EXPECT_FALSE(controller->firstMeetingView->timeLabel->stringValue().isEmpty());
    EXPECT_TRUE(store.queries.empty());
}

TEST_F(MainViewControllerTest, KeepsTheAnswerThatArrivedLast) {
    startMainApp();
    mainAppObject.withholds = true;
    controller->viewWillAppear();
    controller->viewWillAppear();
    mainAppObject.withheld[1](std::vector{withId("second")});
    mainAppObject.withheld[0](std::vector{withId("first")});
    loop().runPending();
    EXPECT_EQ(controller->firstMeetingView->meetingId, "first");
}

TEST_F(MainViewControllerTest, AsksNobodyElseWhileTheMainAppRunsUnconnected) {
    workspace.instances[mainApp] = 1;
    store.meetings = meetings(2);
    controller->viewWillAppear();
    loop().runPending();
    EXPECT_THAT(heights(), ElementsAre(34, 0, 0, 0, 40));
    EXPECT_TRUE(store.queries.empty());
    EXPECT_EQ(log.messages().back(), "Fetching meetings from main app...");
}

TEST_F(MainViewControllerTest, FetchesNothingUnderAnotherDelegate) {
    startMainApp();
    OtherDelegate other;
    application.setDelegate(&other);
    controller->viewWillAppear();
    EXPECT_THAT(heights(), ElementsAre(34, 0, 0, 0, 40));
    EXPECT_THAT(mainAppObject.requests, IsEmpty());
    controller->createMeetingView->createMeetingClicked();
    controller->firstMeetingView->openMeetingClicked();
    EXPECT_THAT(mainAppObject.requests, IsEmpty());
    application.setDelegate(&delegate);
}

TEST_F(MainViewControllerTest, SetsTheUploadRowAtEachAppearance) {
    sync.syncing = true;
    controller->viewDidAppear();
    EXPECT_EQ(controller->uploadItemView->titleLabel->stringValue(), "Uploading meeting files");
    sync.syncing = false;
    controller->viewDidAppear();
    EXPECT_EQ(controller->uploadItemView->titleLabel->stringValue(), "Up to date");
    EXPECT_EQ(controller->uploadItemView->imageView->image()->name(), "upToDate");
}

TEST_F(MainViewControllerTest, SendsAClickedRowToTheMainAppAndClosesThePopoverFirst) {
    startMainApp();
    store.meetings = meetings(1);
    mainAppObject.meetings = std::vector{withId("m1")};
    controller->viewWillAppear();
    loop().runPending();
    delegate.showPopover(nullptr);
    controller->firstMeetingView->openButton->click();
    EXPECT_FALSE(delegate.popover().isShown());
    delegate.showPopover(nullptr);
    controller->createMeetingView->createButton->click();
    EXPECT_FALSE(delegate.popover().isShown());
    controller->thridMeetingView->openButton->click();
    mainAppObject.requests.erase(
        std::remove(mainAppObject.requests.begin(), mainAppObject.requests.end(), "fetch"),
        mainAppObject.requests.end());
    EXPECT_THAT(mainAppObject.requests, ElementsAre("open m1", "create", "open "))
        << "a row that never had an identifier passes an empty one";
}

TEST_F(MainViewControllerTest, StopsTheProcessWhenARowIsMissingFromTheForm) {
    EXPECT_DEATH(
        {
            delete controller->thridMeetingView.data();
            controller->viewWillAppear();
        },
        "fatal error: a row of the popover is missing");
}

TEST_F(MainViewControllerTest, OnlyKeepsTheFlagOfARowWithoutAConstraint) {
    delete controller->firstMeetingView->heightConstraint.data();
    store.meetings = meetings(1);
    controller->viewWillAppear();
    EXPECT_FALSE(controller->firstMeetingView->isItemHidden());
}

TEST_F(MainViewControllerTest, LaysOneGreyBehindTheWholeOfEachPopover) {
    Popover popover;
    View anchor;
    auto* content = controller.get();
    popover.setContentViewController(std::move(controller));
    for (int showing = 0; showing < 3; ++showing) {
        popover.showRelativeToRect({0, 0, 28, 22}, anchor, RectEdge::MaxY);
        const auto& frame = static_cast<PopoverWindow*>(popover.contentWindow())->frameView();
        std::vector<View*> backgrounds;
        for (QObject* child : frame.children()) {
            auto* view = qobject_cast<View*>(child);
            if (view && view != &content->view())
                backgrounds.push_back(view);
        }
        ASSERT_EQ(backgrounds.size(), 1u) << "those of earlier windows went with them";
        EXPECT_EQ(backgrounds.front()->layer()->backgroundColor(), QColor(236, 236, 236));
        EXPECT_EQ(frame.children().first(), backgrounds.front()) << "it lies behind the content";
        content->loadUpcoming(meetings(showing + 1));
        ASSERT_TRUE(waitUntil([&] { return backgrounds.front()->size() == frame.size(); }));
        popover.performClose();
        runPendingEvents();
    }
}

} // namespace velloren
