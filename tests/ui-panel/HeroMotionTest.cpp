#include "ui/panel/HeroMotion.h"

#include <QLineF>
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace {

constexpr QPointF centre{148, 98};

double length(QPointF v) {
    return std::hypot(v.x(), v.y());
}

// Every draw lands at the same place in its range: 0 lowest, 1 highest.
HeroMotion::Random fixedDraw(double share) {
    return [share](double low, double high) { return low + share * (high - low); };
}

// The pointer that pulls the prism exactly to where it already is, so it stands still.
QPointF pointerHolding(QPointF pos) {
    return centre + pos / 0.85;
}

} // namespace

TEST(HeroMotion, PullIsProportionalNearTheCentreAndCappedFarAway) {
    EXPECT_NEAR(length(HeroMotion::pullOffset(centre)), 0.85, 1e-9);
    EXPECT_NEAR(length(HeroMotion::pullOffset(centre + QPointF(0.3, 0.4))), 0.85, 1e-9);
    const QPointF near = HeroMotion::pullOffset(centre + QPointF(30, -40));
    EXPECT_NEAR(near.x(), 25.5, 1e-9);
    EXPECT_NEAR(near.y(), -34, 1e-9);
    const QPointF far = HeroMotion::pullOffset(centre + QPointF(0, 200));
    EXPECT_NEAR(far.x(), 0, 1e-9);
    EXPECT_NEAR(far.y(), 76.5, 1e-9);
    EXPECT_NEAR(length(HeroMotion::pullOffset(centre + QPointF(91, 0))), 76.5, 1e-9);
}

TEST(HeroMotion, DriftNeverLeavesItsBounds) {
    for (const QPointF anchor : {QPointF(0, 0), QPointF(45, 35), QPointF(-200, 300)}) {
        double minX = 1e9, maxX = -1e9, minY = 1e9, maxY = -1e9;
        for (double clock = 0; clock < 600; clock += 1.0 / 60) {
            const QPointF at = HeroMotion::driftTarget(anchor, clock);
            minX = std::min(minX, at.x());
            maxX = std::max(maxX, at.x());
            minY = std::min(minY, at.y());
            maxY = std::max(maxY, at.y());
        }
        EXPECT_GE(minX, -34);
        EXPECT_LE(maxX, 50);
        EXPECT_GE(minY, -26);
        EXPECT_LE(maxY, 40);
    }
    // Around the origin it really wanders, by ±20 and ±16.
    EXPECT_NEAR(HeroMotion::driftTarget({}, 5).x(), -20, 1e-9);
}

TEST(HeroMotion, DriftingPrismStaysInBoundsAndStandsStill) {
    HeroMotion motion(fixedDraw(0.5));
    motion.setPointer(centre + QPointF(140, 90)); // pulled into a corner
    for (int i = 0; i < 120; ++i)
        motion.tick();
    motion.setPointer(std::nullopt);
    EXPECT_TRUE(motion.drift());
    for (int i = 0; i < 60 * 120; ++i) {
        motion.tick();
        ASSERT_EQ(motion.velocity(), QPointF());
    }
    // Led back inside from the corner, and kept there.
    EXPECT_GE(motion.pos().x(), -34);
    EXPECT_LE(motion.pos().x(), 50);
    EXPECT_GE(motion.pos().y(), -26);
    EXPECT_LE(motion.pos().y(), 40);
}

TEST(HeroMotion, BusyTonesTurnOnceEvery2Point2Seconds) {
    HeroMotion motion;
    motion.setTone(Tone::building);
    for (int i = 0; i < 66; ++i)
        motion.tick();
    EXPECT_NEAR(motion.turn(), M_PI, 1e-6);
    for (int i = 0; i < 66 + 33; ++i)
        motion.tick();
    EXPECT_NEAR(motion.turn(), M_PI / 2, 1e-6); // a second turn, same direction
    motion.setTone(Tone::success);
    for (int i = 0; i < 120; ++i)
        motion.tick();
    EXPECT_EQ(motion.turn(), 0);
}

TEST(HeroMotion, NoPuffsWithoutAPointer) {
    HeroMotion motion(fixedDraw(0.5));
    for (int i = 0; i < 600; ++i)
        motion.tick();
    EXPECT_TRUE(motion.puffs().empty());
}

TEST(HeroMotion, StandingPrismShedsUpwardsFromTheNearestOutlinePoint) {
    HeroMotion motion(fixedDraw(0.5));
    motion.setPointer(pointerHolding(motion.pos()));
    for (int i = 0; i < 9; ++i)
        motion.tick();
    EXPECT_TRUE(motion.puffs().empty()); // 9/60 s is not yet more than 0.16 s
    motion.tick();
    ASSERT_EQ(motion.puffs().size(), 1u);
    EXPECT_LT(length(motion.travelDirection()), 1e-6);

    const auto outline = HeroMotion::outline();
    const QPointF nearest = *std::min_element(outline.begin(), outline.end(), [](auto l, auto r) {
        return length(l - QPointF(26, 13)) < length(r - QPointF(26, 13));
    });
    const Puff& puff = motion.puffs().front();
    EXPECT_EQ(puff.born, nearest);
    EXPECT_DOUBLE_EQ(puff.life, 0.95);
    EXPECT_DOUBLE_EQ(puff.size, 68);
    EXPECT_DOUBLE_EQ(puff.seed, 3.14);
    // Launched straight up at 205 pt/s, then one tick: fast ageing, sway, drag and lift.
    EXPECT_DOUBLE_EQ(puff.age, 1.0 / 15);
    const double sway = 5 * std::sin(1.4 / 15 + 3.14);
    EXPECT_NEAR(puff.p.x(), nearest.x() + sway / 60, 1e-9);
    EXPECT_NEAR(puff.p.y(), nearest.y() - 205.0 / 60, 1e-9);
    EXPECT_NEAR(puff.v.x(), 0, 1e-9);
    EXPECT_NEAR(puff.v.y(), -205 * 0.985 - 1.0 / 24, 1e-9);
}

TEST(HeroMotion, PuffsAwayFromTheMotionAgeFourTimesFaster) {
    HeroMotion motion(fixedDraw(0)); // life 0.7 s
    motion.setPointer(pointerHolding(motion.pos()));
    for (int i = 0; i < 10; ++i)
        motion.tick();
    ASSERT_EQ(motion.puffs().size(), 1u);
    for (int i = 0; i < 9; ++i)
        motion.tick();
    EXPECT_NEAR(motion.puffs().front().age, 10.0 / 15, 1e-9);
    motion.tick(); // the second puff is born, the first reaches 11/15 > 0.7 and goes
    ASSERT_EQ(motion.puffs().size(), 1u);
    EXPECT_NEAR(motion.puffs().front().age, 1.0 / 15, 1e-9);
}

TEST(HeroMotion, PuffsAlongTheMotionAgeInRealTime) {
    HeroMotion motion(fixedDraw(0.5));
    motion.setPointer(centre + QPointF(200, 0)); // hard to the right
    for (int i = 0; i < 10; ++i)
        motion.tick();
    ASSERT_EQ(motion.puffs().size(), 1u);
    const Puff& puff = motion.puffs().front();
    EXPECT_GT(motion.velocity().x(), 50);
    EXPECT_GT(puff.born.x(), 0); // shed from the leading side
    EXPECT_DOUBLE_EQ(puff.age, 1.0 / 60);
}

TEST(HeroMotion, NeverMoreThanSevenPuffs) {
    HeroMotion motion(fixedDraw(1)); // longest lives
    std::size_t most = 0;
    // A steady glide to the right keeps every puff on the leading side, ageing slowly: enough
    // births to pass the cap if it did not hold.
    for (int i = 0; i < 108; ++i) {
        motion.setPointer(centre + QPointF(i * 90.0 / 108, 13 / 0.85));
        motion.tick();
        most = std::max(most, motion.puffs().size());
    }
    EXPECT_EQ(most, std::size_t(HeroMotion::maxPuffs));
    // Then half a minute of sweeping the pointer around.
    for (int i = 0; i < 60 * 30; ++i) {
        const double angle = i / 60.0 * 1.3;
        motion.setPointer(centre + QPointF(std::cos(angle) * 140, std::sin(angle) * 90));
        motion.tick();
        ASSERT_LE(motion.puffs().size(), std::size_t(HeroMotion::maxPuffs));
    }
}

TEST(HeroMotion, ResetStartsAfreshButKeepsTheTone) {
    HeroMotion motion(fixedDraw(0.5));
    motion.setTone(Tone::queued);
    motion.setPointer(centre + QPointF(100, 0));
    for (int i = 0; i < 100; ++i)
        motion.tick();
    motion.reset();
    EXPECT_EQ(motion.tone(), Tone::queued);
    EXPECT_EQ(motion.clock(), 0);
    EXPECT_EQ(motion.pos(), QPointF(26, 13));
    EXPECT_TRUE(motion.puffs().empty());
    EXPECT_FALSE(motion.target());
}
