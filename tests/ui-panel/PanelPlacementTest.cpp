#include "ui/panel/PanelPlacement.h"

#include "support/QtPrinters.h"

#include <gtest/gtest.h>

namespace {

const QSize panel(320, 400);

QRect at(int x, int y) {
    return {QPoint(x, y), QSize(1, 1)};
}

} // namespace

TEST(PanelPlacement, NextToTheIconOnTheSideAwayFromTheTrayAndSixPixelsInsideTheScreen) {
    const QRect top(0, 28, 1440, 872); // a 28-pixel bar at the top
    const QRect bottom(0, 0, 1440, 872);
    const QRect left(40, 0, 1400, 900);
    const QRect right(0, 0, 1400, 900);
    struct Case {
        QRect icon;
        QRect area;
        QRect frame;
    } const cases[] = {
        {at(700, 24), top, {540, 34, 320, 400}},
        {at(1430, 24), top, {1114, 34, 320, 400}},                    // the right margin holds
        {at(10, 24), top, {6, 34, 320, 400}},                         // and the left one
        {at(1400, 899), bottom, {1114, 466, 320, 400}},               // above the bar
        {at(700, 880), QRect(0, 0, 1440, 900), {540, 474, 320, 400}}, // a bar without a strut
        {QRect(4, 300, 32, 32), left, {46, 300, 320, 400}},
        {QRect(1404, 700, 32, 32), right, {1074, 494, 320, 400}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(PanelPlacement::frame(c.icon, panel, c.area), c.frame)
            << "icon at " << c.icon.x() << ", " << c.icon.y();
    // Without a screen nothing is clamped; in one too small the right and top margins win.
    EXPECT_EQ(PanelPlacement::frame(at(10, 24), panel, std::nullopt).left(), 10 - 160);
    EXPECT_EQ(PanelPlacement::frame(at(100, 24), panel, QRect(0, 0, 300, 900)).right(),
              300 - 1 - 6);
    EXPECT_EQ(PanelPlacement::frame(at(700, 899), QSize(320, 1000), bottom).top(), 6);
}
