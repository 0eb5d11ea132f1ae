#include "ui/panel/ProgressLine.h"

#include <gtest/gtest.h>

TEST(ProgressLine, KnownProgressGlidesForOneSecondFromAShortBarToAFullOne) {
    ProgressLine line;
    line.resize(200, ProgressLine::thickness);
    line.show();
    line.setProgress(0.0);
    line.tick(1);
    EXPECT_GT(line.indicatorRect().width(), 0); // zero still shows a short bar
    line.setProgress(0.5);
    line.tick(0.5);
    EXPECT_NEAR(line.indicatorRect().right(), 50, 3);
    line.tick(0.5);
    EXPECT_NEAR(line.indicatorRect().right(), 100, 1e-9);
    EXPECT_FALSE(line.isAnimating());

    // A later value glides on from where the bar stands, and never past the end.
    line.setProgress(0.9);
    line.tick(0.25);
    EXPECT_NEAR(line.indicatorRect().width(), 120, 1e-9);
    line.setProgress(7.0);
    line.tick(1);
    EXPECT_NEAR(line.indicatorRect().width(), 200, 1e-9);
}

TEST(ProgressLine, UnknownProgressSlidesASegmentRoundAndRound) {
    ProgressLine line;
    line.resize(200, ProgressLine::thickness);
    line.setProgress(std::nullopt);
    const QRectF first = line.indicatorRect();
    line.tick(ProgressLine::segmentPeriod / 2);
    EXPECT_GT(line.indicatorRect().left(), first.left() + 50);
    line.tick(ProgressLine::segmentPeriod / 2);
    EXPECT_EQ(line.indicatorRect(), first);
}
