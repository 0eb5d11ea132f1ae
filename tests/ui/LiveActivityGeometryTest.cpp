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

TEST(LiveActivityGeometry, WithoutAnIconTheCapsuleHangsInTheTopRightCorner) {
    const G::Placement p = G::place(std::nullopt, area, 2);
    EXPECT_EQ(p.frame, QRectF(1440 - 8 - 380 - 46, 25 + 4 - 46, 472, 130 + 92));
}

// The content (the frame less its margin) touches the icon on the side away from the tray, on
// screen; only a bottom tray turns the beak down.
TEST(LiveActivityGeometry, TheCapsuleSitsNextToTheIconOnWhicheverEdgeTheTrayIs) {
    struct Case {
        QRectF icon;
        QRectF area;
        QRectF content;
        TrayEdge edge;
    } const cases[] = {
        {QRectF(1400, 870, 37, 30),
         QRectF(0, 0, 1440, 870),
         {1052, 870 - 130, 380, 130},
         TrayEdge::bottom},
        {QRectF(700, 880, 1, 1),
         QRectF(0, 0, 1440, 900),
         {510.5, 880 - 130, 380, 130},
         TrayEdge::bottom}, // a click on a bar that reserves no room
        {QRectF(0, 400, 30, 30), QRectF(30, 0, 1410, 900), {38, 400, 380, 130}, TrayEdge::left},
        {QRectF(1410, 850, 30, 30),
         QRectF(0, 0, 1410, 900),
         {1022, 770, 380, 130},
         TrayEdge::right},
    };
    for (const Case& c : cases) {
        const G::Placement p = G::place(c.icon, c.area, 2);
        EXPECT_EQ(p.frame.adjusted(46, 46, -46, -46), c.content)
            << c.icon.x() << ", " << c.icon.y();
        EXPECT_EQ(p.edge, c.edge);
    }
}
