// What reaches the notifications: a failure once per deployment, never from the first pass, a
// pause with its summary, the slow-build warning and "Copy for AI" from the notification itself.
#include "core/monitor/PreferenceKeys.h"
#include "core/monitor/SlowBuildCheck.h"
#include "core/monitor/StatusLines.h"
#include "support/EngineFixture.h"

using namespace std::chrono_literals;

namespace {

ProjectSnapshot snapshot(const QString& id, const QString& state, const QString& deploymentId) {
    VercelDeployment d;
    d.id = deploymentId;
    d.readyState = state;
    return {id, id, "acme", std::nullopt, d, std::nullopt};
}

ProjectSnapshot building(double startedMs, std::optional<double> median, QString id = "dpl_1") {
    VercelDeployment deployment;
    deployment.id = std::move(id);
    deployment.state = QStringLiteral("BUILDING");
    deployment.buildingAt = startedMs;
    return {"p_api", "api", "acme", std::nullopt, deployment, median};
}

} // namespace

TEST_F(EngineFixture, FailureNotificationsFollowStatusTransitions) {
    AppState& s = makeState();
    s.notifyFailures({}); // a first pass with nothing keeps the next one a first pass
    // The first pass only records, even a failure.
    s.notifyFailures({snapshot("web", "ERROR", "d0")});
    s.notifyFailures({snapshot("web", "ERROR", "d0")});
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
    // In French, and without git details: an empty body.
    prefs->setString(PreferenceKeys::appLanguage, "fr");
    s.notifyFailures({snapshot("my-app", "READY", "d4")});
    s.notifyFailures({snapshot("my-app", "ERROR", "d5")});
    ASSERT_EQ(notifications.posted.size(), 3);
    EXPECT_EQ(notifications.posted[2].title, "my-app : échec du déploiement");
    EXPECT_EQ(notifications.posted[2].body, "");
}

// A deployment Vercel blocked (a commit author without a seat on the team) is a failure of its
// own, told once with Vercel's reason; a state Quillon does not know keeps the deployment's data.
TEST_F(EngineFixture, ABlockedDeploymentIsToldWithItsReasonAndAnUnknownStateKeepsItsData) {
    account.addProject("", "p_a", "a");
    account.addProject("", "p_b", "b");
    account.addProject("", "p_c", "c");
    for (const QString project : {"p_a", "p_b", "p_c"})
        account.addDeployment("", deployment("old_" + project, project, "READY", -30, -29));
    AppState& s = connected();
    QJsonObject blocked = deployment("d_blocked", "p_a", "BLOCKED", -2);
    blocked.insert("readyStateReason", "Git author eve@acme.dev must have access to the team "
                                       "Acme on Vercel to create deployments.");
    QJsonObject archived = deployment("d_odd", "p_c", "ARCHIVED", -1);
    account.deployments[""] =
        QJsonArray{blocked, deployment("d_init", "p_b", "INITIALIZING", -3), archived};
    nextPass();
    nextPass();

    ASSERT_EQ(notifications.posted.size(), 1);
    const FailureNotification& told = notifications.posted.first();
    EXPECT_EQ(told.identifier, "d_blocked");
    EXPECT_EQ(told.title, "a: deployment blocked");
    EXPECT_EQ(told.body, "Git author eve@acme.dev must have access to the team Acme on Vercel "
                         "to create deployments.");
    EXPECT_FALSE(told.offersReport); // never built: no log to report
    EXPECT_EQ(s.overallTone(), Tone::error);
    EXPECT_EQ(s.statusSummary(), "1 failed");
    QStringList lines;
    for (const ProjectSnapshot& snapshot : s.snapshots())
        lines << snapshotLine(snapshot, clock.now());
    // In progress first, then the newest (two passes of five minutes later).
    EXPECT_EQ(lines, QStringList({"  Initializing  b  main  4f2a9c1  Fix login  13 min ago",
                                  "  State ARCHIVED  c  main  4f2a9c1  Fix login  11 min ago",
                                  "  Blocked  a  main  4f2a9c1  Fix login  12 min ago"}));
    prefs->setString(PreferenceKeys::appLanguage, "fr");
    EXPECT_EQ(s.snapshots()[2].statusTitle(true), "Bloqué");
}

TEST_F(EngineFixture, AFailureIsNotifiedOnceWithItsLinkAndItsReportCanBeCopiedFromThere) {
    account.addProject("", "p_web", "web");
    account.addDeployment("", deployment("dpl_1", "p_web", "BUILDING", -1));
    QJsonArray events;
    for (int i = 0; i < 30; ++i)
        events.append(QJsonObject{{"type", "stdout"}, {"text", QString("step %1").arg(i)}});
    events.append(QJsonObject{{"type", "stderr"},
                              {"payload", QJsonObject{{"text", "\x1b[31mError: boom\x1b[0m"}}}});
    account.events.insert("dpl_1", events);
    AppState& s = connected();
    QJsonObject failed = deployment("dpl_1", "p_web", "ERROR", -1, 0);
    failed.insert("inspectorUrl", "https://vercel.com/ada/web/AbC123");
    account.deployments[""] = QJsonArray{failed};
    nextPass();
    nextPass();
    ASSERT_EQ(notifications.posted.size(), 1);
    const FailureNotification n = notifications.posted.first();
    EXPECT_EQ(n.identifier, "dpl_1");
    EXPECT_EQ(n.title, "web: deployment failed");
    EXPECT_EQ(n.body, "Branch main · Fix login · 1 min");
    EXPECT_EQ(n.url, QUrl("https://vercel.com/ada/web/AbC123"));
    EXPECT_TRUE(n.offersReport);
    EXPECT_EQ(s.overallTone(), Tone::error);
    EXPECT_EQ(s.statusSummary(), "1 failed");
    prefs->setString(PreferenceKeys::appLanguage, "fr");
    EXPECT_EQ(s.statusSummary(), "1 échec");
    prefs->setString(PreferenceKeys::appLanguage, "en");

    ASSERT_TRUE(notifications.reportHandler);
    notifications.reportHandler("dpl_unknown"); // not a failure of this session: nothing
    notifications.reportHandler("dpl_1");
    ASSERT_TRUE(waitUntil([&] { return notifications.posted.size() == 2; }));
    ASSERT_EQ(clipboard.texts.size(), 1);
    EXPECT_TRUE(clipboard.texts[0].startsWith("# Vercel deployment failed: web\n"));
    EXPECT_TRUE(clipboard.texts[0].contains("```\nstep 15\n")) << clipboard.texts[0].toStdString();
    EXPECT_TRUE(clipboard.texts[0].contains("step 29\nError: boom\n```"));
    const auto eventsRequest = server.requestsTo("/v3/deployments/dpl_1/events");
    ASSERT_EQ(eventsRequest.size(), 1);
    EXPECT_EQ(eventsRequest[0].rawQuery, "builds=1&limit=-1");
    EXPECT_EQ(notifications.posted[1].title, "Failure report copied");
    EXPECT_TRUE(notifications.posted[1].transient);
    ProjectSnapshot empty = s.snapshots().first();
    empty.latest.reset();
    EXPECT_FALSE(QCoro::waitFor(s.copyFailureReport(empty)));
}

TEST_F(EngineFixture, PausedFailuresArriveAsOneSummaryWhenThePauseEnds) {
    account.addProject("", "p_web", "web");
    account.addProject("", "p_api", "api");
    account.addDeployment("", deployment("dpl_w", "p_web", "BUILDING", -1));
    account.addDeployment("", deployment("dpl_a", "p_api", "BUILDING", -1));
    AppState& s = connected();
    s.notificationPause().pause(60min);
    EXPECT_EQ(s.notificationPause().pausedUntilText(), "Paused until 16:00");
    account.deployments[""] = QJsonArray{deployment("dpl_w", "p_web", "ERROR", -1, 0),
                                         deployment("dpl_a", "p_api", "ERROR", -1, 0)};
    nextPass();
    EXPECT_TRUE(notifications.posted.isEmpty());

    // A language change keeps the pause; its end posts one summary of both failures.
    s.setLanguage("fr");
    EXPECT_TRUE(s.notificationPause().isPaused());
    clock.advance(60min);
    ASSERT_TRUE(waitUntil([&] { return !s.notificationPause().isPaused(); }));
    ASSERT_EQ(notifications.posted.size(), 1);
    EXPECT_EQ(notifications.posted[0].title, "2 déploiements ont échoué pendant la pause");
    // Each line was written when its failure happened, before the switch.
    QStringList lines = notifications.posted[0].body.split('\n');
    lines.sort();
    EXPECT_EQ(lines, QStringList({"api: deployment failed", "web: deployment failed"}));
    EXPECT_FALSE(notifications.posted[0].offersReport);
}

TEST_F(EngineFixture, ResumingEarlyPostsTheSummaryAtOnceAndNothingWhenNothingFailed) {
    NotificationPause& pause = makeState().notificationPause();
    pause.pause(60min);
    pause.resume();
    EXPECT_TRUE(notifications.posted.isEmpty());
    EXPECT_EQ(pause.pausedUntilText(), "");

    pause.pause(60min);
    FailureNotification failure{"dpl_1", "web: deployment failed", "Branch main",
                                QUrl("https://x")};
    failure.offersReport = true;
    pause.deliver(failure);
    EXPECT_TRUE(notifications.posted.isEmpty());
    pause.resume();
    ASSERT_EQ(notifications.posted.size(), 1);
    EXPECT_EQ(notifications.posted[0].title, "1 deployment failed while paused");
    // A single failure keeps what its own notification offered.
    EXPECT_EQ(notifications.posted[0].url, QUrl("https://x"));
    EXPECT_TRUE(notifications.posted[0].offersReport);
    // The old timer is gone: time passing later posts nothing more.
    clock.advance(2h);
    EXPECT_EQ(notifications.posted.size(), 1);
}

TEST_F(EngineFixture, EachSlowBuildIsToldOnceAndOnlyWhenAskedFor) {
    const QDateTime now = clock.now();
    const double nowMs = static_cast<double>(now.toMSecsSinceEpoch());
    // Twice the median, and at least two minutes.
    EXPECT_FALSE(slowBuildElapsed(building(nowMs - 199'000, 100), now));
    EXPECT_EQ(slowBuildElapsed(building(nowMs - 201'000, 100), now), 201);
    EXPECT_FALSE(slowBuildElapsed(building(nowMs - 119'000, 30), now));
    EXPECT_TRUE(slowBuildElapsed(building(nowMs - 121'000, 30), now));
    EXPECT_FALSE(slowBuildElapsed(building(nowMs - 3'600'000, std::nullopt), now));
    ProjectSnapshot done = building(nowMs - 3'600'000, 30);
    done.latest->state = QStringLiteral("READY");
    EXPECT_FALSE(slowBuildElapsed(done, now));

    AppState& s = makeState();
    const QList<ProjectSnapshot> slow{building(nowMs - 300'000, 60, "dpl_1")};
    s.notifyFailures(slow);
    EXPECT_TRUE(notifications.posted.isEmpty()); // off by default
    s.setSlowBuildWarning(true);
    s.notifyFailures(slow);
    s.notifyFailures(slow);
    // A second slow build of the same project is a new deployment: told again.
    s.notifyFailures({building(nowMs - 400'000, 60, "dpl_2")});
    ASSERT_EQ(notifications.posted.size(), 2);
    EXPECT_EQ(notifications.posted[0].title, "api: build is taking longer than usual");
    EXPECT_EQ(notifications.posted[0].body, "5 min");
    EXPECT_EQ(notifications.posted[1].identifier, "dpl_2");
}
