#include "core/monitor/PreferenceKeys.h"
#include "support/EngineFixture.h"

using Response = LoopbackHttpServer::Response;

TEST_F(EngineFixture, WithoutATokenNothingIsAskedAndTheStoredTokenConnects) {
    AppState& idle = makeState();
    idle.start(false);
    QCoreApplication::processEvents();
    EXPECT_EQ(idle.connection(), Connection::noToken());
    EXPECT_EQ(idle.overallTone(), Tone::disconnected);
    EXPECT_EQ(idle.statusSummary(), "Not connected");
    EXPECT_TRUE(server.requests().isEmpty());

    ASSERT_TRUE(keychain.storeToken("tok_stored"));
    AppState& s = makeState();
    s.start(false);
    EXPECT_EQ(s.keychainMode(), KeychainStore::Mode::synced);
    ASSERT_TRUE(waitUntil([&] { return s.connection().isConnected() && s.hasLoadedOnce(); }));
    EXPECT_EQ(s.statusSummary(), "No project monitored");
}

TEST_F(EngineFixture, DefaultTeamComesFirstAndProjectsAreMergedSortedAndAllMonitored) {
    account.user.insert("defaultTeamId", "team_b");
    account.addTeam("team_a", "alpha-team");
    account.addTeam("team_b", "beta-team");
    account.token.insert("expiresAt", 1'798'761'600'000.0); // 2027-01-01 00:00 UTC
    account.addProject("", "p_beta", "beta");
    account.addProject("team_a", "p_alpha", "Alpha");
    account.addProject("team_a", "p_shared", "shared");
    account.addProject("team_b", "p_shared", "shared");
    account.addProject("team_a", "p_alpha2", "alpha2");
    AppState& s = connected();
    EXPECT_EQ(s.connection(), Connection::connected("ada"));
    ASSERT_EQ(s.scopes().size(), 2); // the personal scope is dropped
    EXPECT_EQ(s.scopes()[0], (Scope{QString("team_b"), "beta-team"}));
    EXPECT_EQ(s.scopes()[1], (Scope{QString("team_a"), "alpha-team"}));
    EXPECT_EQ(s.tokenExpiry(), TokenExpiry::at(QDateTime(QDate(2027, 1, 1), QTime(0, 0), Qt::UTC)));
    QStringList names;
    for (const ProjectRef& ref : s.availableProjects())
        names << ref.name + "@" + ref.scopeSlug;
    // The shared project keeps the scope where it was seen first.
    EXPECT_EQ(names, QStringList({"Alpha@alpha-team", "alpha2@alpha-team", "shared@beta-team"}));
    EXPECT_EQ(prefs->boolean(PreferenceKeys::projectsConfigured), true);
    EXPECT_EQ(prefs->stringList(PreferenceKeys::monitoredProjectIDs)->size(), 3);
    EXPECT_EQ(s.snapshots().size(), 3);

    // Without teams, the personal scope; an expiry beyond any date stays a valid date.
    account.teams = {};
    account.user.remove("defaultTeamId");
    account.token.insert("expiresAt", 1e300);
    QCoro::waitFor(s.connect("tok"));
    EXPECT_EQ(s.scopes(), QList<Scope>({Scope{std::nullopt, "ada"}}));
    EXPECT_EQ(s.tokenExpiry(),
              TokenExpiry::at(QDateTime::fromMSecsSinceEpoch(8'640'000'000'000'000, Qt::UTC)));
    account.token.remove("expiresAt");
    QCoro::waitFor(s.connect("tok"));
    EXPECT_EQ(s.tokenExpiry(), TokenExpiry::never());
}

TEST_F(EngineFixture, TheUsersChoiceOfProjectsSurvivesANewListing) {
    prefs->setBoolean(PreferenceKeys::projectsConfigured, true);
    prefs->setStringList(PreferenceKeys::monitoredProjectIDs, {"p_b"});
    account.addProject("", "p_a", "a");
    account.addProject("", "p_b", "b");
    account.addProject("", "p_c", "c");
    AppState& s = connected();
    EXPECT_EQ(s.effectiveMonitoredIDs(), QSet<QString>({"p_b"}));
    ASSERT_EQ(s.snapshots().size(), 1);
    EXPECT_EQ(s.snapshots()[0].id, "p_b");

    s.setAllMonitored(false);
    EXPECT_TRUE(s.effectiveMonitoredIDs().isEmpty()); // chosen "nothing" explicitly
    // Removing a project before ever choosing keeps the others.
    prefs->remove(PreferenceKeys::projectsConfigured);
    EXPECT_EQ(s.effectiveMonitoredIDs().size(), 3);
    s.removeMonitored("p_b");
    EXPECT_EQ(s.monitoredIDs(), QSet<QString>({"p_a", "p_c"}));
    EXPECT_EQ(prefs->boolean(PreferenceKeys::projectsConfigured), true);
    ASSERT_TRUE(waitUntil([&] { return !s.isRefreshing() && s.snapshots().size() == 2; }));
    s.setAllMonitored(false);
    EXPECT_TRUE(prefs->stringList(PreferenceKeys::monitoredProjectIDs)->isEmpty());
    s.addMonitored("p_c");
    EXPECT_EQ(s.monitoredIDs(), QSet<QString>({"p_c"}));
}

TEST_F(EngineFixture, SaveTokenTrimsStoresAndConnectsAndRemoveTokenForgetsAllButPreferences) {
    account.addProject("", "p_a", "a");
    secrets.failingWrites = {{KeychainMode::synced, -3}, {KeychainMode::localOnly, -3}};
    secrets.messages[-3] = "The collection is locked";
    AppState& s = makeState();
    QCoro::waitFor(s.saveToken("tok"));
    EXPECT_EQ(s.lastError(), "Keyring error: The collection is locked");
    EXPECT_EQ(s.connection(), Connection::noToken());
    secrets.failingWrites.clear();
    QCoro::waitFor(s.saveToken("   \n\t "));
    EXPECT_TRUE(server.requests().isEmpty());
    EXPECT_FALSE(keychain.loadToken());

    QCoro::waitFor(s.saveToken("  tok_pasted \n"));
    ASSERT_TRUE(s.connection().isConnected());
    EXPECT_EQ(server.requests().first().headerValues("Authorization").first(), "Bearer tok_pasted");
    EXPECT_EQ(keychain.loadToken()->token, "tok_pasted");
    EXPECT_EQ(s.keychainMode(), KeychainStore::Mode::synced);
    ASSERT_TRUE(waitUntil([&] { return s.hasLoadedOnce() && !s.isRefreshing(); }));

    QCoro::waitFor(s.saveToken("tok")); // its first pass is still on the network
    s.removeToken();
    EXPECT_EQ(s.connection(), Connection::noToken());
    EXPECT_FALSE(s.api());
    EXPECT_FALSE(s.keychainMode());
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

TEST_F(EngineFixture, NotifyingAsksForPermissionAndLaunchAtLoginShowsTheRealStatus) {
    AppState& s = makeState();
    s.setNotifyOnFailure(false);
    EXPECT_EQ(prefs->boolean(PreferenceKeys::notifyOnFailure), false);
    EXPECT_EQ(notifications.authorizationRequests, 0);
    s.setNotifyOnFailure(true);
    EXPECT_EQ(notifications.authorizationRequests, 1);
    s.setLaunchAtLogin(true);
    EXPECT_TRUE(s.launchAtLogin());
    loginItem.refusal = "Permission denied";
    s.setLaunchAtLogin(false);
    EXPECT_TRUE(s.launchAtLogin());
    EXPECT_EQ(s.lastError(), "Permission denied");
}
