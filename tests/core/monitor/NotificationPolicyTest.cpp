// What reaches the notification server beyond a plain failure: the pause with its summary, the
// slow-build warning and "Copy for AI" from the notification itself.
#include "EngineFixture.h"
#include "core/monitor/SlowBuildCheck.h"

using namespace std::chrono_literals;

namespace {

ProjectSnapshot building(double startedMs, std::optional<double> median, QString id = "dpl_1") {
    VercelDeployment deployment;
    deployment.id = std::move(id);
    deployment.state = QStringLiteral("BUILDING");
    deployment.buildingAt = startedMs;
    return {"p_api", "api", "acme", std::nullopt, deployment, median};
}

} // namespace

TEST_F(EngineFixture, PausedFailuresArriveAsOneSummaryWhenThePauseEnds) {
    account.addProject("", "p_web", "web");
    account.addProject("", "p_api", "api");
    account.addDeployment("", FakeVercelAccount::deployment("dpl_w", "p_web", "BUILDING", at(-1)));
    account.addDeployment("", FakeVercelAccount::deployment("dpl_a", "p_api", "BUILDING", at(-1)));
    AppState& s = connected();
    s.notificationPause().pause(60min);
    EXPECT_EQ(s.notificationPause().pausedUntilText(), "Paused until 16:00");
    account.deployments[""] =
        QJsonArray{FakeVercelAccount::deployment("dpl_w", "p_web", "ERROR", at(-1), at(0)),
                   FakeVercelAccount::deployment("dpl_a", "p_api", "ERROR", at(-1), at(0))};
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
    AppState& s = makeState();
    NotificationPause& pause = s.notificationPause();
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

TEST(SlowBuildCheck, TwiceTheMedianAndAtLeastTwoMinutes) {
    const QDateTime now = QDateTime::fromSecsSinceEpoch(1'800'000'000);
    const double nowMs = static_cast<double>(now.toMSecsSinceEpoch());
    // Median 100 s: slow after 200 s.
    EXPECT_FALSE(slowBuildElapsed(building(nowMs - 199'000, 100), now));
    EXPECT_EQ(slowBuildElapsed(building(nowMs - 201'000, 100), now), 201);
    // Median 30 s: twice is 60 s, but two minutes is the floor.
    EXPECT_FALSE(slowBuildElapsed(building(nowMs - 119'000, 30), now));
    EXPECT_TRUE(slowBuildElapsed(building(nowMs - 121'000, 30), now));
    // No median, or no longer building: never slow.
    EXPECT_FALSE(slowBuildElapsed(building(nowMs - 3'600'000, std::nullopt), now));
    ProjectSnapshot done = building(nowMs - 3'600'000, 30);
    done.latest->state = QStringLiteral("READY");
    EXPECT_FALSE(slowBuildElapsed(done, now));
    const FailureNotification n = slowBuildNotification(building(0, 30), 201);
    EXPECT_EQ(n.title, "api: build is taking longer than usual");
    EXPECT_EQ(n.body, "3 min 21 s");
}

TEST_F(EngineFixture, EachSlowBuildIsToldOnceAndOnlyWhenAskedFor) {
    AppState& s = makeState();
    const double nowMs = static_cast<double>(clock.now().toMSecsSinceEpoch());
    const QList<ProjectSnapshot> slow{building(nowMs - 300'000, 60, "dpl_1")};
    s.notifyFailures(slow);
    EXPECT_TRUE(notifications.posted.isEmpty()); // off by default

    s.setSlowBuildWarning(true);
    s.notifyFailures(slow);
    s.notifyFailures(slow);
    // A second slow build of the same project is a new deployment: told again.
    s.notifyFailures({building(nowMs - 400'000, 60, "dpl_2")});
    ASSERT_EQ(notifications.posted.size(), 2);
    EXPECT_EQ(notifications.posted[0].identifier, "dpl_1");
    EXPECT_EQ(notifications.posted[1].identifier, "dpl_2");
}

TEST_F(EngineFixture, CopyForAIFromTheNotificationFillsTheClipboardAndConfirms) {
    account.addProject("", "p_web", "web");
    account.addDeployment("", FakeVercelAccount::deployment("dpl_1", "p_web", "BUILDING", at(-1)));
    connected();
    account.deployments[""] =
        QJsonArray{FakeVercelAccount::deployment("dpl_1", "p_web", "ERROR", at(-1), at(0))};
    nextPass();
    ASSERT_EQ(notifications.posted.size(), 1);
    ASSERT_TRUE(notifications.posted[0].offersReport);
    ASSERT_TRUE(notifications.reportHandler);

    notifications.reportHandler("dpl_unknown"); // not a failure of this session: nothing
    notifications.reportHandler("dpl_1");
    ASSERT_TRUE(waitUntil([&] { return notifications.posted.size() == 2; }));
    ASSERT_EQ(clipboard.texts.size(), 1);
    EXPECT_TRUE(clipboard.texts[0].contains("web")) << clipboard.texts[0].toStdString();
    EXPECT_EQ(notifications.posted[1].title, "Failure report copied");
    EXPECT_TRUE(notifications.posted[1].transient);
}
