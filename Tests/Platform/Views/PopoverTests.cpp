#include "Platform/Views/Popover.h"
#include "Platform/Views/PopoverPlacement.h"
#include "Platform/Views/PopoverWindow.h"
#include "Tests/Support/FakeDesktop.h"
#include "Tests/Support/QtTest.h"

#include <QPointer>
#include <QVBoxLayout>

#include <string>
#include <tuple>
#include <vector>

namespace velloren {

namespace {

class JournalController final : public ViewController {
  public:
    explicit JournalController(std::vector<std::string>& journal) : journal(journal) {
        auto* layout = new QVBoxLayout(&root);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(&row);
        row.setFixedSize(200, 100);
    }

    QWidget& view() override { return root; }

    void viewWillAppear() override { journal.push_back(root.isVisible() ? "too late" : "will appear"); }

    void viewDidAppear() override { journal.push_back(root.isVisible() ? "did appear" : "too early"); }

    View root;
    View row{&root};

  private:
    std::vector<std::string>& journal;
};

class PopoverTest : public QtTest {
  protected:
    PopoverTest() { popover.setContentViewController(std::unique_ptr<ViewController>(controller)); }

    void show() { popover.showRelativeToRect(anchor.rect(), anchor, RectEdge::MaxY); }

    FakeWindowServer& server = FakeWindowServer::install();
    std::vector<std::string> journal;
    JournalController* controller = new JournalController(journal);
    View anchor;
    Popover popover;
};

} // namespace

TEST_F(PopoverTest, IsShownOnceUntilItsOwnerClosesItAndFollowsTheSizeOfItsContent) {
    show();
    show();
    EXPECT_EQ(journal, (std::vector<std::string>{"will appear", "did appear"}));
    int requests = 0;
    popover.setCloseRequestHandler([&] { ++requests; });
    popover.contentWindow()->close();
    EXPECT_TRUE(popover.isShown());
    EXPECT_EQ(requests, 0) << "only what the user asks of the window manager is a request";
    popover.performClose();
    EXPECT_FALSE(popover.isShown());
    EXPECT_FALSE(controller->root.isVisible());
    EXPECT_EQ(popover.contentWindow(), nullptr);
    show();
    EXPECT_EQ(journal.size(), 4u) << "every showing is an appearance";
    const int before = popover.contentWindow()->height();
    controller->row.setFixedHeight(160);
    EXPECT_TRUE(waitUntil([&] { return popover.contentWindow()->height() == before + 60; }));
    EXPECT_EQ(controller->root.height(), 160);
}

TEST_F(PopoverTest, AsksOnceToBeClosedWhenTheScreensChangeButNotForABarThatHides) {
    QScreen& screen = *QGuiApplication::primaryScreen();
    int requests = 0;
    popover.setCloseRequestHandler([&] {
        ++requests;
        popover.performClose();
    });
    const auto requestsAfter = [&](const std::function<void()>& change) {
        show();
        change();
        EXPECT_EQ(requests, 0) << "Qt is in the middle of it";
        runPendingEvents();
        popover.performClose();
        return std::exchange(requests, 0);
    };
    EXPECT_EQ(requestsAfter([&] { screen.availableGeometryChanged({}); }), 0);
    EXPECT_EQ(requestsAfter([&] {
                  screen.geometryChanged({});
                  qApp->screenRemoved(&screen);
              }),
              1);
    qApp->screenAdded(&screen);
    runPendingEvents();
    EXPECT_EQ(requests, 0) << "nothing is open";
}

TEST_F(PopoverTest, KeepsItsWindowWhereTheDisplayDoesAndAsLongAsItBlendsAsTheDisplayDoes) {
    for (const auto& [keeps, composited, kept] :
         {std::tuple(true, true, true), {true, false, false}, {true, true, false}, {false, true, false}}) {
        server.keepsWindows = keeps;
        show();
        const QPointer<Window> former = popover.contentWindow();
        popover.performClose();
        runPendingEvents();
        EXPECT_EQ(former != nullptr, keeps);
        server.composited = composited;
        show();
        EXPECT_EQ(popover.contentWindow() == former, kept) << keeps << composited;
        EXPECT_TRUE(popover.contentWindow()->isVisible() && controller->root.isVisible());
        popover.performClose();
    }
}

TEST(PopoverPlacement, StandsBesideItsIconInsideTheScreenWithItsArrowAtTheIcon) {
    using enum ArrowEdge;
    constexpr QRect screen(0, 0, 1280, 800);
    constexpr QRect second(1280, 0, 1920, 1080);
    constexpr QRect tiny(0, 0, 200, 100);

    struct {
        const char* where;
        QPoint icon; ///< the middle of it
        QRect screen;
        QRect available;
        ArrowEdge edge;
        QRect frame;
        int arrow;
    } const places[] = {
        {"panel at the top", {640, 15}, screen, {0, 30, 1280, 770}, Top, {480, 30, 320, 278}, 160},
        {"panel at the bottom", {640, 785}, screen, {0, 0, 1280, 770}, Bottom, {480, 492, 320, 278}, 160},
        {"panel at the left", {20, 400}, screen, {40, 0, 1240, 800}, Left, {40, 265, 328, 270}, 135},
        {"panel at the right", {1260, 400}, screen, {0, 0, 1240, 800}, Right, {912, 265, 328, 270}, 135},
        {"corner of a top panel", {1265, 10}, screen, {0, 30, 1280, 770}, Top, {956, 30, 320, 278}, 309},
        {"corner of a left panel", {20, 10}, screen, {40, 0, 1240, 800}, Left, {40, 4, 328, 270}, 6},
        {"bottom corner, no panel", {13, 789}, screen, screen, Bottom, {4, 501, 320, 278}, 9},
        {"upper half, no panel", {640, 100}, screen, screen, Top, {480, 112, 320, 278}, 160},
        {"second screen", {1290, 15}, second, {1280, 30, 1920, 1050}, Top, {1284, 30, 320, 278}, 6},
        {"too small a screen", {190, 10}, tiny, tiny, Top, {4, 22, 320, 278}, 186},
    };

    for (const auto& place : places) {
        QRect icon(0, 0, 28, 22);
        icon.moveCenter(place.icon);
        const auto placement = placePopover({icon, place.screen, place.available}, {320, 270});
        EXPECT_EQ(placement, (PopoverPlacement{place.frame, place.edge, place.arrow})) << place.where;
    }
    const PopoverSite nearby{{640, 100, 1, 1}, screen, screen, PopoverSite::Anchor::Nearby};
    EXPECT_EQ(placePopover(nearby, {320, 270}), (PopoverPlacement{{480, 101, 320, 270}, std::nullopt, 0}));
}

} // namespace velloren
