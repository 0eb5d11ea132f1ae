#include "core/common/Preferences.h"
#include "core/monitor/EngineFixture.h"
#include "core/monitor/PreferenceKeys.h"

using Response = LoopbackHttpServer::Response;

TEST_F(EngineFixture, DefaultTeamComesFirstAndPersonalScopeIsDropped) {
    account.user.insert("defaultTeamId", "team_b");
    account.addTeam("team_a", "alpha-team");
    account.addTeam("team_b", "beta-team");
    account.token.insert("expiresAt", 1'798'761'600'000.0); // 2027-01-01 00:00 UTC
    AppState& s = connected();
    EXPECT_EQ(s.connection(), Connection::connected("ada"));
    ASSERT_EQ(s.scopes().size(), 2);
    EXPECT_EQ(s.scopes()[0], (Scope{QString("team_b"), "beta-team"}));
    EXPECT_EQ(s.scopes()[1], (Scope{QString("team_a"), "alpha-team"}));
    EXPECT_EQ(s.tokenExpiry(), TokenExpiry::at(QDateTime(QDate(2027, 1, 1), QTime(0, 0), Qt::UTC)));
    // Every request carried the token as a bearer, and only there.
    for (const auto& request : server.requests())
        EXPECT_EQ(request.headerValues("authorization"),
                  QList<QByteArray>{"Bearer tok_secret_123"});
}

TEST_F(EngineFixture, NoTeamsAndFailingTeamsBothLeaveThePersonalScope) {
    account.failures.insert("/v2/teams", Response::vercelError(500, "internal", "Oops"));
    account.token.remove("expiresAt");
    AppState& s = connected();
    EXPECT_TRUE(s.connection().isConnected());
    ASSERT_EQ(s.scopes().size(), 1);
    EXPECT_EQ(s.scopes()[0], (Scope{std::nullopt, "ada"}));
    EXPECT_EQ(s.tokenExpiry(), TokenExpiry::never());
    EXPECT_FALSE(s.lastError());
}

TEST_F(EngineFixture, TokenInfoFailureLeavesExpiryUnknown) {
    account.failures.insert("/v5/user/tokens/current", Response::vercelError(404, "nf", "x"));
    EXPECT_EQ(connected().tokenExpiry(), TokenExpiry::unknown());
}

TEST_F(EngineFixture, RejectedTokenFailsWithoutTouchingAnythingElse) {
    account.failures.insert("/v2/user", Response::vercelError(403, "forbidden", "Not authorized"));
    AppState& s = makeState();
    QCoro::waitFor(s.connect("bad"));
    EXPECT_EQ(s.connection(),
              Connection::failed("Token rejected by Vercel. It is invalid or expired."));
    EXPECT_FALSE(s.api());
    EXPECT_EQ(server.requests().size(), 1);
    EXPECT_TRUE(s.availableProjects().isEmpty());
}

TEST_F(EngineFixture, ProjectsAreMergedSortedAndAllMonitoredOnFirstListing) {
    account.addTeam("team_a", "acme");
    account.addProject("", "p_beta", "beta");
    account.addProject("", "p_shared", "shared");
    account.addProject("team_a", "p_alpha", "Alpha");
    account.addProject("team_a", "p_shared", "shared");
    account.addProject("team_a", "p_alpha2", "alpha2");
    AppState& s = connected();
    QStringList names;
    for (const ProjectRef& ref : s.availableProjects())
        names << ref.name;
    EXPECT_EQ(names, QStringList({"Alpha", "alpha2", "beta", "shared"}));
    // The shared project keeps the scope where it was seen first.
    EXPECT_EQ(s.availableProjects()[3].scopeSlug, "ada");
    EXPECT_FALSE(s.availableProjects()[3].teamId);
    EXPECT_EQ(prefs->boolean(PreferenceKeys::projectsConfigured), true);
    EXPECT_EQ(prefs->stringList(PreferenceKeys::monitoredProjectIDs)->size(), 4);
    EXPECT_EQ(s.snapshots().size(), 4);
    EXPECT_TRUE(s.hasLoadedOnce());
}

TEST_F(EngineFixture, UsersEarlierChoiceSurvivesANewListing) {
    prefs->setBoolean(PreferenceKeys::projectsConfigured, true);
    prefs->setStringList(PreferenceKeys::monitoredProjectIDs, {"p_b"});
    account.addProject("", "p_a", "a");
    account.addProject("", "p_b", "b");
    AppState& s = connected();
    EXPECT_EQ(s.effectiveMonitoredIDs(), QSet<QString>({"p_b"}));
    ASSERT_EQ(s.snapshots().size(), 1);
    EXPECT_EQ(s.snapshots()[0].id, "p_b");
}

TEST_F(EngineFixture, SaveTokenTrimsStoresAndConnects) {
    AppState& s = makeState();
    QCoro::waitFor(s.saveToken("   \n\t "));
    EXPECT_TRUE(server.requests().isEmpty());
    EXPECT_FALSE(keychain.loadToken());

    QCoro::waitFor(s.saveToken("  tok_pasted \n"));
    EXPECT_TRUE(s.connection().isConnected());
    EXPECT_EQ(server.requests().first().headerValues("Authorization").first(), "Bearer tok_pasted");
    ASSERT_TRUE(keychain.loadToken());
    EXPECT_EQ(keychain.loadToken()->token, "tok_pasted");
    EXPECT_EQ(s.keychainMode(), KeychainStore::Mode::synced);
}

TEST_F(EngineFixture, SaveTokenWithBrokenKeyringShowsTheErrorAndDoesNotConnect) {
    secrets.failingWrites = {{KeychainMode::synced, -3}, {KeychainMode::localOnly, -3}};
    secrets.messages[-3] = "The collection is locked";
    AppState& s = makeState();
    QCoro::waitFor(s.saveToken("tok"));
    ASSERT_TRUE(s.lastError());
    EXPECT_EQ(s.lastError(), "Keyring error: The collection is locked");
    EXPECT_EQ(s.connection(), Connection::noToken());
    EXPECT_TRUE(server.requests().isEmpty());
}

TEST_F(EngineFixture, RemoveTokenResetsTheConnectionButKeepsPreferences) {
    account.addProject("", "p_a", "a");
    AppState& s = connected();
    QCoro::waitFor(s.saveToken("tok")); // its first pass is still on the network
    s.removeToken();
    EXPECT_EQ(s.connection(), Connection::noToken());
    EXPECT_FALSE(s.api());
    EXPECT_FALSE(s.keychainMode());
    EXPECT_TRUE(s.snapshots().isEmpty());
    EXPECT_TRUE(s.availableProjects().isEmpty());
    EXPECT_EQ(s.todayCount(), 0);
    EXPECT_FALSE(s.hasLoadedOnce());
    EXPECT_FALSE(keychain.loadToken());
    EXPECT_EQ(prefs->stringList(PreferenceKeys::monitoredProjectIDs), QStringList({"p_a"}));
    // A pass that was under way publishes nothing, and the loop is gone: time passes, nothing
    // is asked.
    waitUntil([] { return false; }, 200);
    EXPECT_TRUE(s.snapshots().isEmpty());
    const auto requests = server.requests().size();
    clock.advance(std::chrono::minutes(10));
    waitUntil([] { return false; }, 100);
    EXPECT_EQ(server.requests().size(), requests);
}

TEST_F(EngineFixture, StartConnectsWithTheStoredTokenOrStaysWithout) {
    AppState& idle = makeState();
    idle.start(false);
    QCoreApplication::processEvents();
    EXPECT_EQ(idle.connection(), Connection::noToken());
    EXPECT_TRUE(server.requests().isEmpty());

    ASSERT_TRUE(keychain.storeToken("tok_stored"));
    AppState& s = makeState();
    s.start(false);
    EXPECT_EQ(s.keychainMode(), KeychainStore::Mode::synced);
    ASSERT_TRUE(waitUntil([&] { return s.connection().isConnected() && s.hasLoadedOnce(); }));
}
