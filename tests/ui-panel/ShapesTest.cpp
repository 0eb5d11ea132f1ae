#include "ui/panel/HeroMotion.h"
#include "ui/panel/Triangle.h"
#include "ui/panel/Vesica.h"

#include <gtest/gtest.h>

namespace {

// A point on the outline: just inside is inside, just outside is outside.
void expectOnEdge(const QPainterPath& path, QPointF point, QPointF outward) {
    EXPECT_TRUE(path.contains(point - outward * 0.5)) << point.x() << "," << point.y();
    EXPECT_FALSE(path.contains(point + outward * 0.5)) << point.x() << "," << point.y();
}

} // namespace

TEST(Vesica, TouchesTheRectangleAtItsTipsAndSides) {
    const QRectF rect(10, 20, 40, 100);
    const QPainterPath path = Vesica::path(rect);
    EXPECT_NEAR(path.boundingRect().left(), 10, 0.01);
    EXPECT_NEAR(path.boundingRect().right(), 50, 0.01);
    EXPECT_NEAR(path.boundingRect().top(), 20, 0.01);
    EXPECT_NEAR(path.boundingRect().bottom(), 120, 0.01);
    expectOnEdge(path, {30, 20}, {0, -1});
    expectOnEdge(path, {30, 120}, {0, 1});
    expectOnEdge(path, {10, 70}, {-1, 0});
    expectOnEdge(path, {50, 70}, {1, 0});
    // Pointed, not round: the corners of the rectangle near the tips are well outside.
    EXPECT_FALSE(path.contains(QPointF(20, 30)));
    EXPECT_TRUE(Vesica::path(QRectF(0, 0, 0, 10)).isEmpty());
}

TEST(Vesica, MatchesTheHeroOutlineTable) {
    const auto outline = HeroMotion::outline();
    ASSERT_EQ(outline.size(), 162u);
    const QPainterPath path = Vesica::path(QRectF(-41, -79, 82, 158));
    for (const QPointF& point : outline) {
        EXPECT_TRUE(path.contains(point * 0.98)) << point.x() << "," << point.y();
        EXPECT_FALSE(path.contains(point * 1.02)) << point.x() << "," << point.y();
    }
}

TEST(Triangle, CornersFollowThePull) {
    const QRectF rect(0, 0, 100, 80);
    const auto upright = Triangle{0, 0}.corners(rect);
    EXPECT_EQ(upright[0], QPointF(50, 0));
    EXPECT_EQ(upright[1], QPointF(100, 80));
    EXPECT_EQ(upright[2], QPointF(0, 80));
    const auto leaning = Triangle{0, 1}.corners(rect);
    EXPECT_NEAR(leaning[0].x(), 28, 1e-9);
    EXPECT_EQ(leaning[1], QPointF(100, 80));
    EXPECT_NEAR(leaning[2].x(), 28, 1e-9);
    EXPECT_NEAR(leaning[2].y(), 8, 1e-9);
}

TEST(Triangle, SharpCornersAreTheCornersThemselves) {
    const QPainterPath path = Triangle{0, 0}.path(QRectF(0, 0, 100, 80));
    EXPECT_EQ(path.boundingRect(), QRectF(0, 0, 100, 80));
    EXPECT_TRUE(path.contains(QPointF(50, 40)));
    EXPECT_FALSE(path.contains(QPointF(10, 10)));
}

TEST(Triangle, RoundedCornersStayTangentToTheSides) {
    const QRectF rect(0, 0, 100, 80);
    const QPainterPath path = Triangle{8, 0}.path(rect);
    // Rounding cuts the tips off but keeps the sides: the base still lies on the bottom edge.
    EXPECT_GT(path.boundingRect().top(), 1);
    EXPECT_NEAR(path.boundingRect().bottom(), 80, 0.01);
    EXPECT_FALSE(path.contains(QPointF(99, 79)));
    EXPECT_TRUE(path.contains(QPointF(50, 79)));
    EXPECT_TRUE(path.contains(QPointF(50, 12)));
}

TEST(Triangle, RadiusIsCappedAtAQuarterOfTheWidth) {
    const QRectF rect(0, 0, 40, 40);
    const Triangle huge{1000, 0.3};
    EXPECT_EQ(huge.effectiveRadius(rect), 10);
    EXPECT_EQ(huge.path(rect), (Triangle{10, 0.3}.path(rect)));
    EXPECT_NE(huge.path(rect), (Triangle{6, 0.3}.path(rect)));
}
