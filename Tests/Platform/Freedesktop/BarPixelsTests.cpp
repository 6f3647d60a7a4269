#include "Platform/Desktop/Appearance.h"
#include "Platform/Freedesktop/Windowing/X11/BarPixels.h"

#include <QPainter>
#include <gtest/gtest.h>

namespace velloren {

TEST(BarPixels, TellDarkBarsFromLightOnesAndNeitherFromBoth) {
    QImage bar(200, 24, QImage::Format_RGB32);
    for (const auto& [color, name] : {std::pair(Qt::black, Appearance::vibrantDark),
                                      {Qt::darkBlue, Appearance::vibrantDark},
                                      {Qt::lightGray, Appearance::vibrantLight},
                                      {Qt::white, Appearance::vibrantLight}}) {
        bar.fill(color);
        EXPECT_EQ(x11::appearanceOf(bar), name) << color;
    }
    QPainter(&bar).fillRect(0, 0, 100, 24, Qt::black);
    EXPECT_EQ(x11::appearanceOf(bar), std::nullopt);
}

} // namespace velloren
