#include "ui/panel/LetterBleed.h"

#include <gtest/gtest.h>

namespace {

struct ShownBleed {
    LetterBleed bleed;
    ShownBleed() {
        bleed.resize(240, 24);
        bleed.setText(QStringLiteral("quillon-web"));
        bleed.show();
    }
};

} // namespace

TEST(LetterBleed, StartsUnderThePointerThenGlidesAfterIt) {
    ShownBleed shown;
    shown.bleed.setFocus({100, 12});
    shown.bleed.setActive(true);
    shown.bleed.tick();
    EXPECT_DOUBLE_EQ(shown.bleed.x(), 100);
    shown.bleed.setFocus({160, 12});
    shown.bleed.tick();
    EXPECT_NEAR(shown.bleed.vx(), 60 * 0.028 * 0.9, 1e-12);
    EXPECT_NEAR(shown.bleed.x(), 100 + 60 * 0.028 * 0.9, 1e-12);
    for (int i = 0; i < 600; ++i)
        shown.bleed.tick();
    EXPECT_NEAR(shown.bleed.x(), 160, 0.01);
}

TEST(LetterBleed, SpotlightFadesInAndOutInAThirdOfASecond) {
    ShownBleed shown;
    shown.bleed.setActive(true);
    EXPECT_TRUE(shown.bleed.isAnimating());
    for (int i = 0; i < 9; ++i)
        shown.bleed.tick();
    // Ease-out: past the linear share half way through.
    EXPECT_GT(shown.bleed.spotlight(), 0.6);
    EXPECT_LT(shown.bleed.spotlight(), 1);
    for (int i = 0; i < 9; ++i)
        shown.bleed.tick();
    EXPECT_DOUBLE_EQ(shown.bleed.spotlight(), 1);

    shown.bleed.setActive(false);
    for (int i = 0; i < 17; ++i)
        shown.bleed.tick();
    EXPECT_GT(shown.bleed.spotlight(), 0);
    EXPECT_TRUE(shown.bleed.isAnimating()); // still fading out
    shown.bleed.tick();
    EXPECT_DOUBLE_EQ(shown.bleed.spotlight(), 0);
    EXPECT_FALSE(shown.bleed.isAnimating());
}

TEST(LetterBleed, TimerStopsWhenHidden) {
    ShownBleed shown;
    shown.bleed.setActive(true);
    EXPECT_TRUE(shown.bleed.isAnimating());
    shown.bleed.hide();
    EXPECT_FALSE(shown.bleed.isAnimating());
    shown.bleed.show();
    EXPECT_TRUE(shown.bleed.isAnimating());
}

TEST(LetterBleed, WobbleSwapsTheCopiesWhileActive) {
    ShownBleed shown;
    shown.bleed.setActive(true);
    bool seen[2] = {false, false};
    for (int i = 0; i < 3 * LetterBleed::wobbleFrames; ++i) {
        shown.bleed.tick();
        seen[shown.bleed.wobble()] = true;
    }
    EXPECT_TRUE(seen[0] && seen[1]);
}

TEST(LetterBleed, ShowsTheNameInCapitalsElidedInTheMiddle) {
    ShownBleed shown;
    EXPECT_EQ(shown.bleed.shownText(), QStringLiteral("QUILLON-WEB"));
    shown.bleed.setText(QStringLiteral("a-very-long-project-name-that-cannot-fit-in-a-row"));
    const QString shownText = shown.bleed.shownText();
    EXPECT_TRUE(shownText.startsWith(u"A-VERY")) << shownText.toStdString();
    EXPECT_TRUE(shownText.endsWith(u"ROW")) << shownText.toStdString();
    EXPECT_TRUE(shownText.contains(QChar(0x2026)));
}
