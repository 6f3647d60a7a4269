#include "Platform/Views/Layer.h"

#include <gtest/gtest.h>

#include <numbers>

namespace velloren {

namespace {

using namespace std::chrono_literals;

BasicAnimation halfTurn(double repeatCount) {
    return {"transform.rotation.z", std::numbers::pi, 1s, repeatCount};
}

} // namespace

TEST(Layer, TellsItsViewOfChangesBelowIt) {
    Layer root;
    int changes = 0;
    root.setChangeHandler([&] { ++changes; });
    const auto child = std::make_shared<Layer>();
    root.addSublayer(child);
    const int afterAdding = changes;
    child->setBackgroundColor(Qt::red);
    EXPECT_EQ(changes, afterAdding + 1);
    child->removeFromSuperlayer();
    child->setBackgroundColor(Qt::blue);
    EXPECT_EQ(changes, afterAdding + 2) << "a layer that left tells nobody";
    EXPECT_TRUE(root.sublayers().empty());
}

TEST(Layer, LetsASublayerOutliveIt) {
    const auto child = std::make_shared<Layer>();
    {
        Layer root;
        root.addSublayer(child);
    }
    child->removeFromSuperlayer();
    EXPECT_EQ(child->superlayer(), nullptr);
}

TEST(Layer, TurnsOverAndOverUntilItsOneAnimationOfThatKeyIsRemoved) {
    Layer layer;
    layer.addAnimation(halfTurn(1), "key");
    const auto start = Layer::Clock::now();
    layer.addAnimation(halfTurn(BasicAnimation::forever), "key");
    const auto later = Layer::Clock::now();
    EXPECT_LE(layer.rotation(start + 250ms), std::numbers::pi / 4);
    EXPECT_GE(layer.rotation(later + 250ms), std::numbers::pi / 4);
    EXPECT_TRUE(layer.isAnimating(later + 24h));
    EXPECT_LT(layer.rotation(start + 24h + 500ms), std::numbers::pi);
    layer.removeAnimationForKey("key");
    EXPECT_EQ(layer.animationForKey("key"), nullptr);
    EXPECT_FALSE(layer.isAnimating(later));
}

} // namespace velloren
