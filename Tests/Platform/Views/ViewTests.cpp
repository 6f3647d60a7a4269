#include "Platform/Views/View.h"
#include "Tests/Support/QtTest.h"

#include <QEnterEvent>
#include <gmock/gmock.h>

#include <numbers>
#include <string>
#include <vector>

namespace velloren {

namespace {

using namespace std::chrono_literals;
using std::numbers::pi;
using ::testing::ElementsAre;

class PlainWindow final : public Window {
  public:
    [[nodiscard]] QWidget* contentView() const override { return nullptr; }
};

/// Notes what it is told.
class JournalView final : public View {
  public:
    JournalView(std::string name, std::vector<std::string>& journal, QWidget* parent = nullptr)
        : View(parent), name(std::move(name)), journal(journal) {}

    void viewWillMoveToWindow(Window* window) override {
        journal.push_back(name + (window ? " will enter" : " will leave"));
    }

    void viewDidMoveToWindow() override { journal.push_back(name + (hostWindow() ? " entered" : " left")); }

    void updateTrackingAreas() override {
        for (const auto& area : std::vector(trackingAreas()))
            removeTrackingArea(area);
        addTrackingArea(std::make_shared<TrackingArea>(TrackingArea{rect()}));
    }

    int drawn = 0;

  protected:
    void mouseEntered() override { journal.emplace_back("pointer entered"); }

    void mouseExited() override { journal.emplace_back("pointer exited"); }

    void drawRect(QPainter&, const QRect&) override { ++drawn; }

  private:
    std::string name;
    std::vector<std::string>& journal;
};

class ViewTest : public QtTest {
  protected:
    std::vector<std::string> journal;
    JournalView root{"root", journal};
};

} // namespace

TEST_F(ViewTest, TellsEveryViewBelowOfEnteringAndLeavingAWindow) {
    JournalView child("child", journal, &root);
    PlainWindow window;
    moveToSuperview(root, &window);
    moveToSuperview(root, &window); // within a window is neither
    moveToSuperview(root, nullptr);
    EXPECT_THAT(journal, ElementsAre("child will enter", "root will enter", "child entered", "root entered",
                                     "child will leave", "root will leave", "child left", "root left"));
    moveToSuperview(child, nullptr);
}

TEST_F(ViewTest, ReportsThePointerOncePerCrossingAndOnHiding) {
    root.resize(50, 50);
    root.show();
    QEnterEvent enter({5, 5}, {5, 5}, {5, 5});
    QCoreApplication::sendEvent(&root, &enter);
    QCoreApplication::sendEvent(&root, &enter);
    EXPECT_THAT(journal, ElementsAre("pointer entered"));
    root.hide();
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&root, &leave);
    EXPECT_THAT(journal, ElementsAre("pointer entered", "pointer exited"))
        << "hidden is not under the pointer";
    EXPECT_EQ(root.trackingAreas().size(), 1u);
}

TEST_F(ViewTest, DrawsAnAnimationOnlyWhileItIsVisible) {
    root.setWantsLayer(true);
    root.layer()->addAnimation({"transform.rotation.z", pi, 1s, BasicAnimation::forever}, "key");
    root.resize(10, 10);
    root.show();
    ASSERT_TRUE(waitUntil([&] { return root.drawn >= 3; }));
    root.hide();
    runPendingEvents();
    const int last = root.drawn;
    bool later = false;
    QTimer::singleShot(100, [&] { later = true; });
    ASSERT_TRUE(waitUntil([&] { return later; }));
    EXPECT_EQ(root.drawn, last);
}

TEST(Layer, TellsItsViewOfChangesBelowItAndMayEndBeforeASublayer) {
    std::optional<Layer> root(std::in_place);
    int changes = 0;
    root->setChangeHandler([&] { ++changes; });
    const auto child = std::make_shared<Layer>();
    root->addSublayer(child);
    child->setBackgroundColor(Qt::red);
    EXPECT_EQ(changes, 2);
    child->removeFromSuperlayer();
    child->setBackgroundColor(Qt::blue);
    EXPECT_EQ(changes, 3) << "a layer that left tells nobody";
    root->addSublayer(child);
    root.reset();
    EXPECT_EQ(child->superlayer(), nullptr);
}

TEST(Layer, TurnsOverAndOverUntilItsOneAnimationOfThatKeyIsRemoved) {
    Layer layer;
    layer.addAnimation({"transform.rotation.z", pi, 1s, 1}, "key");
    const auto start = Layer::Clock::now();
    layer.addAnimation({"transform.rotation.z", pi, 1s, BasicAnimation::forever}, "key");
    const auto later = Layer::Clock::now();
    EXPECT_LE(layer.rotation(start + 250ms), pi / 4);
    EXPECT_GE(layer.rotation(later + 250ms), pi / 4);
    EXPECT_TRUE(layer.isAnimating(later + 24h));
    layer.removeAnimationForKey("key");
    EXPECT_FALSE(layer.isAnimating(later));
}

} // namespace velloren
