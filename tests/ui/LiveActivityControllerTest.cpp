#include "ui/status/LiveActivityController.h"
#include "support/ManualClock.h"
#include "support/QtPrinters.h"
#include "support/TempPreferences.h"
#include "ui/status/LiveActivityWindow.h"
#include "ui/status/StatusPalette.h"

#include <QGuiApplication>
#include <QScreen>
#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

class LiveActivityControllerTest : public ::testing::Test {
protected:
    TempPreferences prefs;
    StatusPalette palette{*prefs, QStringLiteral("#FF0074")};
    ManualClock clock{QDateTime(QDate(2026, 11, 23), QTime(15, 0))};
    LiveActivityController controller{palette, clock};
    QList<QUrl> opened;

    void SetUp() override {
        controller.setAnchorSource([] { return QRectF(700, 0, 37, 25); });
        controller.setUrlOpener([this](const QUrl& url) { opened.append(url); });
    }

    // Project `id` whose latest deployment has `state` and was created `minutesAgo` before now.
    ProjectSnapshot snap(const QString& id, const char* state, double minutesAgo = 1) const {
        VercelDeployment deployment;
        deployment.id = "dpl_" + id;
        deployment.readyState = QString::fromLatin1(state);
        deployment.createdAt = clock.now().toMSecsSinceEpoch() - minutesAgo * 60'000;
        return ProjectSnapshot{id, id, "acme", std::nullopt, deployment, 30.0};
    }

    QStringList rows() const {
        QStringList shown;
        for (const ProjectSnapshot& row : controller.model().rows())
            shown.append(row.id + ':' + rawValue(row.status()));
        return shown;
    }
};

} // namespace

TEST_F(LiveActivityControllerTest, ABuildThatGoesLiveStaysFiveSecondsThenTheCapsuleHides) {
    controller.update({snap("a", "BUILDING")}, true);
    EXPECT_EQ(rows(), QStringList{"a:BUILDING"});
    EXPECT_TRUE(controller.isVisible());

    controller.update({snap("a", "READY")}, true);
    EXPECT_EQ(rows(), QStringList{"a:READY"});
    clock.advance(4900ms);
    EXPECT_TRUE(controller.isVisible());
    clock.advance(200ms);
    EXPECT_FALSE(controller.isVisible());
}

TEST_F(LiveActivityControllerTest, AFailureStaysTwelveSecondsAndEachResultExpiresOnItsOwn) {
    controller.update({snap("a", "BUILDING", 2), snap("b", "QUEUED", 1)}, true);
    controller.update({snap("a", "ERROR", 2), snap("b", "READY", 1)}, true);
    EXPECT_EQ(rows(), (QStringList{"b:READY", "a:ERROR"}));
    clock.advance(5100ms);
    EXPECT_EQ(rows(), QStringList{"a:ERROR"});
    clock.advance(6800ms);
    EXPECT_TRUE(controller.isVisible());
    clock.advance(200ms);
    EXPECT_FALSE(controller.isVisible());
}

TEST_F(LiveActivityControllerTest, ACanceledDeploymentLeavesNoResult) {
    controller.update({snap("a", "QUEUED"), snap("b", "BUILDING", 3)}, true);
    controller.update({snap("a", "CANCELED"), snap("b", "BUILDING", 3)}, true);
    EXPECT_EQ(rows(), QStringList{"b:BUILDING"});
    controller.update({snap("a", "CANCELED"), snap("b", "CANCELED", 3)}, true);
    EXPECT_FALSE(controller.isVisible());
}

TEST_F(LiveActivityControllerTest, ARebuildReplacesItsResultAndOutlivesIt) {
    controller.update({snap("a", "BUILDING", 3)}, true);
    controller.update({snap("a", "READY", 3)}, true);
    clock.advance(2s);
    controller.update({snap("a", "QUEUED", 0)}, true);
    EXPECT_EQ(rows(), QStringList{"a:QUEUED"});
    clock.advance(10s); // well past the old result's five seconds
    EXPECT_EQ(rows(), QStringList{"a:QUEUED"});
    EXPECT_TRUE(controller.isVisible());
}

TEST_F(LiveActivityControllerTest, SevenBuildsShowTheFiveNewestAndCountTheRest) {
    QList<ProjectSnapshot> building;
    for (int i = 0; i < 7; ++i)
        building.append(snap(QStringLiteral("p%1").arg(i), "BUILDING", 7 - i));
    controller.update(building, true);
    EXPECT_EQ(rows(), (QStringList{"p6:BUILDING", "p5:BUILDING", "p4:BUILDING", "p3:BUILDING",
                                   "p2:BUILDING"}));
    EXPECT_EQ(controller.model().overflow(), 2);
}

TEST_F(LiveActivityControllerTest, TheFirstUpdateOnlyRecordsWhatAlreadyFinished) {
    controller.update({snap("a", "READY"), snap("b", "ERROR"), snap("c", "BUILDING"),
                       ProjectSnapshot{"d", "d", "acme", std::nullopt, std::nullopt, {}}},
                      true);
    EXPECT_EQ(rows(), QStringList{"c:BUILDING"});
    EXPECT_EQ(controller.lastStatus().value("a"), DeployStatus::ready);
    EXPECT_EQ(controller.lastStatus().value("d"), DeployStatus::unknown);
}

TEST_F(LiveActivityControllerTest, SwitchedOffItHidesAndForgetsResultsButKeepsFollowing) {
    controller.update({snap("a", "BUILDING"), snap("b", "BUILDING")}, true);
    controller.update({snap("a", "BUILDING"), snap("b", "READY")}, true);
    EXPECT_EQ(rows().size(), 2);

    controller.update({snap("a", "BUILDING"), snap("b", "READY")}, false);
    EXPECT_FALSE(controller.isVisible());
    controller.update({snap("a", "BUILDING"), snap("b", "READY"), snap("c", "QUEUED")}, false);
    EXPECT_EQ(controller.lastStatus().value("c"), DeployStatus::queued);

    controller.update({snap("a", "BUILDING"), snap("b", "READY"), snap("c", "QUEUED")}, true);
    EXPECT_TRUE(controller.isVisible());
    EXPECT_EQ(rows(), (QStringList{"a:BUILDING", "c:QUEUED"}));
}

TEST_F(LiveActivityControllerTest, APreviewOwnsTheCapsuleWhileTheDataKeepsFlowing) {
    controller.update({snap("a", "BUILDING")}, true);
    controller.beginPreview(snap("color-preview", "QUEUED", 0));
    EXPECT_TRUE(controller.isPreviewing());
    EXPECT_EQ(rows(), QStringList{"color-preview:QUEUED"});

    controller.update({snap("a", "READY"), snap("b", "BUILDING")}, true);
    EXPECT_EQ(rows(), QStringList{"color-preview:QUEUED"});
    EXPECT_EQ(controller.lastStatus().value("a"), DeployStatus::ready);

    // A tap during the preview opens nothing but hides.
    controller.tap(controller.model().rows().first());
    EXPECT_TRUE(opened.isEmpty());
    EXPECT_FALSE(controller.isVisible());

    controller.endPreview();
    EXPECT_FALSE(controller.isPreviewing());
    controller.update({snap("a", "READY"), snap("b", "BUILDING")}, true);
    EXPECT_EQ(rows(), QStringList{"b:BUILDING"});
}

TEST_F(LiveActivityControllerTest, TappingARowOpensItsDeploymentAndHides) {
    controller.update({snap("a", "BUILDING")}, true);
    controller.tap(controller.model().rows().first());
    ASSERT_EQ(opened.size(), 1);
    EXPECT_EQ(opened.first().toString(), "https://vercel.com/acme/a/a");
    EXPECT_FALSE(controller.isVisible());
}

TEST_F(LiveActivityControllerTest, WithoutTheTrayIconItWaitsTenTimesOncePerProcess) {
    controller.setAnchorSource([] { return std::nullopt; });
    controller.update({snap("a", "BUILDING")}, true);
    EXPECT_FALSE(controller.isVisible());
    clock.advance(4500ms);
    EXPECT_FALSE(controller.isVisible());
    EXPECT_EQ(controller.launchRetries(), 10);
    clock.advance(500ms);
    EXPECT_TRUE(controller.isVisible());
    // Nothing told where the tray is: the top right corner, where most trays sit.
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
    EXPECT_NEAR(controller.window()->geometry().right() - 46, area.right() - 8, 1);

    controller.update({}, true);
    EXPECT_FALSE(controller.isVisible());
    controller.update({snap("b", "BUILDING")}, true);
    EXPECT_TRUE(controller.isVisible());
    EXPECT_EQ(controller.launchRetries(), 10);
}

TEST_F(LiveActivityControllerTest, AWaitForTheTrayIconShowsNothingOnceTheBuildsAreGone) {
    controller.setAnchorSource([] { return std::nullopt; });
    controller.update({snap("a", "BUILDING")}, true);
    controller.update({snap("a", "CANCELED")}, true);
    clock.advance(10s);
    EXPECT_FALSE(controller.isVisible());
    EXPECT_TRUE(controller.model().rows().isEmpty());
}
