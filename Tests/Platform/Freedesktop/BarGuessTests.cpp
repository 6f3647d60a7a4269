#include "Platform/Freedesktop/Windowing/BarGuess.h"

#include <gtest/gtest.h>

namespace velloren {

TEST(BarGuess, TakesWhatIsMissingForTheBarThatSomebodyIsAt) {
    const QRect screen(1000, 0, 1280, 800);

    struct Case {
        const char* what;
        QPoint place;
        QSize free;
        QRect available;
    };

    for (const Case& each : {
             Case{"at the top", {2000, 3}, {1280, 770}, {1000, 30, 1280, 770}},
             Case{"at the bottom", {2000, 795}, {1280, 770}, {1000, 0, 1280, 770}},
             Case{"at the left", {1010, 700}, {1240, 800}, {1040, 0, 1240, 800}},
             Case{"at the right", {2279, 700}, {1240, 800}, {1000, 0, 1240, 800}},
             Case{"at the top, and another at the left", {1500, 15}, {1240, 770}, {1000, 30, 1280, 770}},
             Case{"thick", {2000, 32}, {1280, 736}, {1000, 64, 1280, 736}},
             Case{"at the top, and another at the bottom", {2000, 15}, {1280, 740}, {1000, 30, 1280, 770}},
             Case{"one that keeps no place", {2000, 5}, {1280, 800}, screen},
             Case{"none", {2000, 400}, {1280, 770}, screen},
             Case{"a size that cannot be", {2000, 5}, {9000, 9000}, screen},
         })
        EXPECT_EQ(availableAround(each.place, screen, each.free), each.available) << each.what;
    EXPECT_EQ(availableAround({2000, 35}, screen, {1280, 770}, 16), QRect(1000, 46, 1280, 754)) << "floating";
    EXPECT_EQ(likelyPlaceOfIcon(screen, {1280, 770}, Qt::RightToLeft), QPoint(1015, 15));
}

} // namespace velloren
