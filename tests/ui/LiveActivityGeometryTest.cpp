#include "ui/status/LiveActivityGeometry.h"

#include <gtest/gtest.h>

namespace G = LiveActivityGeometry;

namespace {

// A 1440-wide screen with a 25-pixel panel at the top, and tray icons 37 pixels wide.
const QRectF area(0, 25, 1440, 875);

QRectF trayIconAt(double left) {
    return {left, 0, 37, 25};
}

} // namespace

TEST(LiveActivityGeometry, HeightsFollowTheRowCount) {
    EXPECT_EQ(G::contentHeight(0), 68);
    EXPECT_EQ(G::contentHeight(1), 68);
    EXPECT_EQ(G::contentHeight(5), 316);
    EXPECT_EQ(G::panelHeight(3) - G::panelHeight(1), 124);
    EXPECT_EQ(G::panelWidth, 472);
}

TEST(LiveActivityGeometry, UnderAnIconAtTheRightEdgeTheCapsuleStopsShortOfTheEdge) {
    const G::Placement p = G::place(trayIconAt(1400), area, 1);
    // Anchor 1418.5; x = min(max(8, 1228.5), 1440 - 380 - 8) = 1052.
    EXPECT_DOUBLE_EQ(p.beakX, 366.5);
    EXPECT_EQ(p.frame, QRectF(1052 - 46, 25 - 46, 472, 160));
}

TEST(LiveActivityGeometry, UnderAnIconAtTheLeftEdgeTheBeakMovesLeft) {
    const G::Placement p = G::place(trayIconAt(10), area, 3);
    EXPECT_DOUBLE_EQ(p.beakX, 20.5);
    EXPECT_EQ(p.frame, QRectF(8 - 46, 25 - 46, 472, 192 + 92));
}

TEST(LiveActivityGeometry, WithoutAnIconTheCapsuleHangsFromTheTopCentre) {
    const G::Placement p = G::place(std::nullopt, area, 2);
    EXPECT_DOUBLE_EQ(p.beakX, 190);
    EXPECT_EQ(p.frame, QRectF(720 - 190 - 46, 25 + 4 - 46, 472, 130 + 92));
}

TEST(LiveActivityGeometry, APanelAtTheBottomPutsTheCapsuleAboveTheIcon) {
    const QRectF usable(0, 0, 1440, 870);
    const G::Placement p = G::place(QRectF(1400, 870, 37, 30), usable, 2);
    EXPECT_DOUBLE_EQ(p.frame.bottom() - 46, 870);
    EXPECT_DOUBLE_EQ(p.beakX, 366.5);
}
