#include "core/demo/DemoDirector.h"
#include "support/FakeDesktop.h"
#include "support/ManualClock.h"
#include "support/QtPrinters.h"
#include "support/ScopedEnvironment.h"
#include "support/TempPreferences.h"
#include "support/WaitUntil.h"
#include "ui/common/ActionConfirmationWindow.h"
#include "ui/panel/ProgressLine.h"
#include "ui/status/BeakedCapsule.h"
#include "ui/status/CrossFade.h"
#include "ui/status/LiveActivityController.h"
#include "ui/status/LiveActivityGeometry.h"
#include "ui/status/LiveActivityRow.h"
#include "ui/status/LiveActivityRowTexts.h"
#include "ui/status/LiveActivityView.h"
#include "ui/status/LiveActivityWindow.h"
#include "ui/status/StatusPalette.h"
#include "ui/status/SwayWorkArea.h"

#include <QAbstractButton>
#include <QApplication>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QMenu>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

using namespace std::chrono_literals;
namespace G = LiveActivityGeometry;
namespace T = LiveActivityRowTexts;

namespace {

const QDateTime start(QDate(2026, 11, 23), QTime(15, 0));
// A 1440-wide screen with a 25-pixel panel at the top.
const QRectF area(0, 25, 1440, 875);

// The capsule itself, inside the window's shadow margin.
QRectF body(const G::Placement& placed) {
    return placed.frame.adjusted(G::margin, G::margin, -G::margin, -G::margin);
}

// Project `name` building since `buildingAt` (ms since 1970), usually built in `median` seconds.
ProjectSnapshot deployed(const QString& name, const char* state, std::optional<double> median,
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

class LiveActivityTest : public ::testing::Test {
protected:
    TempPreferences prefs;
    StatusPalette palette{*prefs, "#FF0074"};
    ManualClock clock{start};
    LiveActivityController controller{palette, clock};
    QList<QUrl> opened;

    void SetUp() override {
        controller.setAnchorSource([] { return QRectF(700, 0, 37, 25); });
        controller.setUrlOpener([this](const QUrl& url) { opened.append(url); });
    }
    LiveActivityView& view() { return *controller.window()->view(); }

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

TEST(LiveActivityGeometry, HangsUnderTheIconPointingAtItAndStaysOnScreen) {
    for (const double left : {10.0, 700.0, 1400.0}) {
        const QRectF icon(left, 0, 37, 25);
        const G::Placement placed = G::place(icon, area, 2);
        const QRectF capsule = body(placed);
        EXPECT_DOUBLE_EQ(capsule.top(), icon.bottom()) << left;
        EXPECT_DOUBLE_EQ(capsule.left() + placed.beakX, icon.center().x()) << left;
        EXPECT_GE(capsule.left(), area.left() + G::screenGap) << left;
        EXPECT_LE(capsule.right(), area.right() - G::screenGap) << left;
        EXPECT_GT(G::place(icon, area, 3).frame.height(), placed.frame.height());
    }
    EXPECT_DOUBLE_EQ(body(G::place(QRectF(700, 0, 37, 25), area, 1)).center().x(), 718.5);
}

// The capsule touches the icon on the side away from the tray's edge, on screen; only a bottom
// tray turns the beak down.
TEST(LiveActivityGeometry, TheCapsuleSitsNextToTheIconOnWhicheverEdgeTheTrayIs) {
    struct Case {
        QRectF icon;
        QRectF area;
        QRectF body;
        TrayEdge edge;
    } const cases[] = {
        {QRectF(1400, 870, 37, 30),
         QRectF(0, 0, 1440, 870),
         {1052, 870 - 130, 380, 130},
         TrayEdge::bottom},
        {QRectF(700, 880, 1, 1),
         QRectF(0, 0, 1440, 900),
         {510.5, 880 - 130, 380, 130},
         TrayEdge::bottom}, // a click on a bar that reserves no room
        {QRectF(0, 400, 30, 30), QRectF(30, 0, 1410, 900), {38, 350, 380, 130}, TrayEdge::left},
        {QRectF(1410, 850, 30, 30),
         QRectF(0, 0, 1410, 900),
         {1022, 770, 380, 130},
         TrayEdge::right},
    };
    for (const Case& c : cases) {
        const G::Placement placed = G::place(c.icon, c.area, 2);
        EXPECT_EQ(body(placed), c.body) << c.icon.x() << ", " << c.icon.y();
        EXPECT_EQ(placed.edge, c.edge);
        if (!isHorizontal(c.edge)) { // level with the icon, even where the capsule cannot be
            EXPECT_DOUBLE_EQ(body(placed).top() + placed.beakX, c.icon.center().y());
        }
    }
}

TEST(LiveActivityGeometry, WithoutAnIconTheCapsuleHangsInTheTopRightCorner) {
    const G::Placement placed = G::place(std::nullopt, area, 2);
    EXPECT_DOUBLE_EQ(body(placed).right(), area.right() - G::screenGap);
    EXPECT_GE(body(placed).top(), area.top());
    EXPECT_LT(body(placed).top(), area.top() + 10);
}

// Before a StatusNotifierItem host reports a click, the capsule hangs from the tray's end of the
// bar the work area leaves room for, its beak towards that bar.
TEST(LiveActivityGeometry, BeforeAnyClickTheCapsuleSitsAtTheEndOfTheReservedBar) {
    const QRectF whole(0, 0, 1440, 900);
    struct Case {
        QRectF area;
        TrayEdge edge;
        QPointF beakTip; // where the beak meets the bar
    } const cases[] = {
        {QRectF(0, 32, 1440, 868), TrayEdge::top, {1439, 32}},
        {QRectF(0, 0, 1440, 856), TrayEdge::bottom, {1439, 856}},
        {QRectF(48, 0, 1392, 900), TrayEdge::left, {48, 899}},
        {QRectF(0, 0, 1400, 900), TrayEdge::right, {1400, 899}},
        {whole, TrayEdge::top, {1408, 32}}, // nothing reserved: a usual bar along the top
    };
    for (const Case& c : cases) {
        const QPointF click = cornerClick(whole, c.area);
        const G::Placement placed = G::place(barAroundClick(click, c.area), c.area, 1);
        const QRectF capsule = body(placed);
        EXPECT_EQ(placed.edge, c.edge) << c.area.x() << ", " << c.area.bottom();
        EXPECT_TRUE(c.area.contains(capsule)) << c.area.x() << ", " << c.area.bottom();
        switch (c.edge) {
        case TrayEdge::top:
            EXPECT_DOUBLE_EQ(capsule.top(), c.beakTip.y());
            break;
        case TrayEdge::bottom:
            EXPECT_DOUBLE_EQ(capsule.bottom(), c.beakTip.y());
            break;
        case TrayEdge::left:
            EXPECT_DOUBLE_EQ(capsule.left(), c.beakTip.x() + G::screenGap);
            break;
        case TrayEdge::right:
            EXPECT_DOUBLE_EQ(capsule.right(), c.beakTip.x() - G::screenGap);
            break;
        }
        if (isHorizontal(c.edge)) { // at the right end, the beak as far right as it goes
            EXPECT_DOUBLE_EQ(capsule.right(), c.area.right() - G::screenGap);
            EXPECT_GT(placed.beakX, G::contentWidth / 2);
        }
    }
}

// Where the compositor ignores the window's shape, the window must end where the bar begins:
// a click reported one pixel into a bottom bar 44 pixels thick stands for the whole bar.
TEST(LiveActivityGeometry, OverTheBarTheWindowIsCutWhereTheBarBegins) {
    const QRectF bottomArea(0, 0, 1440, 856);
    const QRectF click(1223, 877, 0, 0);
    const G::Placement placed = G::place(click, bottomArea, 1);
    const QMargins cut = G::overTray(placed.frame, click, bottomArea, placed.edge);
    EXPECT_EQ(placed.frame.bottom() - cut.bottom(), bottomArea.bottom());
    EXPECT_EQ(cut.top() + cut.left() + cut.right(), 0);
    const QRectF icon(700, 0, 37, 25); // a top bar that reserves nothing: the icon tells
    const G::Placement under = G::place(icon, QRectF(0, 0, 1440, 900), 1);
    EXPECT_EQ(under.frame.top() +
                  G::overTray(under.frame, icon, QRectF(0, 0, 1440, 900), under.edge).top(),
              icon.bottom());
}

TEST(BeakedCapsule, TheTipFollowsTheBeakButStaysClearOfTheCorners) {
    const QRectF rect(100, 0, 330, 68);
    BeakedCapsule shape{5, 6, 22};
    shape.beakX = 150;
    EXPECT_DOUBLE_EQ(shape.tipX(rect), 250);                     // measured from the left edge
    EXPECT_NEAR(shape.path(rect).boundingRect().top(), 0, 0.01); // the tip reaches the top
    shape.beakX = 0;
    const double leftmost = shape.tipX(rect) - 100;
    EXPECT_GT(leftmost, 22); // clear of the rounded corner
    shape.beakX = 400;
    EXPECT_DOUBLE_EQ(shape.tipX(rect), 100 + 330 - leftmost);
    // Above a bottom tray the tip is at the bottom, under the same x.
    shape.beakX = 150;
    shape.edge = TrayEdge::bottom;
    EXPECT_TRUE(shape.path(rect).contains(QPointF(250, 67.5)));
    EXPECT_FALSE(shape.path(rect).contains(QPointF(160, 67.5))); // beside the beak
    EXPECT_TRUE(shape.path(rect).contains(QPointF(160, 0.5)));   // a straight top edge
    // Beside a tray on a side, the tip is on that side, `beakX` down from the top.
    const QRectF tall(100, 0, 330, 200);
    shape.edge = TrayEdge::left;
    EXPECT_TRUE(shape.path(tall).contains(QPointF(100.5, 150)));
    EXPECT_FALSE(shape.path(tall).contains(QPointF(100.5, 60)));
    shape.edge = TrayEdge::right;
    EXPECT_TRUE(shape.path(tall).contains(QPointF(429.5, 150)));
    EXPECT_FALSE(shape.path(tall).contains(QPointF(429.5, 60)));
}

TEST(LiveActivityRowTexts, RunningTimesResultsAndProgress) {
    const ProjectSnapshot building = deployed("web", "BUILDING", 120, msAgo(start, 30));
    EXPECT_EQ(T::trailing(building, start.addSecs(1), false), "31 s");
    EXPECT_EQ(T::trailing(deployed("web", "BUILDING", 120, msAgo(start, -5)), start, false), "0 s");
    EXPECT_DOUBLE_EQ(*T::progress(building, start), 0.25);
    EXPECT_DOUBLE_EQ(*T::progress(building, start.addSecs(210)), 0.95); // never quite done
    EXPECT_EQ(T::progress(deployed("web", "BUILDING", 4, msAgo(start, 3)), start), std::nullopt);
    EXPECT_EQ(T::subtitle(deployed("web", "QUEUED", 120, {}), false),
              "Queued"); // no commit message
    const ProjectSnapshot live = deployed("web", "READY", 120, 1700000000000, 1700000083000);
    EXPECT_EQ(T::subtitle(live, false), "Live in 1 min 23 s");
    EXPECT_EQ(T::trailing(live, start, true), "En ligne");
    EXPECT_FALSE(T::showsProgressLine(live));
}

// A compositor that takes no notice of the window's shape (wlroots through XWayland) gives the
// whole window the clicks: there the window leaves the tray free, the capsule staying put.
TEST_F(LiveActivityTest, OnAWaylandSessionTheWindowLeavesTheTrayFree) {
    const auto settled = [&](LiveActivityController& shown) {
        shown.setAnchorSource([] { return QRectF(700, 0, 37, 25); });
        shown.update({deployed("web", "BUILDING", 120, msAgo(start, 30))}, true);
        waitUntil([] { return false; }, 450); // the slide has ended
        const LiveActivityWindow& window = *shown.window();
        return std::pair(window.geometry(), window.view()->mapToGlobal(QPoint(0, 0)));
    };
    ScopedEnvironment x11("WAYLAND_DISPLAY", std::nullopt);
    const auto [onX11, capsuleOnX11] = settled(controller);
    ScopedEnvironment wayland("WAYLAND_DISPLAY", "wayland-1");
    LiveActivityController onWaylandController{palette, clock};
    const auto [onWayland, capsuleOnWayland] = settled(onWaylandController);
    EXPECT_LT(onX11.top(), 25);
    EXPECT_EQ(onWayland.top(), 25);
    EXPECT_EQ(onWayland.bottom(), onX11.bottom());
    EXPECT_EQ(capsuleOnWayland, capsuleOnX11);
}

// Under sway the bars' room is known only to sway: its visible workspace tells the usable area.
TEST(SwayWorkArea, TheVisibleWorkspaceOnTheScreenTellsTheUsableArea) {
    QTemporaryDir bin;
    const auto answer = [&](const QByteArray& script) {
        QFile swaymsg(bin.filePath("swaymsg"));
        swaymsg.open(QIODevice::WriteOnly);
        swaymsg.write("#!/bin/sh\n" + script + "\n");
        swaymsg.close();
        swaymsg.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return swayUsableArea(QRect(0, 0, 1440, 900));
    };
    ScopedEnvironment path("PATH", bin.path().toUtf8() + ':' + qgetenv("PATH"));
    ScopedEnvironment sway("SWAYSOCK", "/run/user/1000/sway-ipc.sock");
    const QByteArray workspaces =
        R"(echo '[{"visible":false,"rect":{"x":1440,"y":0,"width":800,"height":600}},)"
        R"({"visible":false,"rect":{"x":0,"y":0,"width":1440,"height":900}},)"
        R"({"visible":true,"rect":{"x":0,"y":30,"width":1440,"height":870}}]')";
    EXPECT_EQ(answer(workspaces), QRect(0, 30, 1440, 870));
    EXPECT_EQ(answer("echo '[{\"visible\":true,\"rect\":{\"x\":1440,\"y\":0}}]'"), std::nullopt);
    EXPECT_EQ(answer("echo 'not json'"), std::nullopt);
    EXPECT_EQ(answer("exit 1"), std::nullopt);
    ScopedEnvironment noSway("SWAYSOCK", std::nullopt);
    EXPECT_EQ(answer(workspaces), std::nullopt);
}

TEST_F(LiveActivityTest, SixBuildsShowFiveRowsAndTheFirstCountsTheOneLeftOut) {
    QList<ProjectSnapshot> building;
    for (int i = 0; i < 6; ++i)
        building.append(
            deployed(QStringLiteral("project-%1").arg(i), "BUILDING", 120, msAgo(start, 60 - i)));
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

TEST_F(LiveActivityTest, TheClockCatchesUpWhenShownAndATapReachesTheController) {
    controller.update({deployed("web", "BUILDING", 120, msAgo(start, 30))}, true);
    LiveActivityRow* row = view().rows().first();
    EXPECT_EQ(row->trailingText(), "30 s");
    controller.window()->hide();
    clock.advance(1s);
    controller.window()->show();
    EXPECT_EQ(row->trailingText(), "31 s");

    QTest::mouseClick(row, Qt::LeftButton);
    EXPECT_EQ(opened, QList<QUrl>{QUrl("https://vercel.com/acme/web/web")});
    EXPECT_FALSE(controller.isVisible());
}

TEST_F(LiveActivityTest, AStatusChangeFadesTheOldRowsOutAndATimeChangeDoesNot) {
    controller.update({deployed("web", "BUILDING", 120, msAgo(start, 30))}, true);
    ASSERT_TRUE(view().isVisible());
    EXPECT_FALSE(view().crossFade()->isRunning()); // nothing to fade from on the first show

    // Same statuses, a later time: no transition.
    controller.update({deployed("web", "BUILDING", 120, msAgo(start, 40))}, true);
    EXPECT_FALSE(view().crossFade()->isRunning());

    controller.update({deployed("web", "READY", 120, msAgo(start, 40), msAgo(start, 1))}, true);
    ASSERT_TRUE(view().crossFade()->isRunning());
    EXPECT_GT(view().crossFade()->strength(), 0.9);
    EXPECT_TRUE(view().crossFade()->isVisible());
    EXPECT_TRUE(waitUntil([&] { return !view().crossFade()->isRunning(); }, 2000));
    EXPECT_FALSE(view().crossFade()->isVisible());
}

TEST_F(LiveActivityTest, AFailureStaysTwelveSecondsAndEachResultExpiresOnItsOwn) {
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

TEST_F(LiveActivityTest, ABlockedDeploymentStaysAsLongAsAFailureWithVercelsReason) {
    controller.update({snap("a", "QUEUED", 2)}, true);
    controller.update({snap("a", "BLOCKED", 2)}, true);
    EXPECT_EQ(rows(), QStringList{"a:BLOCKED"});
    clock.advance(11900ms);
    EXPECT_TRUE(controller.isVisible());
    clock.advance(200ms);
    EXPECT_FALSE(controller.isVisible());

    ProjectSnapshot blocked = deployed("web", "BLOCKED", 120, msAgo(start, 30));
    EXPECT_EQ(T::trailing(blocked, start, false), "Blocked");
    EXPECT_EQ(T::trailing(blocked, start, true), "Bloqué");
    blocked.latest->readyStateReason = "The commit author is not a member of the team";
    EXPECT_EQ(T::subtitle(blocked, false), "The commit author is not a member of the team");
}

TEST_F(LiveActivityTest, ACanceledDeploymentLeavesNoResult) {
    controller.update({snap("a", "QUEUED"), snap("b", "BUILDING", 3)}, true);
    controller.update({snap("a", "CANCELED"), snap("b", "BUILDING", 3)}, true);
    EXPECT_EQ(rows(), QStringList{"b:BUILDING"});
    controller.update({snap("a", "CANCELED"), snap("b", "CANCELED", 3)}, true);
    EXPECT_FALSE(controller.isVisible());
}

TEST_F(LiveActivityTest, ARebuildReplacesItsResultAndOutlivesIt) {
    controller.update({snap("a", "BUILDING", 3)}, true);
    controller.update({snap("a", "READY", 3)}, true);
    clock.advance(2s);
    controller.update({snap("a", "QUEUED", 0)}, true);
    EXPECT_EQ(rows(), QStringList{"a:QUEUED"});
    clock.advance(10s); // well past the old result's five seconds
    EXPECT_EQ(rows(), QStringList{"a:QUEUED"});
    EXPECT_TRUE(controller.isVisible());
}

TEST_F(LiveActivityTest, TheFirstUpdateOnlyRecordsWhatAlreadyFinished) {
    controller.update({snap("a", "READY"), snap("b", "ERROR"), snap("c", "BUILDING"),
                       ProjectSnapshot{"d", "d", "acme", std::nullopt, std::nullopt, {}}},
                      true);
    EXPECT_EQ(rows(), QStringList{"c:BUILDING"});
    EXPECT_EQ(controller.lastStatus().value("a"), DeployStatus::ready);
    EXPECT_EQ(controller.lastStatus().value("d"), DeployStatus::unknown);
}

TEST_F(LiveActivityTest, SwitchedOffItHidesAndForgetsResultsButKeepsFollowing) {
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

TEST_F(LiveActivityTest, APreviewOwnsTheCapsuleWhileTheDataKeepsFlowing) {
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

TEST_F(LiveActivityTest, WithoutTheTrayIconItWaitsTenTimesOncePerProcess) {
    controller.setAnchorSource([] { return std::nullopt; });
    controller.update({snap("a", "BUILDING")}, true);
    EXPECT_FALSE(controller.isVisible());
    clock.advance(4500ms);
    EXPECT_FALSE(controller.isVisible());
    EXPECT_EQ(controller.launchRetries(), 10);
    clock.advance(500ms);
    EXPECT_TRUE(controller.isVisible());
    // Nothing told where the tray is: the top right corner, where most trays sit.
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    EXPECT_NEAR(controller.window()->geometry().right() - G::margin, screen.right() - 8, 1);

    controller.update({}, true);
    EXPECT_FALSE(controller.isVisible());
    controller.update({snap("b", "BUILDING")}, true);
    EXPECT_TRUE(controller.isVisible());
    EXPECT_EQ(controller.launchRetries(), 10);
}

TEST_F(LiveActivityTest, AWaitForTheTrayIconShowsNothingOnceTheBuildsAreGone) {
    controller.setAnchorSource([] { return std::nullopt; });
    controller.update({snap("a", "BUILDING")}, true);
    controller.update({snap("a", "CANCELED")}, true);
    clock.advance(10s);
    EXPECT_FALSE(controller.isVisible());
    EXPECT_TRUE(controller.model().rows().isEmpty());
}

namespace {

// The controller following a demo AppState, as the tray wires them.
class CapsuleFollowingTheDemo : public ::testing::Test, protected FakeDesktop {
protected:
    AppState state{services()};
    StatusPalette palette{*prefs, "#FF0074"};
    LiveActivityController controller{palette, clock};

    void SetUp() override {
        controller.setAnchorSource([] { return QRectF(700, 0, 37, 25); });
        controller.observe(state);
        state.start(true);
        QCoreApplication::processEvents();
    }

    // Moves the demo's time on, letting the controller take each change as the tray would.
    void play(std::chrono::milliseconds span) {
        for (auto t = 0ms; t < span; t += 500ms) {
            clock.advance(500ms);
            QCoreApplication::processEvents();
        }
    }

    // Every project the capsule has shown since the last call.
    QSet<QString> shown;
    void watchRows() {
        QObject::connect(&controller.model(), &LiveActivityModel::changed, &controller, [this] {
            for (const ProjectSnapshot& row : controller.model().rows())
                shown.insert(row.name);
        });
    }
};

} // namespace

TEST_F(CapsuleFollowingTheDemo, WhatMayNotInterruptStaysOutOfTheCapsuleButNotOutOfThePanel) {
    watchRows();
    state.muteProject("api", "api", MuteLength::untilUnmuted);
    state.demo()->runScene(2); // api fails
    state.demo()->runScene(1); // my-saas goes live
    play(30s);
    EXPECT_EQ(shown, QSet<QString>{"my-saas"});
    EXPECT_TRUE(notifications.posted.isEmpty());
    EXPECT_EQ(state.overallTone(), Tone::error);
    EXPECT_EQ(state.statusSummary(), "1 failed");

    // Production only: the onboarding preview of scene 3 stays out.
    shown.clear();
    state.setNotifyProductionOnly(true);
    state.demo()->runScene(3);
    play(30s);
    EXPECT_EQ(shown, (QSet<QString>{"landing-page", "docs"}));

    // Unmuted, api's next failure is both on screen and told; "only mine" keeps the demo's own
    // deployments, started by the demo's user.
    shown.clear();
    state.unmuteProject("api");
    state.setNotifyOnlyMine(true);
    state.demo()->runScene(2);
    play(5s);
    EXPECT_EQ(shown, QSet<QString>{"api"});
    play(20s);
    ASSERT_EQ(notifications.posted.size(), 1);
    EXPECT_EQ(notifications.posted[0].title, "api: deployment failed");
}

// A right click on a capsule row: "Cancel build" while it runs, then a window of Quillon's own
// asks first, since the capsule takes no keyboard; Escape keeps, the action's button cancels the
// demo's build. A finished row offers only "Open in Vercel" (the demo's projects have no page).
TEST_F(CapsuleFollowingTheDemo, ARowsMenuCancelsARunningBuildAfterTheWindowAsks) {
    QObject::connect(&controller, &LiveActivityController::cancelRequested, &state,
                     [this](const ProjectSnapshot& snapshot) {
                         ActionConfirmationWindow::ask(state, DeploymentAction::cancel, snapshot);
                     });
    state.demo()->runScene(1); // my-saas builds
    play(2s);
    ASSERT_TRUE(controller.isVisible());
    LiveActivityRow* row = controller.window()->view()->rows().first();
    ASSERT_EQ(row->snapshot().name, "my-saas");
    const auto openMenu = [&] {
        QContextMenuEvent click(QContextMenuEvent::Mouse, QPoint(40, 20),
                                row->mapToGlobal(QPoint(40, 20)));
        QCoreApplication::sendEvent(row, &click);
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        QStringList items;
        for (QAction* action : menu ? menu->actions() : QList<QAction*>())
            items << action->text() + (action->isEnabled() ? "" : " (disabled)");
        return std::pair(menu, items);
    };
    auto [menu, items] = openMenu();
    ASSERT_TRUE(menu);
    EXPECT_EQ(items, QStringList({"Cancel build", "Open in Vercel (disabled)"}));
    menu->actions().first()->trigger();
    menu->close();
    const auto asking = [] {
        for (QWidget* window : QApplication::topLevelWidgets())
            if (auto* asked = qobject_cast<ActionConfirmationWindow*>(window);
                asked && asked->isVisible())
                return asked;
        return static_cast<ActionConfirmationWindow*>(nullptr);
    };
    ActionConfirmationWindow* window = asking();
    ASSERT_TRUE(window);
    EXPECT_TRUE(window->text().startsWith("Cancel the Production deployment of my-saas?"))
        << window->text().toStdString();
    EXPECT_EQ(window->confirmButton()->text(), "Cancel build");
    EXPECT_EQ(window->keepButton()->text(), "Keep");
    EXPECT_TRUE(window->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    QTest::keyClick(window, Qt::Key_Escape);
    ASSERT_TRUE(waitUntil([&] { return !asking(); }));
    play(1s);
    EXPECT_TRUE(isInProgress(state.snapshots().first().status()));

    std::tie(menu, items) = openMenu();
    ASSERT_TRUE(menu);
    menu->actions().first()->trigger();
    menu->close();
    window = asking();
    ASSERT_TRUE(window);
    QTest::mouseClick(window->confirmButton(), Qt::LeftButton);
    play(1s);
    const auto mySaas = [&] {
        for (const ProjectSnapshot& s : state.snapshots())
            if (s.name == "my-saas")
                return s.status();
        return DeployStatus::unknown;
    };
    EXPECT_EQ(mySaas(), DeployStatus::canceled);

    state.demo()->runScene(2); // api fails: a result row
    for (int i = 0; i < 60 && controller.model().rows().value(0).status() != DeployStatus::error;
         ++i)
        play(500ms);
    row = controller.window()->view()->rows().first();
    ASSERT_EQ(row->snapshot().name, "api");
    std::tie(menu, items) = openMenu();
    ASSERT_TRUE(menu);
    EXPECT_EQ(items, QStringList({"Open in Vercel (disabled)"}));
    menu->close();
}
