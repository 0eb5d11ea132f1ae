#include "ui/status/LiveActivityWindow.h"
#include "support/TempPreferences.h"
#include "support/WaitUntil.h"
#include "ui/status/LiveActivityGeometry.h"
#include "ui/status/LiveActivityModel.h"
#include "ui/status/LiveActivityView.h"
#include "ui/status/StatusPalette.h"

#include <QImage>
#include <gtest/gtest.h>

namespace {

class LiveActivityWindowTest : public ::testing::Test {
protected:
    TempPreferences prefs;
    StatusPalette palette{*prefs, QStringLiteral("#FF0074")};
    LiveActivityModel model;
    LiveActivityWindow window{model, palette};
};

// Counts the pixels of the body's beak (drawn at 0.9, above the body's top) that the click mask,
// which also clips the painting without a compositor, would cut away.
int beakPixelsOutsideTheMask(LiveActivityView& view) {
    const QImage image = view.grab().toImage();
    const QPainterPath covered = view.coverage();
    const int top = int(LiveActivityGeometry::margin);
    int outside = 0;
    for (int y = top; y < top + int(LiveActivityView::beak); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qAlpha(image.pixel(x, y)) > 200 && !covered.contains(QPointF(x + 0.5, y + 0.5)))
                ++outside;
    return outside;
}

} // namespace

TEST_F(LiveActivityWindowTest, TheMaskHoldsTheDrawnBeakEvenAtTheScreensEdges) {
    for (double beakX : {0.0, 20.0, 190.0, 360.0, 380.0}) {
        model.setBeakX(beakX);
        EXPECT_EQ(beakPixelsOutsideTheMask(*window.view()), 0) << "beak at " << beakX;
    }
}

TEST_F(LiveActivityWindowTest, AResizeDuringTheSlideInEndsAtTheNewHeight) {
    const QRect target(100, 40, 472, 160);
    window.slideIn(target);
    ASSERT_TRUE(waitUntil([&] { return window.y() > target.y() - 8; }));
    window.resizeKeepingTop(222);
    ASSERT_TRUE(
        waitUntil([&] { return window.height() == 222 && window.pos() == target.topLeft(); }));
    waitUntil([] { return false; }, 400); // both animations have ended by now
    EXPECT_EQ(window.geometry(), QRect(target.topLeft(), QSize(472, 222)));
}
