#include "ui/status/ColorPreview.h"
#include "core/demo/DemoDirector.h"
#include "ui/UiFixture.h"
#include "ui/status/LiveActivityController.h"
#include "ui/status/StatusPalette.h"

#include <QCoreApplication>
#include <QSignalSpy>

using namespace std::chrono_literals;

namespace {

class ColorPreviewTest : public UiFixture {
protected:
    StatusPalette palette{*prefs, "#FF0074"};
    LiveActivityController controller{palette, clock};
    ColorPreview preview{state, controller};

    void SetUp() override {
        controller.setAnchorSource([] { return QRectF(700, 0, 37, 25); });
    }

    std::optional<DeployStatus> shownStatus() const {
        if (controller.model().rows().size() != 1)
            return std::nullopt;
        return controller.model().rows().first().status();
    }
};

} // namespace

TEST_F(ColorPreviewTest, StepsThroughTheThreeColoursThenReturnsToTheRealState) {
    QSignalSpy previewing(&preview, &ColorPreview::previewingChanged);
    preview.previewColors();
    EXPECT_TRUE(preview.isPreviewingColors());
    EXPECT_EQ(state.overallTone(), Tone::queued);
    EXPECT_EQ(shownStatus(), DeployStatus::queued);
    EXPECT_TRUE(controller.isPreviewing());

    const std::pair<Tone, DeployStatus> steps[] = {{Tone::building, DeployStatus::building},
                                                   {Tone::success, DeployStatus::ready},
                                                   {Tone::error, DeployStatus::error}};
    for (const auto& [tone, status] : steps) {
        clock.advance(tone == Tone::success ? 3500ms : 2500ms);
        EXPECT_EQ(state.overallTone(), tone);
        EXPECT_EQ(shownStatus(), status);
    }
    EXPECT_TRUE(controller.isVisible());

    clock.advance(3500ms);
    EXPECT_EQ(state.overallTone(), Tone::disconnected);
    EXPECT_FALSE(preview.isPreviewingColors());
    EXPECT_FALSE(controller.isPreviewing());
    EXPECT_FALSE(controller.isVisible());
    EXPECT_EQ(previewing.size(), 2);
    EXPECT_TRUE(notifications.posted.isEmpty());
}

TEST_F(ColorPreviewTest, ASecondRunTakesOverAndRunsItsFullTwelveSeconds) {
    preview.previewColors();
    clock.advance(3s);
    EXPECT_EQ(state.overallTone(), Tone::building);
    preview.previewColors();
    QCoreApplication::processEvents(); // the first run wakes, cancelled
    EXPECT_EQ(state.overallTone(), Tone::queued);

    clock.advance(9s); // where the first run would have ended
    EXPECT_EQ(state.overallTone(), Tone::error);
    EXPECT_TRUE(preview.isPreviewingColors());
    clock.advance(2900ms);
    EXPECT_TRUE(controller.isPreviewing());
    clock.advance(100ms);
    EXPECT_FALSE(preview.isPreviewingColors());
    EXPECT_EQ(state.overallTone(), Tone::disconnected);
}

TEST_F(ColorPreviewTest, AfterThePreviewTheCapsuleFollowsTheStateAndItsPreference) {
    controller.observe(state);
    state.start(true); // six demo projects, all live already
    QCoreApplication::processEvents();
    EXPECT_EQ(controller.lastStatus().size(), 6);
    EXPECT_FALSE(controller.isVisible());
    preview.previewColors();
    state.demo()->runScene(1); // my-saas queued, during the preview
    QCoreApplication::processEvents();
    EXPECT_EQ(controller.model().rows().first().id, "color-preview");

    clock.advance(12s);
    ASSERT_EQ(controller.model().rows().size(), 1);
    EXPECT_EQ(controller.model().rows().first().name, "my-saas");
    EXPECT_TRUE(controller.isVisible());
    state.setLiveActivity(false);
    QCoreApplication::processEvents();
    EXPECT_FALSE(controller.isVisible());
    state.setLiveActivity(true);
    QCoreApplication::processEvents();
    EXPECT_TRUE(controller.isVisible());
}
