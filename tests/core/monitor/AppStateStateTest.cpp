#include "core/common/Language.h"
#include "core/monitor/EngineFixture.h"
#include "core/monitor/PreferenceKeys.h"

#include <QFile>

using namespace std::chrono_literals;

namespace {

ProjectSnapshot snapshot(const QString& id, std::optional<QString> state,
                         const QString& deploymentId = "dpl_x") {
    ProjectSnapshot s{id, id, "acme", std::nullopt, std::nullopt, std::nullopt};
    if (state) {
        VercelDeployment d;
        d.id = deploymentId;
        d.readyState = state;
        s.latest = d;
    }
    return s;
}

} // namespace

TEST_F(EngineFixture, FirstLaunchDefaultsAndWrongTypesCountAsAbsent) {
    {
        AppState& s = makeState();
        EXPECT_EQ(s.refreshInterval(), 30);
        EXPECT_TRUE(s.notifyOnFailure());
        EXPECT_FALSE(s.countProductionOnly());
        EXPECT_EQ(s.language(), "auto");
        EXPECT_TRUE(s.heroMonochrome());
        EXPECT_TRUE(s.liveActivity());
        EXPECT_TRUE(s.monitoredIDs().isEmpty());
        EXPECT_EQ(s.connection(), Connection::noToken());
        EXPECT_EQ(s.overallTone(), Tone::disconnected);
        EXPECT_EQ(s.statusSummary(), "Not connected");
    }
    QFile file(prefs.filePath());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(R"({"refreshInterval": "60", "notifyOnFailure": 0, "heroMonochrome": "no",
                   "liveActivity": null, "countProductionOnly": "yes", "appLanguage": 3,
                   "monitoredProjectIDs": "p_a"})");
    file.close();
    prefs->reload();
    AppState& s = makeState();
    EXPECT_EQ(s.refreshInterval(), 30);
    EXPECT_TRUE(s.notifyOnFailure());
    EXPECT_TRUE(s.heroMonochrome());
    EXPECT_TRUE(s.liveActivity());
    EXPECT_FALSE(s.countProductionOnly());
    EXPECT_EQ(s.language(), "auto");
    EXPECT_TRUE(s.monitoredIDs().isEmpty());
}

TEST_F(EngineFixture, SettersWriteThroughAndLoginItemMirrorsTheService) {
    AppState& s = makeState();
    s.setNotifyOnFailure(false);
    EXPECT_EQ(notifications.authorizationRequests, 0);
    s.setNotifyOnFailure(true);
    EXPECT_EQ(notifications.authorizationRequests, 1);
    s.setLanguage("fr");
    s.setHeroMonochrome(false);
    s.setLiveActivity(false);
    EXPECT_EQ(prefs->string(PreferenceKeys::appLanguage), "fr");
    EXPECT_EQ(prefs->boolean(PreferenceKeys::heroMonochrome), false);
    EXPECT_EQ(prefs->boolean(PreferenceKeys::liveActivity), false);
    EXPECT_EQ(s.statusSummary(), "Non connecté");

    s.setLaunchAtLogin(true);
    EXPECT_TRUE(s.launchAtLogin());
    loginItem.refusal = "Permission denied";
    s.setLaunchAtLogin(false);
    EXPECT_TRUE(s.launchAtLogin()); // the real status, not the wish
    EXPECT_EQ(s.lastError(), "Permission denied");
}

TEST_F(EngineFixture, RemovingAProjectBeforeEverChoosingKeepsTheOthers) {
    account.addProject("", "p_a", "a");
    account.addProject("", "p_b", "b");
    account.addProject("", "p_c", "c");
    prefs->setBoolean(PreferenceKeys::projectsConfigured, true); // chosen "nothing" explicitly
    AppState& s = connected();
    EXPECT_TRUE(s.effectiveMonitoredIDs().isEmpty());
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

TEST_F(EngineFixture, ToneFollowsTheWorstStatusAndFreshSuccess) {
    account.addProject("", "p_a", "a");
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
    s.removeToken();
    EXPECT_EQ(s.overallTone(), Tone::disconnected);
}

TEST_F(EngineFixture, SummaryCountsFailuresAndBuildsInBothLanguages) {
    AppState& s = makeState();
    QCoro::waitFor(s.connect("tok"));
    ASSERT_TRUE(waitUntil([&] { return !s.isRefreshing(); }));
    EXPECT_EQ(s.statusSummary(), "No project monitored");
    EXPECT_EQ(s.overallTone(), Tone::idle);
    account.addProject("", "p_a", "a");
    account.addProject("", "p_b", "b");
    account.addProject("", "p_c", "c");
    account.addDeployment("", FakeVercelAccount::deployment("d1", "p_a", "ERROR", at(-3), at(-2)));
    account.addDeployment("", FakeVercelAccount::deployment("d2", "p_b", "BUILDING", at(-1)));
    account.addDeployment("", FakeVercelAccount::deployment("d3", "p_c", "INITIALIZING", at(-1)));
    QCoro::waitFor(s.loadProjects());
    ASSERT_TRUE(waitUntil([&] { return !s.isRefreshing() && s.snapshots().size() == 3; }));
    EXPECT_EQ(s.statusSummary(), "1 failed");
    EXPECT_EQ(s.overallTone(), Tone::error);
    prefs->setString(PreferenceKeys::appLanguage, "fr");
    EXPECT_EQ(s.statusSummary(), "1 échec");
    account.deployments[""] =
        QJsonArray{FakeVercelAccount::deployment("d2", "p_b", "BUILDING", at(-1)),
                   FakeVercelAccount::deployment("d3", "p_c", "INITIALIZING", at(-1))};
    QCoro::waitFor(s.refresh());
    EXPECT_EQ(s.statusSummary(), "2 builds en cours");
    EXPECT_EQ(s.overallTone(), Tone::building);
    prefs->setString(PreferenceKeys::appLanguage, "en");
    EXPECT_EQ(s.statusSummary(), "2 building");
}

TEST_F(EngineFixture, FailureNotificationsFollowStatusTransitions) {
    AppState& s = makeState();
    // First call only records, even for a failure.
    s.notifyFailures({snapshot("web", "ERROR", "d0")});
    EXPECT_TRUE(notifications.posted.isEmpty());
    s.notifyFailures({snapshot("web", "ERROR", "d0")});
    EXPECT_TRUE(notifications.posted.isEmpty());
    // error → error with another deployment: the project's status never left error.
    s.notifyFailures({snapshot("web", "ERROR", "d1")});
    EXPECT_TRUE(notifications.posted.isEmpty());
    s.notifyFailures({snapshot("web", "BUILDING", "d2")});
    s.notifyFailures({snapshot("web", "ERROR", "d2"), snapshot("api", "ERROR", "d9")});
    ASSERT_EQ(notifications.posted.size(), 2); // api was never seen before: notified too
    EXPECT_EQ(notifications.posted[0].identifier, "d2");
    EXPECT_EQ(notifications.posted[1].identifier, "d9");
    // Switched off, statuses are still recorded, so nothing comes late.
    s.notifyFailures({snapshot("web", "READY", "d3")});
    s.setNotifyOnFailure(false);
    s.notifyFailures({snapshot("web", "ERROR", "d3")});
    s.setNotifyOnFailure(true);
    s.notifyFailures({snapshot("web", "ERROR", "d3")});
    EXPECT_EQ(notifications.posted.size(), 2);
}

TEST_F(EngineFixture, FirstPassWithNoSnapshotsKeepsTheNextOneAFirstPass) {
    AppState& s = makeState();
    s.notifyFailures({});
    s.notifyFailures({snapshot("web", "ERROR", "d1")});
    EXPECT_TRUE(notifications.posted.isEmpty());
}

TEST_F(EngineFixture, FrenchNotificationWithoutGitDetailsHasAnEmptyBody) {
    prefs->setString(PreferenceKeys::appLanguage, "fr");
    AppState& s = makeState();
    s.notifyFailures({snapshot("my-app", "READY")});
    ProjectSnapshot failed = snapshot("my-app", "ERROR", "d1");
    s.notifyFailures({failed});
    ASSERT_EQ(notifications.posted.size(), 1);
    EXPECT_EQ(notifications.posted[0].title, "my-app : échec du déploiement");
    EXPECT_EQ(notifications.posted[0].body, "");
}
