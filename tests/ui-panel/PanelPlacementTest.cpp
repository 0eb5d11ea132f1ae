#include "ui/panel/PanelPlacement.h"

#include "support/QtPrinters.h"

#include <gtest/gtest.h>

namespace {

const QSize panel(320, 400);
const QRect screen(0, 28, 1440, 872); // a 28-pixel bar at the top

} // namespace

TEST(PanelPlacement, CentredUnderTheIconAndKeptSixPixelsInsideTheScreen) {
    EXPECT_EQ(PanelPlacement::frame({700, 24}, panel, screen), QRect(540, 34, 320, 400));
    // Near the right edge the right margin holds; near the left, the left one.
    EXPECT_EQ(PanelPlacement::frame({1430, 24}, panel, screen).right(), 1440 - 1 - 6);
    EXPECT_EQ(PanelPlacement::frame({10, 24}, panel, screen).left(), 6);
    // Without a screen nothing is clamped.
    EXPECT_EQ(PanelPlacement::frame({10, 24}, panel, std::nullopt).left(), 10 - 160);
    // Narrower than the panel: the right margin wins.
    EXPECT_EQ(PanelPlacement::frame({100, 24}, panel, QRect(0, 0, 300, 900)).right(), 300 - 1 - 6);
}

TEST(PanelPlacement, ATrayAtTheBottomOpensThePanelAboveItsBar) {
    const QRect above(0, 0, 1440, 872); // the tray bar takes the last 28 pixels
    const QRect frame = PanelPlacement::frame({1400, 899}, panel, above);
    EXPECT_EQ(frame.bottom(), 871 - 6);
    EXPECT_EQ(frame.right(), 1439 - 6);
    // A panel taller than the screen keeps its top on screen.
    EXPECT_EQ(PanelPlacement::frame({700, 899}, QSize(320, 1000), above).top(), 6);
}
