#include "ui/status/ColorPreview.h"
#include "core/demo/DemoDirector.h"
#include "core/monitor/PreferenceKeys.h"
#include "ui/UiFixture.h"
#include "ui/status/LiveActivityController.h"
#include "ui/status/StatusPalette.h"

#include <QCoreApplication>
#include <QSignalSpy>

using namespace std::chrono_literals;

namespace {

class ColorPreviewTest : public UiFixture {
protected:
    StatusPalette palette{*prefs, QStringLiteral("#FF0074")};
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

    clock.advance(2500ms);
    EXPECT_EQ(state.overallTone(), Tone::building);
    EXPECT_EQ(shownStatus(), DeployStatus::building);
    clock.advance(3500ms);
    EXPECT_EQ(state.overallTone(), Tone::success);
    EXPECT_EQ(shownStatus(), DeployStatus::ready);
    clock.advance(2500ms);
    EXPECT_EQ(state.overallTone(), Tone::error);
    EXPECT_EQ(shownStatus(), DeployStatus::error);
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

TEST_F(ColorPreviewTest, AfterThePreviewTheCapsuleShowsWhatIsReallyBuilding) {
    controller.observe(state);
    state.start(true);
    QCoreApplication::processEvents();
    preview.previewColors();
    state.demo()->runScene(1); // my-saas queued, during the preview
    QCoreApplication::processEvents();
    EXPECT_EQ(shownStatus(), DeployStatus::queued);
    EXPECT_EQ(controller.model().rows().first().id, "color-preview");

    clock.advance(12s);
    ASSERT_EQ(controller.model().rows().size(), 1);
    EXPECT_EQ(controller.model().rows().first().name, "my-saas");
    EXPECT_TRUE(controller.isVisible());
}

TEST_F(ColorPreviewTest, TheFakeDeploymentSpeaksTheInterfaceLanguage) {
    prefs->setString(PreferenceKeys::appLanguage, QStringLiteral("fr"));
    const QList<ColorPreview::Step> steps = ColorPreview::steps(clock.now());
    ASSERT_EQ(steps.size(), 4);
    const ProjectSnapshot& live = steps[2].snapshot;
    EXPECT_EQ(live.name, "mon-projet");
    EXPECT_EQ(live.latest->commitTitle(), "Aperçu des couleurs");
    EXPECT_EQ(live.latest->buildDuration(), 42.0);
    EXPECT_EQ(live.latest->createdAt, clock.now().toMSecsSinceEpoch() - 45'000.0);
}
