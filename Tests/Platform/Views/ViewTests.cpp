#include "Platform/Views/View.h"
#include "Tests/Support/QtTest.h"

#include <numbers>

namespace velloren {

namespace {

using namespace std::chrono_literals;
using std::numbers::pi;

class CountingView final : public View {
  public:
    int drawn = 0;

  protected:
    void drawRect(QPainter&, const QRect&) override { ++drawn; }
};

using ViewTest = QtTest;

} // namespace

TEST_F(ViewTest, DrawsAnAnimationOnlyWhileItIsVisible) {
    CountingView root;
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

TEST(Layer, MayEndBeforeASublayerThatGoesOn) {
    std::optional<Layer> root(std::in_place);
    const auto child = std::make_shared<Layer>();
    int changes = 0;
    root->setChangeHandler([&] { ++changes; });
    root->addSublayer(child);
    child->setBackgroundColor(Qt::red);
    EXPECT_EQ(changes, 2);
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
