// Accounts as untidy as real ones: a team that wants a SAML sign-in, hundreds of projects and
// deployments over many pages, a rate limit, and a failed build whose log is still being written.
#include "core/monitor/PreferenceKeys.h"
#include "support/EngineFixture.h"
#include "support/FrenchDesktop.h"

using Response = LoopbackHttpServer::Response;
using namespace std::chrono_literals;

namespace {

std::optional<ProjectSnapshot> find(const AppState& state, const QString& id) {
    for (const ProjectSnapshot& snapshot : state.snapshots()) {
        if (snapshot.id == id)
            return snapshot;
    }
    return std::nullopt;
}

// Requests that carried this team id.
int requestsFor(const LoopbackHttpServer& server, const QString& teamId) {
    int count = 0;
    for (const auto& request : server.requests()) {
        for (const auto& [name, value] : request.queryItems())
            count += name == "teamId" && value == teamId;
    }
    return count;
}

} // namespace

TEST_F(EngineFixture, ATeamThatWantsSamlIsExplainedWhileTheOtherScopesGoOn) {
    account.addTeam("team_open", "open");
    account.addSamlTeam("team_saml", "acme", "Acme Team");
    account.addProject("", "p_me", "mine");
    account.addProject("team_open", "p_shop", "shop");
    account.addProject("team_saml", "p_intra", "intranet");
    account.addDeployment("", deployment("d_me", "p_me", "READY", -5, -4));
    account.addDeployment("team_open", deployment("d_shop", "p_shop", "BUILDING", -1));
    account.addDeployment("team_saml", deployment("d_intra", "p_intra", "READY", -9, -8));
    AppState& s = connected();

    EXPECT_TRUE(s.connection().isConnected());
    ASSERT_EQ(s.snapshots().size(), 2);
    EXPECT_EQ(find(s, "p_shop")->latest->deploymentID(), "d_shop");
    EXPECT_EQ(s.todayCount(), 2);
    EXPECT_EQ(s.notices(), QStringList{"Acme Team requires SAML sign-in: sign in on vercel.com."});
    {
        FrenchDesktop french;
        EXPECT_EQ(s.notices(), QStringList{"Acme Team exige une connexion SAML : connectez-vous "
                                           "sur vercel.com."});
    }
    // Listed as limited, the team is left alone rather than asked at every pass, and the choice
    // of projects is not written down while one scope has not answered.
    nextPass();
    EXPECT_EQ(requestsFor(server, "team_saml"), 0);
    EXPECT_FALSE(prefs->boolean(PreferenceKeys::projectsConfigured).value_or(false));

    // A team that answered before and now wants SAML keeps its projects' last deployments.
    account.samlTeams.insert("team_open");
    account.addDeployment("", deployment("d_me2", "p_me", "BUILDING", 1));
    nextPass();
    EXPECT_TRUE(s.connection().isConnected());
    EXPECT_EQ(find(s, "p_shop")->latest->deploymentID(), "d_shop");
    EXPECT_EQ(find(s, "p_me")->latest->deploymentID(), "d_me2");
    EXPECT_EQ(s.notices(),
              QStringList({"OPEN requires SAML sign-in: sign in on vercel.com.",
                           "Acme Team requires SAML sign-in: sign in on vercel.com."}));
    const int asked = requestsFor(server, "team_open");
    nextPass();
    EXPECT_EQ(requestsFor(server, "team_open"), asked);
    ASSERT_TRUE(find(s, "p_shop") && find(s, "p_shop")->latest)
        << "a team left alone keeps showing what it answered last";
    EXPECT_EQ(find(s, "p_shop")->latest->deploymentID(), "d_shop");

    // Once signed in, each team is asked again after a while; its projects are listed, and
    // with every scope answering, all of them are monitored and the choice is written down.
    account.samlTeams.clear();
    clock.advance(10min);
    ASSERT_TRUE(waitUntil([&] { return s.snapshots().size() == 3 && !s.isRefreshing(); }));
    EXPECT_EQ(find(s, "p_intra")->latest->deploymentID(), "d_intra");
    EXPECT_TRUE(s.notices().isEmpty());
    EXPECT_EQ(prefs->boolean(PreferenceKeys::projectsConfigured), true);
    EXPECT_EQ(prefs->stringList(PreferenceKeys::monitoredProjectIDs)->size(), 3);
}

TEST_F(EngineFixture, ATokenTheAccountCheckRefusesSaysWhetherItIsInvalidOrLimitedToAProject) {
    account.failures.insert("/v2/user", Response::json(R"({"error":{"code":"forbidden",)"
                                                       R"("message":"You don't have permission )"
                                                       R"(to access this resource."}})",
                                                       403));
    AppState& s = makeState();
    QCoro::waitFor(s.connect("tok_project"));
    EXPECT_EQ(s.connection(),
              Connection::failed("This token is limited to one project: create a token for your "
                                 "whole account on vercel.com."));
    EXPECT_EQ(clock.pendingSleepers(), 0); // final: nothing is tried again by itself
    {
        FrenchDesktop french;
        QCoro::waitFor(s.connect("tok_project"));
        EXPECT_EQ(s.connection().detail, "Ce jeton est limité à un seul projet : créez sur "
                                         "vercel.com un jeton pour tout votre compte.");
    }
    account.failures.insert("/v2/user", Response::vercelError(403, "forbidden", "Not authorized"));
    QCoro::waitFor(s.connect("tok_revoked"));
    EXPECT_EQ(s.connection(),
              Connection::failed("Token rejected by Vercel. It is invalid or expired."));
}

TEST_F(EngineFixture, EveryProjectIsListedAndFoundAndTodayCountsEveryPageSinceMidnight) {
    account.addProject("", "p_me", "mine");
    for (int i = 0; i < 400; ++i)
        account.addProject("team_big", QStringLiteral("p_%1").arg(i, 3, 10, QLatin1Char('0')),
                           QStringLiteral("app-%1").arg(i, 3, 10, QLatin1Char('0')));
    account.addTeam("team_big", "big");
    // 130 deployments of a project far down the list since midnight (the clock is at 15:00),
    // then 150 of yesterday.
    for (int i = 0; i < 130; ++i)
        account.addDeployment("team_big", deployment(QStringLiteral("today_%1").arg(i), "p_250",
                                                     "READY", -2 * i - 2, -2 * i - 1));
    for (int i = 0; i < 150; ++i)
        account.addDeployment("team_big", deployment(QStringLiteral("old_%1").arg(i), "p_250",
                                                     "READY", -16 * 60 - i, -16 * 60 - i + 1));
    AppState& s = connected();
    EXPECT_EQ(s.availableProjects().size(), 401); // four pages of the team, one of the account
    EXPECT_EQ(s.snapshots().size(), 401);
    EXPECT_EQ(s.todayCount(), 130);

    s.setAllMonitored(false);
    s.addMonitored("p_250");
    ASSERT_TRUE(waitUntil([&] { return s.snapshots().size() == 1 && !s.isRefreshing(); }));
    server.clearRequests();
    QCoro::waitFor(s.refresh());
    ASSERT_EQ(s.snapshots().size(), 1);
    EXPECT_EQ(s.snapshots()[0].latest->deploymentID(), "today_0");
    EXPECT_EQ(s.todayCount(), 130);
    // The project is on the third page: the fourth is not read. The second page of deployments
    // reaches yesterday: the third is not read either.
    QStringList until;
    for (const auto& request : server.requestsTo("/v9/projects"))
        until << QString::fromLatin1(request.rawQuery);
    EXPECT_EQ(server.requestsTo("/v9/projects").size(), 1 + 3) << until.join(" | ").toStdString();
    EXPECT_EQ(server.requestsTo("/v6/deployments").size(), 1 + 2);
}

// Eight requests a pass and a pass every 8 s while something builds would be 60 a minute; the
// account allows 40. The passes spread out so that none is refused; a 429 all the same (the
// limit falls) holds every request until its Retry-After, and the panel says so.
TEST_F(EngineFixture, RequestsStayUnderTheAnnouncedLimitAndARateLimitIsWaitedOutAndSaid) {
    account.rateLimit = FakeVercelAccount::RateLimit{40, [this] { return clock.now(); }};
    for (const QString team : {"", "team_a", "team_b", "team_c"}) {
        if (!team.isEmpty())
            account.addTeam(team, team.mid(5));
        account.addProject(team, "p" + team, "web" + team);
        account.addDeployment(team, deployment("d" + team, "p" + team, "BUILDING", -1));
    }
    AppState& s = connected();
    const auto runFor = [&](std::chrono::seconds duration) {
        for (std::chrono::seconds t = 0s; t < duration; t += 1s) {
            clock.advance(1s);
            // Every request the second brought is answered: the engine sleeps again.
            ASSERT_TRUE(waitUntil([&] { return clock.pendingSleepers() > 0; }));
        }
    };
    const auto before = server.requests().size();
    runFor(10min);
    const auto sent = server.requests().size() - before;
    EXPECT_EQ(account.rateLimitedCount(), 0);
    EXPECT_GE(sent, 250u) << "passes stopped"; // about 32 a minute
    EXPECT_LE(sent, 400u);
    EXPECT_TRUE(s.notices().isEmpty());

    // The limit falls to one a minute: the next pass meets a 429 and everything waits.
    account.rateLimit->perMinute = 1;
    const QList<ProjectSnapshot> shown = s.snapshots();
    while (account.rateLimitedCount() == 0)
        runFor(1s);
    ASSERT_TRUE(waitUntil([&] { return !s.isRefreshing(); }));
    // The other scopes of that pass sent nothing.
    const int refused = account.rateLimitedCount();
    EXPECT_EQ(refused, 1);
    const auto held = server.requests().size();
    const QDateTime windowEnd =
        QDateTime::fromSecsSinceEpoch((clock.now().toSecsSinceEpoch() / 60 + 1) * 60);
    EXPECT_TRUE(s.isStale());
    ASSERT_EQ(s.snapshots().size(), shown.size()); // the data stays
    EXPECT_EQ(s.snapshots()[0].latest->deploymentID(), shown[0].latest->deploymentID());
    ASSERT_TRUE(s.nextCheck());
    EXPECT_GE(*s.nextCheck(), windowEnd); // no sooner than Retry-After
    EXPECT_LE(*s.nextCheck(), windowEnd.addSecs(2));
    EXPECT_EQ(s.notices().last(),
              "Vercel asked Quillon to slow down. Next check at " +
                  QLocale(QLocale::English).toString(s.nextCheck()->time(), QLocale::ShortFormat) +
                  ".");
    account.rateLimit->perMinute = 40;
    runFor(std::chrono::seconds(clock.now().secsTo(windowEnd) - 1));
    EXPECT_EQ(server.requests().size(), held);
    EXPECT_EQ(account.rateLimitedCount(), refused);
    runFor(4s);
    EXPECT_GT(server.requests().size(), held);
    ASSERT_TRUE(waitUntil([&] { return !s.isRefreshing(); }));
    EXPECT_FALSE(s.isStale());
    EXPECT_TRUE(s.notices().isEmpty());
}

TEST_F(EngineFixture, CopyForAIJustAfterAFailureWaitsForTheLogsLastLines) {
    account.addProject("", "p_web", "web");
    const double failedAt = at(0) - 10'000;
    account.addDeployment(
        "", FakeVercelAccount::deployment("d_new", "p_web", "ERROR", failedAt - 60'000, failedAt));
    const QJsonObject cloning{{"type", "stdout"}, {"text", "Cloning github.com/acme/web"}};
    const QJsonObject building{{"type", "command"},
                               {"payload", QJsonObject{{"text", "next build"}}}};
    const QJsonObject failed{{"type", "stderr"},
                             {"text", "Error: Command \"next build\" exited with 1"}};
    // The documented type is an array of event or null.
    account.events.insert("d_new", QJsonArray{QJsonValue(), cloning, QJsonValue()});
    AppState& s = connected();
    const ProjectSnapshot snapshot = *find(s, "p_web");
    const QString events = "/v3/deployments/d_new/events";

    // Each read is followed by a wait of a second, beside the polling loop's pause.
    const auto readThenWait = [&](int reads) {
        return waitUntil(
            [&] { return account.requestCount(events) == reads && clock.pendingSleepers() == 2; });
    };
    auto copying = s.copyFailureReport(snapshot);
    ASSERT_TRUE(readThenWait(1));
    account.events["d_new"] = QJsonArray{QJsonValue(), cloning, building};
    clock.advance(1s);
    ASSERT_TRUE(readThenWait(2));
    account.events["d_new"] = QJsonArray{QJsonValue(), cloning, building, failed};
    clock.advance(1s);
    ASSERT_TRUE(readThenWait(3));
    clock.advance(1s);
    EXPECT_TRUE(QCoro::waitFor(std::move(copying)));
    EXPECT_EQ(account.requestCount(events), 4); // the same lines twice, with the error: settled
    EXPECT_TRUE(clipboard.texts.last().contains("next build\nError: Command \"next build\" "
                                                "exited with 1\n```"))
        << clipboard.texts.last().toStdString();

    // A minute after the failure the log is whole: one request, no wait.
    clock.advance(1min);
    QCoro::waitFor(s.copyFailureReport(snapshot));
    EXPECT_EQ(account.requestCount(events), 5);
}
