#include "Platform/Views/View.h"
#include "Tests/Support/QtTest.h"

#include <QEnterEvent>

#include <string>
#include <vector>

namespace velloren {

namespace {

class PlainWindow final : public Window {
  public:
    [[nodiscard]] QWidget* contentView() const override { return nullptr; }
};

class JournalView final : public View {
  public:
    JournalView(std::string name, std::vector<std::string>& journal, QWidget* parent = nullptr)
        : View(parent), name(std::move(name)), journal(journal) {}

    void viewWillMoveToWindow(Window* window) override {
        journal.push_back(name + (window ? " will enter" : " will leave"));
    }

    void viewDidMoveToWindow() override { journal.push_back(name + (hostWindow() ? " entered" : " left")); }

  private:
    std::string name;
    std::vector<std::string>& journal;
};

class TrackingView final : public View {
  public:
    void updateTrackingAreas() override {
        for (const auto& area : std::vector(trackingAreas()))
            removeTrackingArea(area);
        addTrackingArea(std::make_shared<TrackingArea>(TrackingArea{rect()}));
    }

    int entered = 0;
    int exited = 0;

  protected:
    void mouseEntered() override { ++entered; }

    void mouseExited() override { ++exited; }
};

class SpinningView final : public View {
  public:
    SpinningView() {
        setWantsLayer(true);
        layer()->addAnimation(
            {"transform.rotation.z", 3.14, std::chrono::seconds(1), BasicAnimation::forever}, "key");
    }

    int drawn = 0;

  protected:
    void drawRect(QPainter&, const QRect&) override { ++drawn; }
};

class ViewTest : public QtTest {};

} // namespace

TEST_F(ViewTest, TellsEveryViewBelowOfEnteringAndLeavingAWindow) {
    std::vector<std::string> journal;
    JournalView root("root", journal);
    JournalView child("child", journal, &root);
    PlainWindow window;
    moveToSuperview(root, &window);
    EXPECT_EQ(journal, (std::vector<std::string>{"child will enter", "root will enter", "child entered",
                                                 "root entered"}));
    journal.clear();
    moveToSuperview(root, &window);
    EXPECT_TRUE(journal.empty()) << "moving within a window is neither";
    moveToSuperview(root, nullptr);
    EXPECT_EQ(journal,
              (std::vector<std::string>{"child will leave", "root will leave", "child left", "root left"}));
    moveToSuperview(child, nullptr);
}

TEST_F(ViewTest, ReportsThePointerOncePerCrossingAndOnHiding) {
    TrackingView view;
    view.resize(50, 50);
    view.show();
    QEnterEvent enter({5, 5}, {5, 5}, {5, 5});
    QCoreApplication::sendEvent(&view, &enter);
    QCoreApplication::sendEvent(&view, &enter);
    EXPECT_EQ(view.entered, 1);
    view.hide();
    EXPECT_EQ(view.exited, 1) << "a view that is gone is not under the pointer";
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&view, &leave);
    EXPECT_EQ(view.exited, 1);
    EXPECT_EQ(view.trackingAreas().size(), 1u);
}

TEST_F(ViewTest, DrawsAnAnimationOnlyWhileItIsVisible) {
    SpinningView view;
    view.resize(10, 10);
    view.show();
    ASSERT_TRUE(waitUntil([&] { return view.drawn >= 3; }));
    view.hide();
    runPendingEvents();
    const int last = view.drawn;
    bool later = false;
    QTimer::singleShot(100, [&] { later = true; });
    ASSERT_TRUE(waitUntil([&] { return later; }));
    EXPECT_EQ(view.drawn, last);
}

} // namespace velloren
