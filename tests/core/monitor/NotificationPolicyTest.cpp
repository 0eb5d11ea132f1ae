// What reaches the notifications: a failure once per deployment, never from the first pass, a
// pause with its summary, the slow-build warning, "Copy for AI" from the notification itself,
// muted projects, the switches that keep kinds of deployments quiet, and "live again".
#include "core/monitor/PreferenceKeys.h"
#include "core/monitor/SlowBuildCheck.h"
#include "core/monitor/StatusLines.h"
#include "support/EngineFixture.h"

#include <QSignalSpy>

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
    // A muted project's slow build is not told either.
    s.muteProject("p_api", "api", MuteLength::oneHour);
    s.notifyFailures({building(nowMs - 400'000, 60, "dpl_3")});
    EXPECT_EQ(notifications.posted.size(), 2);
}

namespace {

// Projects of a fake account that each fail in the next pass: one per rule that could silence
// it, and one no rule touches.
struct FailingKinds {
    QString id;
    QString target;  // empty: a preview
    QString creator; // "usr_1" is the account's own user
    QString branch;
};

const QList<FailingKinds> failingKinds{
    {"p_prod", "production", "usr_1", "main"},
    {"p_preview", "", "usr_1", "feat/cart"},
    {"p_theirs", "production", "usr_2", "main"},
    {"p_bot", "production", "usr_1", "dependabot/npm_and_yarn/next-15.0.4"},
};

QJsonObject shaped(QJsonObject deployment, const FailingKinds& kind) {
    deployment.insert("target", kind.target.isEmpty() ? QJsonValue() : QJsonValue(kind.target));
    deployment.insert("creator", QJsonObject{{"uid", kind.creator}});
    QJsonObject meta = deployment.value("meta").toObject();
    meta.insert("githubCommitRef", kind.branch);
    deployment.insert("meta", meta);
    return deployment;
}

} // namespace

TEST_F(EngineFixture, AMutedProjectFailsSilentlyStaysRedAndAnHourLaterSpeaksAgain) {
    account.addProject("", "p_web", "web");
    account.addProject("", "p_api", "api");
    account.addDeployment("", deployment("dpl_w1", "p_web", "BUILDING", -1));
    account.addDeployment("", deployment("dpl_a1", "p_api", "READY", -30, -29));
    AppState& s = connected();
    s.muteProject("p_web", "web", MuteLength::oneHour);
    EXPECT_EQ(mutedText(*s.activeMute("p_web"), clock.now()), "Muted until 16:00");
    // Kept in the preferences, for the next start and for quillon-cli.
    EXPECT_EQ(MuteStore::read(*prefs).value("p_web"),
              (ProjectMute{"web", clock.now().addSecs(3600)}));

    account.deployments[""] = QJsonArray{deployment("dpl_w1", "p_web", "ERROR", -1, 0),
                                         deployment("dpl_a1", "p_api", "READY", -30, -29)};
    nextPass();
    EXPECT_TRUE(notifications.posted.isEmpty());
    EXPECT_EQ(s.overallTone(), Tone::error);
    EXPECT_EQ(s.statusSummary(), "1 failed");
    EXPECT_FALSE(s.interrupts(s.snapshots().first()));

    // The end comes on the clock by itself: the mute is gone from the state and the store.
    QSignalSpy announced(&s, &AppState::preferencesChanged);
    clock.advance(54min);
    EXPECT_TRUE(s.activeMute("p_web"));
    clock.advance(1min);
    ASSERT_TRUE(waitUntil([&] { return !s.activeMute("p_web"); }));
    EXPECT_GE(announced.count(), 1);
    EXPECT_TRUE(s.mutes().isEmpty());
    EXPECT_FALSE(prefs->contains(PreferenceKeys::mutedProjects));
    // Unmuted while still failing, the failure does not come late; the next one speaks.
    nextPass();
    EXPECT_TRUE(notifications.posted.isEmpty());
    account.deployments[""] = QJsonArray{deployment("dpl_w2", "p_web", "BUILDING", 60),
                                         deployment("dpl_a1", "p_api", "READY", -30, -29)};
    nextPass();
    account.deployments[""] = QJsonArray{deployment("dpl_w2", "p_web", "ERROR", 60, 61),
                                         deployment("dpl_a1", "p_api", "READY", -30, -29)};
    nextPass();
    ASSERT_EQ(notifications.posted.size(), 1);
    EXPECT_EQ(notifications.posted[0].identifier, "dpl_w2");
}

TEST_F(EngineFixture, MutesComposeWithThePauseAndLastUntilTomorrowOrUntilUnmuted) {
    account.addProject("", "p_web", "web");
    account.addProject("", "p_api", "api");
    account.addDeployment("", deployment("dpl_w1", "p_web", "BUILDING", -1));
    account.addDeployment("", deployment("dpl_a1", "p_api", "BUILDING", -1));
    AppState& s = connected();
    s.muteProject("p_web", "web", MuteLength::untilTomorrow);
    EXPECT_EQ(s.activeMute("p_web")->until, QDateTime(QDate(2026, 11, 24), QTime(0, 0)));
    EXPECT_EQ(mutedText(*s.activeMute("p_web"), clock.now()), "Muted until tomorrow");
    s.muteProject("p_api", "api", MuteLength::untilUnmuted);
    EXPECT_EQ(mutedText(*s.activeMute("p_api"), clock.now()), "Muted");
    s.unmuteProject("p_api");
    s.notificationPause().pause(60min);
    account.deployments[""] = QJsonArray{deployment("dpl_w1", "p_web", "ERROR", -1, 0),
                                         deployment("dpl_a1", "p_api", "ERROR", -1, 0)};
    nextPass();
    s.notificationPause().resume();
    // The summary holds the unmuted failure alone.
    ASSERT_EQ(notifications.posted.size(), 1);
    EXPECT_EQ(notifications.posted[0].title, "1 deployment failed while paused");
    EXPECT_EQ(notifications.posted[0].identifier, "dpl_a1");
    // Midnight ends "until tomorrow"; a mute without an end outlasts any time.
    s.muteProject("p_api", "api", MuteLength::untilUnmuted);
    clock.advance(9h);
    ASSERT_TRUE(waitUntil([&] { return !s.activeMute("p_web"); }));
    EXPECT_TRUE(s.activeMute("p_api"));
    EXPECT_EQ(MuteStore::read(*prefs).keys(), QStringList{"p_api"});
}

TEST_F(EngineFixture, ProductionOnlyOnlyMineAndBotsEachSilenceTheirOwnKindAndNothingElse) {
    for (const FailingKinds& kind : failingKinds)
        account.addProject("", kind.id, kind.id);
    const auto deploymentsIn = [&](const QString& state) {
        QJsonArray list;
        for (const FailingKinds& kind : failingKinds)
            list.append(shaped(deployment("dpl_" + kind.id, kind.id, state, -1,
                                          state == "ERROR" ? std::optional(0) : std::nullopt),
                               kind));
        return list;
    };
    // Which projects a failure of each kind reaches, with one switch on at a time.
    const auto notifiedWith = [&](void (AppState::*setter)(bool)) {
        state.reset();
        notifications.posted.clear();
        account.deployments[""] = deploymentsIn("BUILDING");
        AppState& s = connected();
        if (setter)
            (s.*setter)(true);
        account.deployments[""] = deploymentsIn("ERROR");
        nextPass();
        // Every failure still shows in the panel and the tray.
        EXPECT_EQ(s.statusSummary(), "4 failed");
        EXPECT_EQ(s.overallTone(), Tone::error);
        if (setter)
            (s.*setter)(false); // stored: the next state would start with it
        QStringList ids;
        for (const FailureNotification& n : notifications.posted)
            ids << n.identifier.mid(4);
        ids.sort();
        return ids;
    };
    EXPECT_EQ(notifiedWith(nullptr), QStringList({"p_bot", "p_preview", "p_prod", "p_theirs"}));
    EXPECT_EQ(notifiedWith(&AppState::setNotifyProductionOnly),
              QStringList({"p_bot", "p_prod", "p_theirs"}));
    EXPECT_EQ(notifiedWith(&AppState::setNotifyOnlyMine),
              QStringList({"p_bot", "p_preview", "p_prod"}));
    EXPECT_EQ(notifiedWith(&AppState::setIgnoreBotBranches),
              QStringList({"p_preview", "p_prod", "p_theirs"}));

    // renovate/ is a bot too; a branch merely naming one is not; without the account's own id
    // "only mine" cannot tell and keeps everything.
    VercelDeployment renovate;
    renovate.meta = QMap<QString, JSONScalar>{{"githubCommitRef", {"renovate/eslint-9.x"}}};
    const NotificationPolicy bots({false, false, true}, std::nullopt, {});
    EXPECT_FALSE(bots.concerns(renovate));
    renovate.meta = QMap<QString, JSONScalar>{{"githubCommitRef", {"fix/dependabot-config"}}};
    EXPECT_TRUE(bots.concerns(renovate));
    EXPECT_TRUE(NotificationPolicy({false, true, false}, std::nullopt, {}).concerns(renovate));
    EXPECT_FALSE(NotificationPolicy({false, true, false}, "usr_1", {}).concerns(renovate));
}

TEST_F(EngineFixture, LiveAgainComesOnceAfterAFailureAndNeverWithoutOne) {
    account.addProject("", "p_web", "web");
    account.addProject("", "p_api", "api");
    account.addDeployment("", deployment("dpl_w1", "p_web", "READY", -30, -29));
    account.addDeployment("", deployment("dpl_a1", "p_api", "READY", -30, -29));
    AppState& s = connected();
    s.setNotifyWhenFixed(true);
    const auto pass = [&](const QJsonObject& web, const QJsonObject& api) {
        account.deployments[""] = QJsonArray{web, api};
        nextPass();
    };
    const QJsonObject apiReady = deployment("dpl_a1", "p_api", "READY", -30, -29);
    pass(deployment("dpl_w2", "p_web", "ERROR", 1, 2), apiReady);
    pass(deployment("dpl_w3", "p_web", "BUILDING", 3),
         deployment("dpl_a2", "p_api", "BUILDING", 3));
    pass(deployment("dpl_w3", "p_web", "CANCELED", 3),
         deployment("dpl_a2", "p_api", "READY", 3, 4));
    ASSERT_EQ(notifications.posted.size(), 1); // the failure; api's build after no failure: none
    pass(deployment("dpl_w4", "p_web", "READY", 5, 7), apiReady);
    ASSERT_EQ(notifications.posted.size(), 2);
    EXPECT_EQ(notifications.posted[1].title, "web is live again");
    EXPECT_EQ(notifications.posted[1].identifier, "dpl_w4");
    EXPECT_EQ(notifications.posted[1].body, "Branch main · Fix login · 2 min");
    EXPECT_FALSE(notifications.posted[1].offersReport);
    pass(deployment("dpl_w4", "p_web", "READY", 5, 7), apiReady);
    // The old failure listed again, then the same ready one: that failure was answered already.
    pass(deployment("dpl_w2", "p_web", "ERROR", 1, 2), apiReady);
    pass(deployment("dpl_w4", "p_web", "READY", 5, 7), apiReady);
    EXPECT_EQ(notifications.posted.size(), 2);

    // In French; and a muted project's recovery is silent.
    prefs->setString(PreferenceKeys::appLanguage, "fr");
    pass(deployment("dpl_w5", "p_web", "ERROR", 10, 11),
         deployment("dpl_a3", "p_api", "ERROR", 10, 11));
    s.muteProject("p_api", "api", MuteLength::untilUnmuted);
    pass(deployment("dpl_w6", "p_web", "READY", 12, 13),
         deployment("dpl_a4", "p_api", "READY", 12, 13));
    ASSERT_EQ(notifications.posted.size(), 5);
    EXPECT_EQ(notifications.posted[4].title, "web est de nouveau en ligne");
    // A failure "production only" keeps quiet (these are previews) is not followed, so the
    // production deployment after it is not news.
    s.setNotifyProductionOnly(true);
    pass(deployment("dpl_w9", "p_web", "ERROR", 14, 15), apiReady);
    QJsonObject production = deployment("dpl_w10", "p_web", "READY", 16, 17);
    production.insert("target", "production");
    pass(production, apiReady);
    EXPECT_EQ(notifications.posted.size(), 5);
    s.setNotifyProductionOnly(false);
    // Switched off, a recovery says nothing.
    s.setNotifyWhenFixed(false);
    pass(deployment("dpl_w7", "p_web", "ERROR", 14, 15), apiReady);
    pass(deployment("dpl_w8", "p_web", "READY", 16, 17), apiReady);
    EXPECT_EQ(notifications.posted.size(), 6);
}
