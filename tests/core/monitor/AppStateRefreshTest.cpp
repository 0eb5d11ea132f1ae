#include "core/monitor/EngineFixture.h"
#include "core/monitor/PreferenceKeys.h"

using Response = LoopbackHttpServer::Response;
using namespace std::chrono_literals;

TEST_F(EngineFixture, OnePassMakesTwoRequestsPerScopeAndBuildsSnapshots) {
    account.addTeam("team_a", "acme");
    account.addProject(
        "", "p_web", "web",
        {FakeVercelAccount::deployment("dpl_old", "p_web", "READY", at(-300), at(-299))});
    account.addProject("team_a", "p_api", "api");
    account.addDeployment("",
                          FakeVercelAccount::deployment("dpl_new", "p_web", "BUILDING", at(-1)));
    QJsonObject yesterday =
        FakeVercelAccount::deployment("dpl_y", "p_api", "READY", at(-15 * 60 - 1), at(-15 * 60));
    account.addDeployment("team_a", yesterday);
    AppState& s = connected();

    server.clearRequests();
    s.startLoop(); // a fresh loop runs one pass at once
    ASSERT_TRUE(waitUntil([&] { return server.requests().size() == 4 && !s.isRefreshing(); }));
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
}

TEST_F(EngineFixture, PauseIsEightSecondsWhileBuildingElseTheIntervalButAtLeastTen) {
    prefs->setInteger(PreferenceKeys::refreshInterval, 120);
    account.addProject("", "p_web", "web");
    account.addDeployment("",
                          FakeVercelAccount::deployment("d1", "p_web", "READY", at(-60), at(-59)));
    AppState& s = connected();
    ASSERT_TRUE(waitUntil([&] { return clock.pendingSleepers() == 1; }));
    EXPECT_EQ(clock.requestedSleeps().last(), 120s);

    account.addDeployment("", FakeVercelAccount::deployment("d2", "p_web", "QUEUED", at(0)));
    nextPass();
    ASSERT_TRUE(waitUntil([&] { return clock.pendingSleepers() == 1; }));
    EXPECT_EQ(s.snapshots()[0].status(), DeployStatus::queued);
    EXPECT_EQ(clock.requestedSleeps().last(), 8s);

    s.setRefreshInterval(5);
    EXPECT_EQ(prefs->integer(PreferenceKeys::refreshInterval), 5);
    account.deployments[""] =
        QJsonArray{FakeVercelAccount::deployment("d2", "p_web", "READY", at(0), at(1))};
    nextPass();
    ASSERT_TRUE(waitUntil([&] { return clock.pendingSleepers() == 1; }));
    EXPECT_EQ(clock.requestedSleeps().last(), 10s);
}

TEST_F(EngineFixture, RateLimitShowsDuringThePassAndClearsAfterIt) {
    account.addProject("", "p_a", "a");
    account.addProject("", "p_b", "b");
    AppState& s = connected();
    ASSERT_EQ(s.snapshots().size(), 2);

    account.failures.insert("/v9/projects", Response::vercelError(429, "rate_limited", "Slow")
                                                .withHeader("X-RateLimit-Remaining", "0"));
    QStringList errorsSeen;
    QObject::connect(&s, &AppState::lastErrorChanged,
                     [&] { errorsSeen << s.lastError().value_or("<none>"); });
    const int deploymentRequests = account.requestCount("/v6/deployments");
    nextPass();
    EXPECT_EQ(errorsSeen, QStringList({"Vercel rate limit reached, retrying soon.", "<none>"}));
    ASSERT_EQ(s.snapshots().size(), 2);
    EXPECT_FALSE(s.snapshots()[0].latest);
    // A scope whose project list failed asks nothing more in that pass.
    EXPECT_EQ(account.requestCount("/v6/deployments"), deploymentRequests);
    EXPECT_TRUE(s.connection().isConnected());
}

TEST_F(EngineFixture, ServerErrorWithoutSnapshotsStaysVisible) {
    account.failures.insert("/v6/deployments", Response::vercelError(500, "internal", "x"));
    AppState& s = connected();
    EXPECT_TRUE(s.snapshots().isEmpty());
    EXPECT_EQ(s.lastError(), "Vercel error (HTTP 500).");
    EXPECT_TRUE(s.hasLoadedOnce());
}

TEST_F(EngineFixture, RejectedTokenMidRunEndsTheConnectionAndTheLoop) {
    account.addProject("", "p_a", "a");
    account.addDeployment("", FakeVercelAccount::deployment("d1", "p_a", "BUILDING", at(-1)));
    AppState& s = connected();
    const auto before = s.snapshots();
    const int todayBefore = s.todayCount();
    account.failures.insert("/v6/deployments", Response::vercelError(401, "unauthorized", "x"));
    account.deployments.clear();
    nextPass();
    EXPECT_EQ(s.connection(),
              Connection::failed("Token rejected by Vercel. It is invalid or expired."));
    EXPECT_FALSE(s.isRefreshing());
    EXPECT_EQ(s.snapshots().size(), before.size());
    EXPECT_EQ(s.snapshots()[0].latest->deploymentID(), "d1");
    EXPECT_EQ(s.todayCount(), todayBefore);
    const auto requests = server.requests().size();
    clock.advance(10min);
    QCoreApplication::processEvents();
    EXPECT_EQ(server.requests().size(), requests);
    EXPECT_EQ(s.overallTone(), Tone::disconnected);
}

TEST_F(EngineFixture, APassRequestedDuringAPassIsDropped) {
    account.addProject("", "p_a", "a");
    AppState& s = connected();
    server.clearRequests();
    auto first = s.refresh();
    auto second = s.refresh();
    EXPECT_TRUE(second.isReady());
    QCoro::waitFor(std::move(first));
    EXPECT_EQ(server.requests().size(), 2);
}

TEST_F(EngineFixture, ProductionOnlyCountsProductionAndTriggersAPass) {
    account.addProject("", "p_a", "a");
    QJsonObject production = FakeVercelAccount::deployment("d1", "p_a", "READY", at(-5), at(-4));
    production.insert("target", "production");
    account.addDeployment("", production);
    account.addDeployment("", FakeVercelAccount::deployment("d2", "p_a", "READY", at(-3), at(-2)));
    AppState& s = connected();
    EXPECT_EQ(s.todayCount(), 2);
    s.setCountProductionOnly(true);
    ASSERT_TRUE(waitUntil([&] { return !s.isRefreshing() && s.todayCount() == 1; }));
    s.setCountProductionOnly(false);
    ASSERT_TRUE(waitUntil([&] { return !s.isRefreshing() && s.todayCount() == 2; }));
    EXPECT_EQ(prefs->boolean(PreferenceKeys::countProductionOnly), false);
}

TEST_F(EngineFixture, MidnightResetsTheCount) {
    clock.setNow(QDateTime(QDate(2026, 11, 23), QTime(23, 59, 30)));
    account.addProject("", "p_a", "a");
    account.addDeployment("", FakeVercelAccount::deployment(
                                  "d1", "p_a", "READY", clock.now().toMSecsSinceEpoch() - 10'000,
                                  clock.now().toMSecsSinceEpoch() - 5'000));
    AppState& s = connected();
    EXPECT_EQ(s.todayCount(), 1);
    nextPass(); // five minutes later: a new day
    EXPECT_EQ(s.todayCount(), 0);
}

TEST_F(EngineFixture, FailureIsNotifiedOnceWithItsLink) {
    account.addProject("", "p_web", "web");
    account.addDeployment("", FakeVercelAccount::deployment("dpl_1", "p_web", "BUILDING", at(-1)));
    AppState& s = connected();
    EXPECT_TRUE(notifications.posted.isEmpty());
    QJsonObject failed = FakeVercelAccount::deployment("dpl_1", "p_web", "ERROR", at(-1), at(0));
    failed.insert("inspectorUrl", "https://vercel.com/ada/web/AbC123");
    account.deployments[""] = QJsonArray{failed};
    nextPass();
    nextPass();
    ASSERT_EQ(notifications.posted.size(), 1);
    const FailureNotification& n = notifications.posted.first();
    EXPECT_EQ(n.identifier, "dpl_1");
    EXPECT_EQ(n.title, "web: deployment failed");
    EXPECT_EQ(n.body, "Branch main · Fix login · 1 min");
    EXPECT_EQ(n.url, QUrl("https://vercel.com/ada/web/AbC123"));
    EXPECT_EQ(s.overallTone(), Tone::error);
    EXPECT_EQ(s.statusSummary(), "1 failed");
}

TEST_F(EngineFixture, CopyForAIFetchesTheLogOrSaysItIsUnavailable) {
    account.addProject("", "p_web", "web");
    account.addDeployment("",
                          FakeVercelAccount::deployment("dpl_1", "p_web", "ERROR", at(-3), at(-1)));
    QJsonArray events;
    for (int i = 0; i < 30; ++i)
        events.append(QJsonObject{
            {"type", "stdout"}, {"created", at(-2)}, {"text", QString("step %1").arg(i)}});
    events.append(QJsonObject{{"type", "stderr"},
                              {"payload", QJsonObject{{"text", "\x1b[31mError: boom\x1b[0m"}}}});
    account.events.insert("dpl_1", events);
    AppState& s = connected();
    ASSERT_TRUE(QCoro::waitFor(s.copyFailureReport(s.snapshots().first())));
    ASSERT_EQ(clipboard.texts.size(), 1);
    EXPECT_TRUE(clipboard.texts[0].contains("```\nstep 15\n")) << clipboard.texts[0].toStdString();
    EXPECT_TRUE(clipboard.texts[0].contains("step 29\nError: boom\n```"));
    const auto eventsRequest = server.requestsTo("/v3/deployments/dpl_1/events");
    ASSERT_EQ(eventsRequest.size(), 1);
    EXPECT_EQ(eventsRequest[0].rawQuery, "builds=1&limit=-1");

    account.events.clear(); // the endpoint now answers 404
    ASSERT_TRUE(QCoro::waitFor(s.copyFailureReport(s.snapshots().first())));
    EXPECT_TRUE(clipboard.texts[1].contains("```\n(log unavailable)\n```"));

    ProjectSnapshot empty = s.snapshots().first();
    empty.latest.reset();
    EXPECT_FALSE(QCoro::waitFor(s.copyFailureReport(empty)));
    EXPECT_EQ(clipboard.texts.size(), 2);
}
