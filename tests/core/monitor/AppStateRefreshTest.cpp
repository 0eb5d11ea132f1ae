#include "core/monitor/PreferenceKeys.h"
#include "support/EngineFixture.h"

using Response = LoopbackHttpServer::Response;
using namespace std::chrono_literals;

TEST_F(EngineFixture, ACompletePassMakesTwoRequestsPerScopeAndBuildsSnapshots) {
    account.addTeam("team_a", "acme");
    account.addProject("", "p_web", "web", {deployment("dpl_old", "p_web", "READY", -300, -299)});
    account.addProject("team_a", "p_api", "api");
    account.addDeployment("", deployment("dpl_new", "p_web", "BUILDING", -1));
    QJsonObject yesterday =
        FakeVercelAccount::deployment("dpl_y", "p_api", "READY", at(-15 * 60 - 1), at(-15 * 60));
    account.addDeployment("team_a", yesterday);
    AppState& s = connected();

    server.clearRequests();
    QCoro::waitFor(s.refresh());
    ASSERT_EQ(server.requests().size(), 4);
    QStringList paths;
    for (const auto& request : server.requests())
        paths << request.path + "?" + QString::fromLatin1(request.rawQuery);
    EXPECT_EQ(paths, QStringList({"/v9/projects?limit=100", "/v6/deployments?limit=100",
                                  "/v9/projects?limit=100&teamId=team_a",
                                  "/v6/deployments?limit=100&teamId=team_a"}));
    ASSERT_EQ(s.snapshots().size(), 2);
    EXPECT_EQ(s.snapshots()[0].name, "web"); // building first
    EXPECT_EQ(s.snapshots()[0].latest->deploymentID(), "dpl_new");
    EXPECT_EQ(s.snapshots()[1].latest->deploymentID(), "dpl_y");
    // Yesterday's deployment does not count; the two of today do.
    EXPECT_EQ(s.todayCount(), 2);
    EXPECT_EQ(s.overallTone(), Tone::building);
    EXPECT_EQ(s.statusSummary(), "1 building");
    EXPECT_EQ(s.lastRefresh(), clock.now());

    // A pass asked for while one runs is dropped.
    server.clearRequests();
    auto first = s.refresh();
    EXPECT_TRUE(s.refresh().isReady());
    QCoro::waitFor(std::move(first));
    EXPECT_EQ(server.requests().size(), 4);
}

// The first listing starts a pass of its own; the loop that starts right after waits for it and
// takes its pause from what it found. Later pauses follow each pass.
TEST_F(EngineFixture, PauseIsEightSecondsWhileBuildingElseTheIntervalButAtLeastTen) {
    prefs->setInteger(PreferenceKeys::refreshInterval, 120);
    account.addProject("", "p_web", "web");
    account.addDeployment("", deployment("q1", "p_web", "QUEUED", 0));
    AppState& s = connected();
    ASSERT_TRUE(waitUntil([&] { return clock.pendingSleepers() == 1; }));
    EXPECT_EQ(clock.requestedSleeps().first(), 8s);
    EXPECT_EQ(account.requestCount("/v6/deployments"), 1);

    account.deployments[""] = QJsonArray{deployment("q1", "p_web", "READY", 0, 1)};
    nextPass();
    ASSERT_TRUE(waitUntil([&] { return clock.pendingSleepers() == 1; }));
    EXPECT_EQ(clock.requestedSleeps().last(), 120s);

    s.setRefreshInterval(5);
    EXPECT_EQ(prefs->integer(PreferenceKeys::refreshInterval), 5);
    nextPass();
    ASSERT_TRUE(waitUntil([&] { return clock.pendingSleepers() == 1; }));
    EXPECT_EQ(clock.requestedSleeps().last(), 10s);
}

TEST_F(EngineFixture, APassingFailureShowsDuringThePassAndARejectedTokenEndsTheLoop) {
    account.addProject("", "p_a", "a");
    account.addProject("", "p_b", "b");
    account.addDeployment("", deployment("d1", "p_a", "BUILDING", -1));
    AppState& s = connected();
    ASSERT_EQ(s.snapshots().size(), 2);
    const int today = s.todayCount();

    account.failures.insert("/v9/projects", Response::vercelError(429, "rate_limited", "Slow"));
    QStringList errorsSeen;
    QObject::connect(&s, &AppState::lastErrorChanged,
                     [&] { errorsSeen << s.lastError().value_or("<none>"); });
    const int deploymentRequests = account.requestCount("/v6/deployments");
    QCoro::waitFor(s.refresh());
    EXPECT_EQ(errorsSeen, QStringList({"Vercel rate limit reached, retrying soon.", "<none>"}));
    ASSERT_EQ(s.snapshots().size(), 2);
    // A scope whose project list failed asks nothing more in that pass.
    EXPECT_EQ(account.requestCount("/v6/deployments"), deploymentRequests);
    EXPECT_TRUE(s.connection().isConnected());

    account.failures.clear();
    account.failures.insert("/v6/deployments", Response::vercelError(401, "unauthorized", "x"));
    account.deployments.clear();
    nextPass();
    EXPECT_EQ(s.connection().kind, Connection::Kind::failed);
    EXPECT_FALSE(s.isRefreshing());
    ASSERT_EQ(s.snapshots().size(), 2); // what was shown stays
    EXPECT_EQ(s.snapshots()[0].latest->deploymentID(), "d1");
    EXPECT_EQ(s.todayCount(), today);
    EXPECT_EQ(s.overallTone(), Tone::disconnected);
    const auto requests = server.requests().size();
    clock.advance(10min);
    QCoreApplication::processEvents();
    EXPECT_EQ(server.requests().size(), requests);
}

TEST_F(EngineFixture, TodayCountsFromMidnightAndProductionOnlyWhenAsked) {
    clock.setNow(QDateTime(QDate(2026, 11, 23), QTime(23, 50)));
    account.addProject("", "p_a", "a");
    QJsonObject production = deployment("d1", "p_a", "READY", -5, -4);
    production.insert("target", "production");
    account.addDeployment("", production);
    account.addDeployment("", deployment("d2", "p_a", "READY", -3, -2));
    AppState& s = connected();
    EXPECT_EQ(s.todayCount(), 2);
    s.setCountProductionOnly(true);
    ASSERT_TRUE(waitUntil([&] { return !s.isRefreshing() && s.todayCount() == 1; }));
    s.setCountProductionOnly(false);
    ASSERT_TRUE(waitUntil([&] { return !s.isRefreshing() && s.todayCount() == 2; }));
    EXPECT_EQ(prefs->boolean(PreferenceKeys::countProductionOnly), false);
    for (int i = 0; i < 3; ++i) // past midnight: a new day
        nextPass();
    EXPECT_EQ(s.todayCount(), 0);
}

TEST_F(EngineFixture, ToneFollowsTheWorstStatusAndAFreshSuccess) {
    account.addProject("", "p_a", "a");
    account.addProject("", "p_b", "b");
    const double readyAt = at(0) - 59'000;
    account.addDeployment(
        "", FakeVercelAccount::deployment("d1", "p_a", "READY", readyAt - 20'000, readyAt));
    AppState& s = connected();
    EXPECT_EQ(s.overallTone(), Tone::success);
    EXPECT_EQ(s.statusSummary(), "All systems live");
    clock.setNow(clock.now().addSecs(2));
    EXPECT_EQ(s.overallTone(), Tone::idle);
    s.setPreviewTone(Tone::queued);
    EXPECT_EQ(s.overallTone(), Tone::queued);
    s.setPreviewTone(std::nullopt);

    account.deployments[""] = QJsonArray{deployment("d2", "p_a", "BUILDING", -1),
                                         deployment("d3", "p_b", "INITIALIZING", -1)};
    QCoro::waitFor(s.refresh());
    EXPECT_EQ(s.overallTone(), Tone::building);
    EXPECT_EQ(s.statusSummary(), "2 building");
    prefs->setString(PreferenceKeys::appLanguage, "fr");
    EXPECT_EQ(s.statusSummary(), "2 builds en cours");
}
