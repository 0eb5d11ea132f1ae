#include "ui/panel/PrismHero.h"
#include "support/TempPreferences.h"
#include "ui/panel/HeroMotion.h"
#include "ui/status/StatusPalette.h"

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

TEST(HeroMotion, LeansTowardsThePointerAndNoFurtherThanItsReach) {
    const QPointF nearPull = HeroMotion::pullOffset(centre + QPointF(30, -40));
    EXPECT_NEAR(nearPull.x() / nearPull.y(), 30.0 / -40, 1e-9);
    EXPECT_TRUE(nearPull.x() > 0 && length(nearPull) < 50);
    EXPECT_GT(length(HeroMotion::pullOffset(centre + QPointF(60, -80))), length(nearPull));
    const QPointF far = HeroMotion::pullOffset(centre + QPointF(0, 200));
    EXPECT_EQ(far, HeroMotion::pullOffset(centre + QPointF(0, 600)));
    EXPECT_GT(length(HeroMotion::pullOffset(centre)), 0); // right at the centre: still a lean
}

TEST(HeroMotion, LeftAloneItDriftsBackIntoItsBoundsAndStaysThere) {
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
    EXPECT_TRUE(QRectF(QPointF(-34, -26), QPointF(50, 40)).contains(motion.pos()))
        << motion.pos().x();
    EXPECT_TRUE(motion.puffs().empty()); // no pointer, no puffs
}

TEST(HeroMotion, BusyTonesTurnAndOthersComeToRest) {
    HeroMotion motion;
    motion.setTone(Tone::building);
    for (int i = 0; i < 66; ++i)
        motion.tick();
    EXPECT_GT(motion.turn(), 0);
    motion.setTone(Tone::success);
    for (int i = 0; i < 120; ++i)
        motion.tick();
    EXPECT_EQ(motion.turn(), 0);
}

TEST(HeroMotion, AStandingPrismShedsUpwardsFromTheNearestPointOfItsOutline) {
    HeroMotion motion(fixedDraw(0.5));
    motion.setPointer(pointerHolding(motion.pos()));
    for (int i = 0; i < 9; ++i)
        motion.tick();
    EXPECT_TRUE(motion.puffs().empty()); // not yet
    motion.tick();
    ASSERT_EQ(motion.puffs().size(), 1u);
    const auto outline = HeroMotion::outline();
    const QPointF nearest = *std::min_element(outline.begin(), outline.end(), [&](auto l, auto r) {
        return length(l - motion.pos()) < length(r - motion.pos());
    });
    EXPECT_EQ(motion.puffs().front().born, nearest);
    EXPECT_LT(motion.puffs().front().v.y(), -100);
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
    EXPECT_EQ(most, 7u);
    motion.reset();
    EXPECT_TRUE(motion.puffs().empty());
    EXPECT_EQ(motion.clock(), 0);
}

TEST(PrismHero, TakesTheToneColourAndItsCountDimsWhenDisconnectedAndBreathesOnError) {
    TempPreferences prefs;
    StatusPalette palette(*prefs, "#FF0074");
    PrismHero hero;
    hero.setStatusPalette(&palette);
    hero.setTone(Tone::queued);
    EXPECT_EQ(hero.toneColor(), palette.queued());
    hero.setCount(12);
    hero.setTone(Tone::disconnected);
    EXPECT_EQ(hero.countText(), "–");
    EXPECT_LT(hero.countOpacity(), 0.5);
    hero.setTone(Tone::error);
    EXPECT_EQ(hero.countText(), "12");
    double low = 1, high = 0;
    for (int i = 0; i < 2 * 78; ++i) { // one full breath
        hero.tick();
        low = std::min(low, hero.countOpacity());
        high = std::max(high, hero.countOpacity());
    }
    EXPECT_LT(low, 0.7);
    EXPECT_NEAR(high, 1.0, 0.01);
    hero.setTone(Tone::idle);
    EXPECT_DOUBLE_EQ(hero.countOpacity(), 1);

    hero.show();
    for (int i = 0; i < 30; ++i)
        hero.tick();
    hero.hide();
    hero.show(); // every opening starts the motion afresh
    EXPECT_EQ(hero.motion().clock(), 0);
}
