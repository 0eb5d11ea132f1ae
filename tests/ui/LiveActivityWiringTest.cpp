#include "core/demo/DemoDirector.h"
#include "ui/UiFixture.h"
#include "ui/status/LiveActivityController.h"
#include "ui/status/StatusPalette.h"

#include <QCoreApplication>

using namespace std::chrono_literals;

TEST_F(UiFixture, TheCapsuleFollowsTheStatesSnapshotsAndPreference) {
    StatusPalette palette(*prefs, QStringLiteral("#FF0074"));
    LiveActivityController controller(palette, clock);
    controller.setAnchorSource([] { return QRectF(700, 0, 37, 25); });
    controller.observe(state);

    state.start(true); // six demo projects, all live already
    QCoreApplication::processEvents();
    EXPECT_EQ(controller.lastStatus().size(), 6);
    EXPECT_FALSE(controller.isVisible());

    state.demo()->runScene(1);
    QCoreApplication::processEvents();
    ASSERT_EQ(controller.model().rows().size(), 1);
    EXPECT_EQ(controller.model().rows().first().name, "my-saas");

    state.setLiveActivity(false);
    QCoreApplication::processEvents();
    EXPECT_FALSE(controller.isVisible());
    state.setLiveActivity(true);
    QCoreApplication::processEvents();
    EXPECT_TRUE(controller.isVisible());
}
