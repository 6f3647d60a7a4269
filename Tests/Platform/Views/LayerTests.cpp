#include "Platform/Views/Layer.h"

#include <gtest/gtest.h>

#include <numbers>

namespace velloren {

using namespace std::chrono_literals;
using std::numbers::pi;

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
