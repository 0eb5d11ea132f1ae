#include "core/demo/DemoDirector.h"
#include "core/monitor/EngineFixture.h"
#include "core/monitor/PreferenceKeys.h"

using namespace std::chrono_literals;

TEST_F(EngineFixture, DemoPlaysSixProjectsWithoutAnyRequest) {
    const QDateTime start = clock.now();
    AppState& s = makeState();
    s.start(true);
    EXPECT_TRUE(s.isDemo());
    EXPECT_EQ(s.connection(), Connection::connected("acme"));
    EXPECT_EQ(s.keychainMode(), KeychainStore::Mode::synced);
    EXPECT_EQ(s.tokenExpiry(), TokenExpiry::never());
    EXPECT_TRUE(s.hasLoadedOnce());
    ASSERT_EQ(s.snapshots().size(), 6);
    EXPECT_EQ(s.todayCount(), 11);
    EXPECT_EQ(notifications.authorizationRequests, 1);

    s.demo()->runScene(2);
    clock.advance(2s);
    EXPECT_EQ(s.overallTone(), Tone::building);
    clock.advance(16s);
    EXPECT_EQ(s.overallTone(), Tone::error);
    ASSERT_EQ(notifications.posted.size(), 1);
    EXPECT_EQ(notifications.posted[0].title, "api: deployment failed");
    EXPECT_FALSE(notifications.posted[0].url);

    // Hiding a project only filters what is shown; nothing is written in demo mode.
    s.removeMonitored("api");
    EXPECT_EQ(s.snapshots().size(), 5);
    EXPECT_FALSE(prefs->contains(PreferenceKeys::monitoredProjectIDs));
    s.setCountProductionOnly(true);
    EXPECT_FALSE(prefs->contains(PreferenceKeys::countProductionOnly));
    QCoro::waitFor(s.saveToken("tok"));
    s.removeToken();
    EXPECT_TRUE(s.connection().isConnected());

    // The demo's own report uses its fake build log.
    ProjectSnapshot api = *s.demo()->snapshots().begin();
    for (const ProjectSnapshot& snapshot : s.demo()->snapshots())
        if (snapshot.name == "api")
            api = snapshot;
    ASSERT_TRUE(QCoro::waitFor(s.copyFailureReport(api)));
    EXPECT_TRUE(clipboard.texts[0].contains("Type error: Property 'customerId'"));
    EXPECT_FALSE(clipboard.texts[0].contains("Dashboard:"));
    EXPECT_TRUE(server.requests().isEmpty());

    // Every 20 seconds the demo marks a refresh.
    clock.advance(30s);
    EXPECT_EQ(s.lastRefresh(), start.addSecs(40));
}
