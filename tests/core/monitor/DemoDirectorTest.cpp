#include "core/demo/DemoDirector.h"
#include "support/ManualClock.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

QString stateOf(const DemoDirector& director, const QString& project) {
    const auto latest = director.latest(project);
    return latest ? latest->readyState.value_or(QString()) : QString();
}

} // namespace

TEST(DemoDirector, SeedGivesSixLiveProjectsAndElevenToday) {
    ManualClock clock;
    DemoDirector director(clock);
    int changes = 0;
    director.onChange = [&] { ++changes; };
    director.start();
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(director.todayCount(), 11);
    const QList<ProjectSnapshot> snapshots = director.snapshots();
    ASSERT_EQ(snapshots.size(), 6);
    EXPECT_EQ(snapshots[0].name, "my-saas");
    EXPECT_EQ(snapshots[5].name, "blog");
    for (const ProjectSnapshot& s : snapshots) {
        EXPECT_EQ(s.status(), DeployStatus::ready) << s.name.toStdString();
        EXPECT_EQ(s.scopeSlug, "demo");
        EXPECT_FALSE(s.dashboardURL());
    }
    const VercelDeployment dashboard = *snapshots[3].latest;
    EXPECT_EQ(dashboard.branch(), "feat/dark-mode");
    EXPECT_EQ(dashboard.buildDuration(), 21.0);
    EXPECT_EQ(clock.now().toMSecsSinceEpoch() - *dashboard.createdAt, 10800.0 * 1000);
    EXPECT_TRUE(dashboard.id->startsWith("dpl_"));
    EXPECT_EQ(dashboard.id->size(), 16);
}

TEST(DemoDirector, FailingSceneRunsQueuedBuildingFailedOnTheClock) {
    ManualClock clock;
    DemoDirector director(clock);
    director.start();
    director.runScene(2);
    EXPECT_EQ(stateOf(director, "api"), "QUEUED");
    EXPECT_EQ(director.todayCount(), 12);
    clock.advance(1999ms);
    EXPECT_EQ(stateOf(director, "api"), "QUEUED");
    clock.advance(1ms);
    EXPECT_EQ(stateOf(director, "api"), "BUILDING");
    clock.advance(16s);
    EXPECT_EQ(stateOf(director, "api"), "ERROR");
    const VercelDeployment api = *director.latest("api");
    EXPECT_EQ(api.buildDuration(), 16.0);
    EXPECT_EQ(api.commitTitle(), "Handle checkout webhook");
    EXPECT_EQ(api.shortSHA(), DemoDirector::fakeSHA("Handle checkout webhook").left(7));
}

TEST(DemoDirector, ANewSceneForAProjectStopsTheRunningOne) {
    ManualClock clock;
    DemoDirector director(clock);
    director.start();
    director.runScene(1);
    clock.advance(5s);
    const QString first = director.latest("my-saas")->deploymentID();
    director.runScene(1);
    const QString second = director.latest("my-saas")->deploymentID();
    EXPECT_NE(first, second);
    // The first play wakes on cancellation and ends without touching the record again.
    ASSERT_TRUE(waitUntil([&] { return clock.pendingSleepers() == 1; }));
    clock.advance(60s);
    EXPECT_EQ(director.latest("my-saas")->deploymentID(), second);
    EXPECT_EQ(stateOf(director, "my-saas"), "READY");
}

TEST(DemoDirector, SpeedFactorShortensEveryWaitOfAScene) {
    qputenv("QUILLON_DEMO_SPEED", "10");
    ManualClock clock;
    DemoDirector director(clock);
    qunsetenv("QUILLON_DEMO_SPEED");
    director.start();
    director.runScene(2);
    clock.advance(199ms);
    EXPECT_EQ(stateOf(director, "api"), "QUEUED");
    clock.advance(1ms);
    EXPECT_EQ(stateOf(director, "api"), "BUILDING");
    clock.advance(1599ms);
    EXPECT_EQ(stateOf(director, "api"), "BUILDING");
    clock.advance(1ms);
    EXPECT_EQ(stateOf(director, "api"), "ERROR");
    EXPECT_EQ(director.latest("api")->buildDuration(), 1.6);
}

TEST(DemoDirector, SpeedIsOneUnlessAPositiveNumber) {
    for (const char* value : {"", "0", "-4", "fast", "inf", "nan"}) {
        qputenv("QUILLON_DEMO_SPEED", value);
        EXPECT_EQ(DemoDirector::speedFromEnvironment(), 1.0) << value;
    }
    qputenv("QUILLON_DEMO_SPEED", "2.5");
    EXPECT_EQ(DemoDirector::speedFromEnvironment(), 2.5);
    qunsetenv("QUILLON_DEMO_SPEED");
    EXPECT_EQ(DemoDirector::speedFromEnvironment(), 1.0);
}

TEST(DemoDirector, ThreeProjectsSceneStaggersAndDashboardIsAPreview) {
    ManualClock clock;
    DemoDirector director(clock);
    director.start();
    director.runScene(3);
    EXPECT_EQ(stateOf(director, "landing-page"), "QUEUED");
    EXPECT_EQ(stateOf(director, "dashboard"), "READY");
    clock.advance(1200ms);
    EXPECT_EQ(stateOf(director, "dashboard"), "QUEUED");
    EXPECT_FALSE(director.latest("dashboard")->target);
    clock.advance(1200ms);
    EXPECT_EQ(stateOf(director, "docs"), "QUEUED");
    EXPECT_EQ(director.todayCount(), 14);
}

TEST(DemoDirector, FakeShaAndBuildLog) {
    const QString sha = DemoDirector::fakeSHA("Handle checkout webhook");
    EXPECT_EQ(sha.size(), 36);
    EXPECT_TRUE(sha.endsWith("a3c9e2f1d4b8a7c6e5f0"));
    // FNV-1a from the seed over no bytes leaves the seed itself.
    EXPECT_EQ(DemoDirector::fakeSHA(""), "14650fb0739d0383a3c9e2f1d4b8a7c6e5f0");
    const QStringList log = DemoDirector::buildLog("api");
    EXPECT_EQ(log.first(),
              "Cloning github.com/acme/api (Branch: main, Commit: " + sha.left(7) + ")");
    EXPECT_TRUE(log.contains("Type error: Property 'customerId' does not exist on type "
                             "'CheckoutSession'."));
    EXPECT_EQ(log.last(), "Error: Command \"npm run build\" exited with 1");
}
