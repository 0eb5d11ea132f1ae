#include "ui/status/LiveActivityView.h"
#include "core/common/Language.h"
#include "support/ManualClock.h"
#include "support/QtPrinters.h"
#include "support/TempPreferences.h"
#include "support/WaitUntil.h"
#include "ui/panel/ProgressLine.h"
#include "ui/status/BeakedCapsule.h"
#include "ui/status/CrossFade.h"
#include "ui/status/LiveActivityController.h"
#include "ui/status/LiveActivityRow.h"
#include "ui/status/LiveActivityRowTexts.h"
#include "ui/status/LiveActivityWindow.h"
#include "ui/status/StatusPalette.h"

#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

using namespace std::chrono_literals;
namespace T = LiveActivityRowTexts;

namespace {

const QDateTime start(QDate(2026, 11, 23), QTime(15, 0));

ProjectSnapshot snap(const QString& name, const char* state, std::optional<double> median,
                     std::optional<double> buildingAt, std::optional<double> ready = {}) {
    VercelDeployment deployment;
    deployment.id = "dpl_" + name;
    deployment.readyState = QString::fromLatin1(state);
    deployment.buildingAt = buildingAt;
    deployment.createdAt = buildingAt;
    deployment.ready = ready;
    return ProjectSnapshot{name, name, "acme", std::nullopt, deployment, median};
}

double msAgo(const QDateTime& now, int seconds) {
    return double(now.addSecs(-seconds).toMSecsSinceEpoch());
}

} // namespace

TEST(BeakedCapsule, TheTipStaysClearOfTheCornersAndTheBeakAloneIsSmall) {
    const QRectF rect(0, 0, 330, 68);
    BeakedCapsule shape{5, 6, 22};
    EXPECT_DOUBLE_EQ(shape.tipX(rect), 39);
    shape.beakX = 400;
    EXPECT_DOUBLE_EQ(shape.tipX(rect), 330 - 39);
    shape.beakX = 150;
    EXPECT_DOUBLE_EQ(shape.tipX(rect.translated(100, 0)), 250); // measured from the left edge

    const QRectF body = shape.path(rect).boundingRect();
    EXPECT_NEAR(body.top(), 0, 0.01); // the tip reaches the top
    EXPECT_NEAR(body.bottom(), 68, 0.01);
    // Above a bottom tray the tip is at the bottom, under the same x.
    shape.pointsDown = true;
    EXPECT_TRUE(shape.path(rect).contains(QPointF(150, 67.5)));
    EXPECT_FALSE(shape.path(rect).contains(QPointF(60, 67.5))); // beside the beak
    EXPECT_TRUE(shape.path(rect).contains(QPointF(60, 0.5)));   // a straight top edge
    shape.pointsDown = false;
    shape.showBeak = false;
    EXPECT_NEAR(shape.path(rect).boundingRect().top(), 6, 0.01);

    shape.onlyBeak = true;
    const QRectF beak = shape.path(rect).boundingRect();
    EXPECT_NEAR(beak.left(), 150 - 17, 0.01);
    EXPECT_NEAR(beak.right(), 150 + 17, 0.01);
    EXPECT_NEAR(beak.top(), 0, 0.01);
    EXPECT_NEAR(beak.bottom(), 9, 0.01);
}

TEST(LiveActivityRowTexts, RunningTimesResultsAndProgressInBothLanguages) {
    const ProjectSnapshot building = snap("web", "BUILDING", 120, msAgo(start, 30));
    EXPECT_EQ(T::trailing(building, start, false), "30 s");
    EXPECT_EQ(T::trailing(building, start.addSecs(1), true), "31 s");
    EXPECT_DOUBLE_EQ(*T::progress(building, start), 0.25);
    EXPECT_DOUBLE_EQ(*T::progress(building, start.addSecs(210)), 0.95);
    EXPECT_EQ(T::progress(snap("web", "BUILDING", 4, msAgo(start, 3)), start), std::nullopt);
    EXPECT_TRUE(T::showsProgressLine(building));
    // A start in the future never runs backwards; a missing one counts from 1970.
    EXPECT_EQ(T::trailing(snap("web", "BUILDING", 120, msAgo(start, -5)), start, false), "0 s");
    EXPECT_EQ(T::trailing(snap("web", "BUILDING", 120, {}), start, false).right(4), " min");

    const ProjectSnapshot queued = snap("web", "QUEUED", 120, {});
    EXPECT_EQ(T::trailing(queued, start, true), "En attente");
    EXPECT_EQ(T::subtitle(queued, false), "Queued"); // no commit message

    const ProjectSnapshot live = snap("web", "READY", 120, 1700000000000, 1700000083000);
    EXPECT_EQ(T::subtitle(live, false), "Live in 1 min 23 s");
    EXPECT_EQ(T::subtitle(live, true), "En ligne en 1 min 23 s");
    EXPECT_EQ(T::trailing(live, start, true), "En ligne");
    EXPECT_FALSE(T::showsProgressLine(live));

    const ProjectSnapshot failed = snap("web", "ERROR", 120, 1700000000000);
    EXPECT_EQ(T::subtitle(failed, false), "Failed");
    EXPECT_EQ(T::trailing(failed, start, false), "Failed");
    EXPECT_EQ(T::subtitle(failed, true), "Échec");
}

class LiveActivityViewTest : public ::testing::Test {
protected:
    TempPreferences prefs;
    StatusPalette palette{*prefs, QStringLiteral("#FF0074")};
    ManualClock clock{start};
    LiveActivityController controller{palette, clock};

    void SetUp() override {
        controller.setAnchorSource([] { return QRectF(700, 0, 37, 25); });
    }
    LiveActivityView& view() { return *controller.window()->view(); }
};

TEST_F(LiveActivityViewTest, SixBuildsShowFiveRowsAndTheFirstCountsTheOneLeftOut) {
    QList<ProjectSnapshot> building;
    for (int i = 0; i < 6; ++i)
        building.append(
            snap(QStringLiteral("project-%1").arg(i), "BUILDING", 120, msAgo(start, 60 - i)));
    building[5].name = "an-extraordinarily-long-project-name-that-cannot-fit-in-the-capsule";
    controller.update(building, true);
    ASSERT_EQ(view().rows().size(), 5);
    EXPECT_EQ(view().rows()[0]->overflowText(), "+1");
    EXPECT_EQ(view().rows()[1]->overflowText(), "");
    const QString name = view().rows()[0]->nameText();
    EXPECT_TRUE(name.startsWith("AN-EXTRAORD")) << name.toStdString();
    EXPECT_TRUE(name.endsWith("CAPSULE")) << name.toStdString();
    EXPECT_TRUE(name.contains(QChar(0x2026))) << name.toStdString();
    EXPECT_EQ(view().rows()[4]->nameText(), "PROJECT-1");
    EXPECT_TRUE(view().rows()[4]->progressLine()->isVisibleTo(&view()));
}

TEST_F(LiveActivityViewTest, TheClockTicksOnlyOnScreenAndATapReachesTheController) {
    controller.update({snap("web", "BUILDING", 120, msAgo(start, 30))}, true);
    LiveActivityRow* row = view().rows().first();
    EXPECT_TRUE(view().isTicking());
    EXPECT_EQ(row->trailingText(), "30 s");

    controller.window()->hide();
    EXPECT_FALSE(view().isTicking());
    clock.advance(1s);
    controller.window()->show(); // catches up at once, then every second
    EXPECT_TRUE(view().isTicking());
    EXPECT_EQ(row->trailingText(), "31 s");

    QList<QUrl> opened;
    controller.setUrlOpener([&opened](const QUrl& url) { opened.append(url); });
    QTest::mouseClick(row, Qt::LeftButton);
    EXPECT_EQ(opened.size(), 1);
    EXPECT_FALSE(controller.isVisible());
}

TEST_F(LiveActivityViewTest, AStatusChangeFadesTheOldRowsOutAndATimeChangeDoesNot) {
    controller.update({snap("web", "BUILDING", 120, msAgo(start, 30))}, true);
    ASSERT_TRUE(view().isVisible());
    EXPECT_FALSE(view().crossFade()->isRunning()); // nothing to fade from on the first show

    // Same statuses, a later time: no transition.
    controller.update({snap("web", "BUILDING", 120, msAgo(start, 40))}, true);
    EXPECT_FALSE(view().crossFade()->isRunning());

    controller.update({snap("web", "READY", 120, msAgo(start, 40), msAgo(start, 1))}, true);
    ASSERT_TRUE(view().crossFade()->isRunning());
    EXPECT_GT(view().crossFade()->strength(), 0.9);
    EXPECT_TRUE(view().crossFade()->isVisible());
    EXPECT_TRUE(waitUntil([&] { return !view().crossFade()->isRunning(); }, 2000));
    EXPECT_FALSE(view().crossFade()->isVisible());
}
