// Passes that ask only for what can have changed, side by side with passes that read everything.
#include "core/monitor/PreferenceKeys.h"
#include "support/EngineFixture.h"
#include "support/SampleAccounts.h"

using namespace std::chrono_literals;

namespace {

const QString leanToken = QStringLiteral("tok_lean");
const QString completeToken = QStringLiteral("tok_complete");

QString describe(const std::optional<double>& value) {
    return value ? QString::number(*value, 'f', 0) : QStringLiteral("-");
}

QString describe(const std::optional<QString>& value) {
    return value.value_or(QStringLiteral("-"));
}

// Everything a view or a notification can take from the engine.
QString picture(const AppState& state, const RecordingNotifications& notifications) {
    QStringList lines{QStringLiteral("today %1, tone %2, %3")
                          .arg(state.todayCount())
                          .arg(static_cast<int>(state.overallTone()))
                          .arg(state.statusSummary())};
    for (const ProjectSnapshot& s : state.snapshots()) {
        QString line = s.scopeSlug + "/" + s.name + " median " + describe(s.medianBuildDuration);
        if (const std::optional<VercelDeployment>& d = s.latest)
            line += " latest " + d->deploymentID() + " " + describe(d->state) + " created " +
                    describe(d->createdAt) + " ready " + describe(d->ready) + " target " +
                    describe(d->target);
        lines << line;
    }
    for (const FailureNotification& n : notifications.posted)
        lines << "notified " + n.identifier + ": " + n.title + " / " + n.body;
    return lines.join('\n');
}

// What one engine asked for since `from`: requests and body bytes, by scope.
struct Traffic {
    QHash<QString, int> requests;
    QHash<QString, qint64> bytes;
    QStringList targets;
};

Traffic trafficOf(const LoopbackHttpServer& server, const QString& token, qsizetype from) {
    Traffic traffic;
    const QList<LoopbackHttpServer::Request>& all = server.requests();
    for (qsizetype i = from; i < all.size(); ++i) {
        const LoopbackHttpServer::Request& request = all.at(i);
        if (request.headerValues("authorization").value(0) != "Bearer " + token.toUtf8())
            continue;
        QString team = QStringLiteral("personal");
        for (const auto& [name, value] : request.queryItems()) {
            if (name == "teamId")
                team = value;
        }
        ++traffic.requests[team];
        traffic.bytes[team] += request.answeredBytes;
        traffic.targets << request.path + "?" + QString::fromLatin1(request.rawQuery);
    }
    return traffic;
}

} // namespace

// Two engines on one clock and one account: the one under test reads in full now and then and
// otherwise asks only for changes; the other reads everything at every pass.
class LeanPassTest : public EngineFixture {
protected:
    FakeDesktop other; // the complete engine's own preferences, keyring and notifications
    std::unique_ptr<AppState> complete;

    void TearDown() override {
        if (complete)
            waitUntil([this] { return !complete->isRefreshing(); });
        complete.reset();
        EngineFixture::TearDown();
    }

    void connectBoth() {
        AppState::Services wired{
            *other.prefs,    other.keychain, other.loginItem,  other.notifications,
            other.clipboard, clock,          server.baseUrl(), 3s};
        wired.completeReadingEvery = 0ms;
        complete = std::make_unique<AppState>(wired);
        QCoro::waitFor(complete->connect(completeToken));
        connected(leanToken);
        ASSERT_TRUE(settled());
    }

    bool settled() {
        return waitUntil([this] {
            return !state->isRefreshing() && !complete->isRefreshing() &&
                   clock.pendingSleepers() == 2 && state->lastRefresh() == clock.now() &&
                   complete->lastRefresh() == clock.now();
        });
    }

    // Lets both loops run the pass that falls due after `pause`; answers the lean engine's
    // traffic in it.
    Traffic pass(std::chrono::seconds pause) {
        const qsizetype from = server.requests().size();
        clock.advance(pause);
        EXPECT_TRUE(settled());
        return trafficOf(server, leanToken, from);
    }

    // The pause both loops chose last.
    std::chrono::seconds pause() const {
        return std::chrono::duration_cast<std::chrono::seconds>(clock.requestedSleeps().last());
    }

    // One pass of each after an event, then both must show the same.
    Traffic step(const char* event) {
        const Traffic traffic = pass(pause());
        EXPECT_EQ(picture(*state, notifications).toStdString(),
                  picture(*complete, other.notifications).toStdString())
            << "after: " << event;
        return traffic;
    }

    QJsonObject at(const QString& id, const QString& project, const QString& state,
                   std::chrono::seconds fromNow = 0s) const {
        return SampleAccounts::deployment(id, project, state, clock.now().addSecs(fromNow.count()));
    }
    void setState(const QString& scope, const QString& id, const QString& state) {
        const double now = static_cast<double>(clock.now().toMSecsSinceEpoch());
        account.updateDeployment(scope, id, [&](QJsonObject& d) {
            d.insert("state", state);
            if (state == "BUILDING")
                d.insert("buildingAt", now);
            if (state == "READY" || state == "ERROR" || state == "CANCELED")
                d.insert("ready", now);
        });
    }
};

TEST_F(LeanPassTest, EveryEventShowsTheSameAsACompleteReading) {
    SampleAccounts::fillLoopback(account, clock.now());
    connectBoth();
    ASSERT_EQ(state->snapshots().size(), 8);
    ASSERT_EQ(picture(*state, notifications).toStdString(),
              picture(*complete, other.notifications).toStdString());
    // Legacy and blog lie beyond the team's 100 newest deployments: only their latest
    // deployments tell them.
    EXPECT_NE(picture(*state, notifications).indexOf("acme/legacy median 67 latest dpl_legacy_0"),
              -1)
        << picture(*state, notifications).toStdString();

    // Idle: one request and under 2 KB per scope, once the last deployment is minutes old.
    for (int i = 0; i < 6; ++i)
        step("nothing");
    Traffic idle = step("nothing");
    EXPECT_EQ(idle.requests.value("personal"), 1) << idle.targets.join('\n').toStdString();
    EXPECT_EQ(idle.requests.value("team_acme"), 1);
    EXPECT_LE(idle.bytes.value("personal"), 2048);
    EXPECT_LE(idle.bytes.value("team_acme"), 2048);

    account.addDeployment("", at("dpl_new", "p_web", "QUEUED"));
    step("a new deployment");
    setState("", "dpl_new", "BUILDING");
    step("its build starting");
    // Minutes into the build: one more small request for it, and only for it.
    Traffic building;
    for (int i = 0; i < 20; ++i)
        building = step("the build going on");
    EXPECT_EQ(building.requests.value("personal"), 2) << building.targets.join('\n').toStdString();
    EXPECT_EQ(building.requests.value("team_acme"), 1);
    EXPECT_LE(building.bytes.value("personal"), 2048);
    setState("", "dpl_new", "ERROR");
    step("a failure");
    EXPECT_EQ(notifications.posted.size(), 1);

    account.addDeployment("team_acme", at("dpl_promo_draft", "p_status", "BUILDING"));
    for (int i = 0; i < 20; ++i)
        step("another build");
    setState("team_acme", "dpl_promo_draft", "CANCELED");
    step("a cancel");

    // Deleted while it builds, and deleted a minute after it was made.
    account.addDeployment("", at("dpl_doomed", "p_docs", "BUILDING"));
    for (int i = 0; i < 20; ++i)
        step("a build to delete");
    account.removeDeployment("", "dpl_doomed");
    step("a deployment deleted while it builds");
    account.addDeployment("", at("dpl_brief", "p_api", "READY"));
    step("a quick deployment");
    account.removeDeployment("", "dpl_brief");
    step("a deployment deleted a minute after");

    // A project made on Vercel: its first deployment has both list the team again, so that the
    // user can pick it; then the user swaps one monitored project for it.
    account.addProject("team_acme", "p_promo", "promo");
    account.addDeployment("team_acme", at("dpl_promo_1", "p_promo", "READY"));
    pass(pause());
    ASSERT_TRUE(waitUntil([&] {
        return state->availableProjects().size() == 9 && complete->availableProjects().size() == 9;
    }));
    step("a new project listed");
    state->addMonitored("p_promo");
    complete->addMonitored("p_promo");
    state->removeMonitored("p_docs");
    complete->removeMonitored("p_docs");
    ASSERT_TRUE(settled());
    ASSERT_EQ(picture(*state, notifications).toStdString(),
              picture(*complete, other.notifications).toStdString());
    step("a project added to the monitored ones and one removed");
    EXPECT_EQ(state->snapshots().size(), 8);

    // A burst of 100 shop deployments pushes promo's only deployment beyond the team's newest.
    for (int i = 0; i < 100; ++i)
        account.addDeployment("team_acme",
                              at(QStringLiteral("dpl_burst_%1").arg(i), "p_shop", "READY"));
    step("a burst of deployments");
    for (int i = 0; i < 8; ++i)
        step("nothing");

    // Past midnight today's count starts again; the passes across it ask only for changes.
    clock.setNow(QDateTime(clock.now().date(), QTime(23, 58)));
    step("the evening");
    account.addDeployment("", at("dpl_night", "p_web", "READY", 150s));
    qsizetype completeReadings = 0;
    for (int i = 0; i < 8; ++i) {
        const Traffic traffic = step("midnight passing");
        completeReadings += traffic.targets.filter("/v9/projects").size();
    }
    EXPECT_EQ(completeReadings, 0);
    EXPECT_EQ(state->todayCount(), 1);
}

// A project deleted on Vercel, or a deployment deleted long after it was made, leaves no trace
// in an answer of changes: the next complete reading, at most ten minutes away, shows it.
TEST_F(LeanPassTest, WhatLeavesNoTraceIsShownByTheNextCompleteReading) {
    SampleAccounts::fillLoopback(account, clock.now());
    connectBoth();
    const auto hasBlog = [](const AppState& s) {
        return std::any_of(s.snapshots().begin(), s.snapshots().end(), [](const auto& snapshot) {
            return snapshot.id == "p_blog" && snapshot.latest;
        });
    };
    pass(30s);
    account.removeProject("team_acme", "p_blog");
    account.removeDeployment("", "dpl_web_0");
    pass(30s);
    EXPECT_FALSE(hasBlog(*complete));
    EXPECT_TRUE(hasBlog(*state));
    int passes = 1;
    while (hasBlog(*state) && passes < 30) {
        pass(30s);
        ++passes;
    }
    EXPECT_LE(passes * 30s, 10min);
    EXPECT_EQ(picture(*state, notifications).toStdString(),
              picture(*complete, other.notifications).toStdString());
}

// An idle pass asks one small question per scope, whatever the number of projects; the loop
// reads everything again ten minutes after the last complete reading, and so does the first
// pass after "Refresh now", a new token or a rejected one.
TEST_F(EngineFixture, CompleteReadingsComeWhenNeededAndAnIdlePassStaysSmallWhateverTheAccount) {
    SampleAccounts::fillLarge(account, clock.now(), 2, 300);
    AppState& s = connected();
    ASSERT_EQ(s.snapshots().size(), 600);
    s.setAllMonitored(true); // the choice is made: a new listing starts no pass of its own
    ASSERT_TRUE(waitUntil([&] { return !s.isRefreshing(); }));
    const QDateTime lastComplete = clock.now();
    const auto readsEverything = [&] {
        const auto deployments = server.requestsTo("/v6/deployments");
        return std::any_of(deployments.begin(), deployments.end(), [](const auto& request) {
            return !request.rawQuery.contains("since=");
        });
    };
    // The loop's next pass, 30 s on.
    const auto loopPass = [&] {
        server.clearRequests();
        clock.advance(30s);
        return waitUntil([&] {
            return !server.requests().isEmpty() && !s.isRefreshing() &&
                   clock.pendingSleepers() == 1;
        });
    };
    for (int i = 0; i < 6; ++i)
        ASSERT_TRUE(loopPass());
    ASSERT_EQ(server.requests().size(), 2);
    for (const auto& request : server.requests()) {
        EXPECT_LE(request.answeredBytes, 2048);
        EXPECT_TRUE(request.rawQuery.contains("since=")) << request.rawQuery.toStdString();
    }
    while (!readsEverything() && clock.now() < lastComplete.addSecs(900))
        ASSERT_TRUE(loopPass());
    EXPECT_EQ(clock.now(), lastComplete.addSecs(600));
    EXPECT_FALSE(server.requestsTo("/v9/projects").isEmpty());

    ASSERT_TRUE(loopPass());
    EXPECT_FALSE(readsEverything());
    server.clearRequests();
    QCoro::waitFor(s.refresh());
    EXPECT_TRUE(readsEverything());

    // What was kept for one token is not used for another.
    server.clearRequests();
    QCoro::waitFor(s.connect("tok_other"));
    ASSERT_TRUE(waitUntil([&] { return !s.isRefreshing() && clock.pendingSleepers() == 1; }));
    EXPECT_TRUE(readsEverything());
    ASSERT_TRUE(loopPass());
    EXPECT_FALSE(readsEverything());

    // Nor across a rejected token.
    account.failures.insert("/v6/deployments",
                            LoopbackHttpServer::Response::vercelError(401, "unauthorized", "x"));
    clock.advance(30s);
    ASSERT_TRUE(waitUntil([&] { return s.connection().kind == Connection::Kind::failed; }));
    account.failures.clear();
    server.clearRequests();
    QCoro::waitFor(s.connect("tok_other"));
    ASSERT_TRUE(waitUntil([&] { return !s.isRefreshing() && clock.pendingSleepers() == 1; }));
    EXPECT_TRUE(readsEverything());
}

// What the passes keep stays bounded: idle passes add nothing, and a burst of another project's
// deployments adds at most the scope's newest. It goes with the token, and with a scope the
// account no longer has.
TEST_F(EngineFixture, WhatIsKeptIsBoundedAndGoesWithTheTokenAndTheScopes) {
    SampleAccounts::fillLoopback(account, clock.now());
    const QJsonArray teams = account.teams;
    account.teams = QJsonArray();
    AppState& s = connected();
    const int personal = s.keptDeployments();
    EXPECT_GT(personal, 0);

    account.teams = teams;
    QCoro::waitFor(s.connect("tok_secret_123"));
    ASSERT_TRUE(waitUntil([&] { return !s.isRefreshing() && clock.pendingSleepers() == 1; }));
    s.setAllMonitored(true);
    s.removeMonitored("p_status");
    ASSERT_TRUE(waitUntil([&] { return !s.isRefreshing(); }));
    const int kept = s.keptDeployments();
    EXPECT_GT(kept, personal);
    const auto loopPasses = [&](int count) {
        for (int i = 0; i < count; ++i) {
            const qsizetype before = server.requests().size();
            clock.advance(30s);
            if (!waitUntil([&] {
                    return server.requests().size() > before && !s.isRefreshing() &&
                           clock.pendingSleepers() == 1;
                }))
                return false;
        }
        return true;
    };
    ASSERT_TRUE(loopPasses(8));
    EXPECT_EQ(s.keptDeployments(), kept);

    for (int i = 0; i < 300; ++i)
        account.addDeployment(
            "team_acme",
            SampleAccounts::deployment(QStringLiteral("dpl_status_burst_%1").arg(i), "p_status",
                                       "READY", clock.now().addMSecs(-300 * i)));
    ASSERT_TRUE(loopPasses(1));
    EXPECT_GT(s.keptDeployments(), kept);
    EXPECT_LE(s.keptDeployments(), kept + ScopeMemory::kNewest);

    s.removeToken();
    EXPECT_EQ(s.keptDeployments(), 0);

    account.teams = QJsonArray();
    QCoro::waitFor(s.connect("tok_secret_123"));
    ASSERT_TRUE(waitUntil([&] { return !s.isRefreshing() && clock.pendingSleepers() == 1; }));
    account.teams = teams;
    QCoro::waitFor(s.connect("tok_secret_123"));
    ASSERT_TRUE(waitUntil([&] { return !s.isRefreshing() && clock.pendingSleepers() == 1; }));
    account.teams = QJsonArray();
    QCoro::waitFor(s.connect("tok_secret_123"));
    ASSERT_TRUE(waitUntil([&] { return !s.isRefreshing() && clock.pendingSleepers() == 1; }));
    EXPECT_EQ(s.keptDeployments(), personal);
}
