#include "core/demo/DemoDirector.h"
#include "core/monitor/PreferenceKeys.h"
#include "support/EngineFixture.h"
#include "support/ScopedEnvironment.h"

using namespace std::chrono_literals;

namespace {

QString stateOf(const DemoDirector& director, const QString& project) {
    const auto latest = director.latest(project);
    return latest ? latest->readyState.value_or(QString()) : QString();
}

} // namespace

TEST(DemoDirector, FailingSceneRunsQueuedBuildingFailedOnTheClockAtAnySpeed) {
    for (const int speed : {1, 10}) {
        const ScopedEnvironment env("QUILLON_DEMO_SPEED", QByteArray::number(speed));
        ManualClock clock;
        DemoDirector director(clock);
        director.start();
        const int today = director.todayCount();
        director.runScene(2);
        EXPECT_EQ(stateOf(director, "api"), "QUEUED") << speed;
        EXPECT_EQ(director.todayCount(), today + 1);
        clock.advance(2000ms / speed - 1ms);
        EXPECT_EQ(stateOf(director, "api"), "QUEUED") << speed;
        clock.advance(1ms);
        EXPECT_EQ(stateOf(director, "api"), "BUILDING") << speed;
        clock.advance(16000ms / speed - 1ms);
        EXPECT_EQ(stateOf(director, "api"), "BUILDING") << speed;
        clock.advance(1ms);
        EXPECT_EQ(stateOf(director, "api"), "ERROR") << speed;
        EXPECT_EQ(director.latest("api")->buildDuration(), 16.0 / speed);
    }
    for (const char* value : {"", "0", "-4", "fast", "inf", "nan"}) {
        const ScopedEnvironment env("QUILLON_DEMO_SPEED", QByteArray(value));
        EXPECT_EQ(DemoDirector::speedFromEnvironment(), 1.0) << value;
    }
    const ScopedEnvironment env("QUILLON_DEMO_SPEED", QByteArray("2.5"));
    EXPECT_EQ(DemoDirector::speedFromEnvironment(), 2.5);
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

TEST_F(EngineFixture, DemoPlaysWithoutAnyRequestAndWritesNothing) {
    AppState& s = makeState();
    s.start(true);
    EXPECT_TRUE(s.isDemo());
    EXPECT_EQ(s.connection(), Connection::connected("acme"));
    EXPECT_TRUE(s.hasLoadedOnce());
    ASSERT_FALSE(s.snapshots().isEmpty());
    s.demo()->runScene(2);
    clock.advance(18s);
    EXPECT_EQ(s.overallTone(), Tone::error);
    ASSERT_EQ(notifications.posted.size(), 1);
    EXPECT_EQ(notifications.posted[0].title, "api: deployment failed");
    EXPECT_FALSE(notifications.posted[0].url);

    // Hiding a project only filters what is shown; nothing is written in demo mode.
    const auto shown = s.snapshots().size();
    s.removeMonitored("api");
    EXPECT_EQ(s.snapshots().size(), shown - 1);
    EXPECT_FALSE(prefs->contains(PreferenceKeys::monitoredProjectIDs));
    s.setCountProductionOnly(true);
    EXPECT_FALSE(prefs->contains(PreferenceKeys::countProductionOnly));
    QCoro::waitFor(s.saveToken("tok"));
    s.removeToken();
    EXPECT_TRUE(s.connection().isConnected());
    EXPECT_FALSE(keychain.loadToken());

    // The demo's own report uses its fake build log, and links nowhere.
    const QList<ProjectSnapshot> all = s.demo()->snapshots();
    const auto failed = std::find_if(all.begin(), all.end(),
                                     [](const ProjectSnapshot& p) { return p.name == "api"; });
    ASSERT_NE(failed, all.end());
    ASSERT_TRUE(QCoro::waitFor(s.copyFailureReport(*failed)));
    EXPECT_TRUE(clipboard.texts[0].contains("Type error: Property 'customerId'"));
    EXPECT_FALSE(clipboard.texts[0].contains("Dashboard:"));
    EXPECT_TRUE(server.requests().isEmpty());
}
