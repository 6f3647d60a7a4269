#include "Platform/Views/Popover.h"
#include "Platform/Views/PopoverWindow.h"
#include "Tests/Support/FakeDesktop.h"
#include "Tests/Support/QtTest.h"

#include <QVBoxLayout>

#include <string>
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
    PopoverTest() {
        FakeWindowServer::install();
        popover.setContentViewController(std::unique_ptr<ViewController>(controller));
    }

    void show() { popover.showRelativeToRect(anchor.rect(), anchor, RectEdge::MaxY); }

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
    runPendingEvents();
    for (QWidget* widget : QApplication::topLevelWidgets())
        EXPECT_FALSE(qobject_cast<PopoverWindow*>(widget)) << "the window of a showing goes with it";
    show();
    EXPECT_EQ(journal.size(), 4u) << "every showing is an appearance";
    const int before = popover.contentWindow()->height();
    controller->row.setFixedHeight(160);
    EXPECT_TRUE(waitUntil([&] { return popover.contentWindow()->height() == before + 60; }));
    EXPECT_EQ(controller->root.height(), 160);
}

} // namespace velloren
