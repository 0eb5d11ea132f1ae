// The engine recovers by itself from what passes: an account check that fails while the network
// is not up yet, and a scope whose requests fail now and then.
#include "support/EngineFixture.h"

using namespace std::chrono_literals;

namespace {

// The desktop's network state, played by the test.
class ScriptedNetwork final : public NetworkWatch {
public:
    int watchCalls = 0;
    void watch() override { ++watchCalls; }
    void comeOnline() { Q_EMIT cameOnline(); }
};

class RecoveryTest : public EngineFixture {
protected:
    ScriptedNetwork network;

    AppState& makeWatchedState() {
        AppState::Services wired = services(server.baseUrl());
        wired.network = &network;
        return makeState(wired);
    }

    // Waits until the engine has asked to sleep `count` times in all.
    bool sleepsRequested(int count) {
        return waitUntil([&] { return clock.requestedSleeps().size() == count; });
    }
};

TEST_F(RecoveryTest, RefusedAccountCheckIsRetriedWithBackoffUntilVercelAnswers) {
    account.addProject("", "p_web", "web");
    account.addDeployment("", deployment("d1", "p_web", "READY", -2, -1));
    server.setRefusing(true);
    AppState& s = makeWatchedState();
    QCoro::waitFor(s.saveToken(QStringLiteral(" tok_retry_1\n")));

    EXPECT_EQ(s.connection().kind, Connection::Kind::retrying);
    EXPECT_TRUE(s.connection().detail.contains("refused")) << s.connection().detail.toStdString();
    EXPECT_TRUE(s.connectionMessage().endsWith("Trying again in 5 s."))
        << s.connectionMessage().toStdString();
    EXPECT_EQ(s.statusSummary(), "Waiting for Vercel");
    EXPECT_EQ(s.overallTone(), Tone::disconnected);
    EXPECT_EQ(network.watchCalls, 1);
    ASSERT_TRUE(sleepsRequested(1));

    // Soon at first, then less often, never more than a minute apart.
    for (const auto wait : {5s, 10s, 30s, 60s}) {
        const int sleeps = static_cast<int>(clock.requestedSleeps().size());
        clock.advance(wait);
        ASSERT_TRUE(sleepsRequested(sleeps + 1));
        EXPECT_EQ(s.connection().kind, Connection::Kind::retrying);
    }
    const QList<std::chrono::milliseconds> expected{5s, 10s, 30s, 60s, 60s};
    EXPECT_EQ(clock.requestedSleeps(), expected);
    EXPECT_EQ(s.connection().retryAt, clock.now().addSecs(60));

    server.setRefusing(false);
    clock.advance(60s);
    ASSERT_TRUE(waitUntil([&] { return s.hasLoadedOnce() && !s.isRefreshing(); }));
    EXPECT_EQ(s.connection(), Connection::connected("ada"));
    ASSERT_EQ(s.snapshots().size(), 1);
    EXPECT_EQ(s.snapshots()[0].latest->deploymentID(), "d1");
    EXPECT_EQ(keychain.loadToken()->token, "tok_retry_1"); // untouched throughout
}

TEST_F(RecoveryTest, ServerErrorsAreRetriedAndTheNetworkComingUpEndsTheWaitAtOnce) {
    using Response = LoopbackHttpServer::Response;
    AppState& s = makeWatchedState();
    // Only what can pass is tried again: a client error waits for the user.
    account.failures.insert("/v2/user", Response::vercelError(404, "not_found", "x"));
    QCoro::waitFor(s.connect(QStringLiteral("tok_retry_3")));
    EXPECT_EQ(s.connection().kind, Connection::Kind::failed);
    EXPECT_EQ(clock.pendingSleepers(), 0);
    account.failures.insert("/v2/user", Response::vercelError(503, "unavailable", "x"));
    QCoro::waitFor(s.connect(QStringLiteral("tok_retry_3")));
    EXPECT_EQ(s.connection().kind, Connection::Kind::retrying);
    ASSERT_TRUE(sleepsRequested(1));
    clock.advance(5s);
    ASSERT_TRUE(sleepsRequested(2)); // now waiting 10 s
    account.failures.clear();

    network.comeOnline(); // the clock does not move
    ASSERT_TRUE(waitUntil([&] { return s.hasLoadedOnce(); }));
    EXPECT_TRUE(s.connection().isConnected());
    EXPECT_EQ(account.requestCount("/v2/user"), 4);

    // Removing the token ends any wait: nothing more is asked of Vercel.
    account.failures.insert("/v2/user", Response::vercelError(500, "i", "x"));
    QCoro::waitFor(s.connect(QStringLiteral("tok_retry_3")));
    s.removeToken();
    network.comeOnline();
    clock.advance(5min);
    QCoreApplication::processEvents();
    EXPECT_EQ(account.requestCount("/v2/user"), 5);
    EXPECT_EQ(s.connection(), Connection::noToken());
}

TEST_F(RecoveryTest, FlakyScopesKeepTheirLastAnswerAndTheCountHolds) {
    account.addTeam("team_a", "acme");
    account.addProject("", "p_web", "web");
    account.addProject("team_a", "p_api", "api");
    account.addDeployment("", deployment("w1", "p_web", "READY", -9, -8));
    account.addDeployment("", deployment("w2", "p_web", "ERROR", -5, -4));
    account.addDeployment("team_a", deployment("a1", "p_api", "READY", -7, -6));
    account.addDeployment("team_a", deployment("a2", "p_api", "READY", -3, -2));
    AppState& s = connected();
    auto picture = [&] {
        QStringList lines;
        for (const ProjectSnapshot& snapshot : s.snapshots())
            lines << snapshot.id + "=" +
                         (snapshot.latest ? snapshot.latest->deploymentID() : QString("-")) + "/" +
                         QString::number(snapshot.medianBuildDuration.value_or(-1));
        return lines.join(' ') + " today " + QString::number(s.todayCount());
    };
    const QString good = picture();
    ASSERT_EQ(good, "p_api=a2/60 p_web=w2/60 today 4");
    const auto notified = notifications.posted.size();

    // Every third request fails: each pass loses some scope's projects or deployments.
    account.failEvery = 3;
    for (int pass = 0; pass < 6; ++pass) {
        nextPass();
        EXPECT_EQ(picture(), good) << "pass " << pass;
        EXPECT_TRUE(s.connection().isConnected());
        EXPECT_EQ(s.overallTone(), Tone::error);
    }
    EXPECT_EQ(notifications.posted.size(), notified); // no flicker reaches the notifications

    // A new deployment still comes through once its scope answers.
    account.failEvery = 0;
    account.addDeployment("team_a", deployment("a3", "p_api", "BUILDING", 0));
    nextPass();
    EXPECT_EQ(picture(), "p_api=a3/60 p_web=w2/60 today 5");
}

} // namespace
