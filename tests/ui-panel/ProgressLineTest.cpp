#include "ui/panel/ProgressLine.h"

#include <gtest/gtest.h>

namespace {

struct ShownLine {
    ProgressLine line;
    ShownLine() {
        line.resize(200, ProgressLine::thickness);
        line.show();
    }
};

} // namespace

TEST(ProgressLine, ZeroProgressStillShowsAShortBar) {
    ShownLine shown;
    shown.line.setProgress(0.0);
    shown.line.tick(1);
    EXPECT_EQ(shown.line.indicatorRect(), QRectF(0, 0, 4, 2));
}

TEST(ProgressLine, KnownProgressGlidesLinearlyForOneSecondThenRests) {
    ShownLine shown;
    shown.line.setProgress(0.5);
    EXPECT_TRUE(shown.line.isAnimating());
    shown.line.tick(0.5);
    EXPECT_NEAR(shown.line.indicatorRect().width(), 50, 1e-9);
    shown.line.tick(0.5);
    EXPECT_NEAR(shown.line.indicatorRect().width(), 100, 1e-9);
    EXPECT_FALSE(shown.line.isAnimating());

    // A later value glides on from where the bar stands.
    shown.line.setProgress(0.9);
    shown.line.tick(0.25);
    EXPECT_NEAR(shown.line.indicatorRect().width(), 120, 1e-9);
    shown.line.setProgress(7.0); // clamped to a full bar
    shown.line.tick(1);
    EXPECT_NEAR(shown.line.indicatorRect().width(), 200, 1e-9);
}

TEST(ProgressLine, UnknownProgressSlidesAThirtyPercentSegment) {
    ShownLine shown;
    shown.line.setProgress(std::nullopt);
    EXPECT_TRUE(shown.line.isAnimating());
    EXPECT_EQ(shown.line.indicatorRect(), QRectF(0, 0, 60, 2));
    shown.line.tick(ProgressLine::segmentPeriod / 2);
    EXPECT_NEAR(shown.line.indicatorRect().left(), 70, 1e-9);
    EXPECT_NEAR(shown.line.indicatorRect().width(), 60, 1e-9);
    shown.line.tick(ProgressLine::segmentPeriod / 2);
    EXPECT_NEAR(shown.line.phase(), 0, 1e-9); // and round again
}

TEST(ProgressLine, TimerRunsOnlyWhileShown) {
    ProgressLine line;
    line.resize(200, 2);
    EXPECT_FALSE(line.isAnimating());
    line.show();
    EXPECT_TRUE(line.isAnimating());
    line.hide();
    EXPECT_FALSE(line.isAnimating());
    line.setProgress(0.4); // a change while hidden does not wake it
    EXPECT_FALSE(line.isAnimating());
    line.show();
    EXPECT_TRUE(line.isAnimating());
}
