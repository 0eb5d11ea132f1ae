// Redeploy and cancel against the fake account: the one request each sends, what the next pass
// shows, and the refusals that leave everything else as it was.
#include "core/demo/DemoDirector.h"
#include "core/monitor/FailureNotificationText.h"
#include "support/EngineFixture.h"
#include "support/FrenchDesktop.h"
#include "support/QtPrinters.h"

#include <QJsonDocument>
#include <QSignalSpy>

using Request = LoopbackHttpServer::Request;
using Response = LoopbackHttpServer::Response;
using namespace std::chrono_literals;

namespace {

// "dpl_web1 Building": which deployment a snapshot shows, and in which state.
QString described(const ProjectSnapshot& s) {
    return s.latest ? s.latest->deploymentID() + QLatin1Char(' ') + s.latest->statusTitle(false)
                    : QStringLiteral("none");
}

class DeploymentActionsTest : public EngineFixture {
protected:
    // web (personal account) is building; api (team acme) failed in production.
    void SetUp() override {
        account.now = [this] { return clock.now(); };
        account.addTeam("team_acme", "acme");
        account.addProject("", "p_web", "web");
        account.addProject("team_acme", "p_api", "api");
        account.addDeployment("", deployment("dpl_web1", "p_web", "BUILDING", -2));
        QJsonObject failed = deployment("dpl_api1", "p_api", "ERROR", -10, -8);
        failed.insert("name", "api");
        failed.insert("target", "production");
        account.addDeployment("team_acme", failed);
    }

    ProjectSnapshot snapshot(const QString& name) const {
        for (const ProjectSnapshot& s : state->snapshots()) {
            if (s.name == name)
                return s;
        }
        ADD_FAILURE() << "no snapshot " << name.toStdString();
        return {};
    }
    QString shown(const QString& name) const { return described(snapshot(name)); }
    QList<Request> writes() const {
        QList<Request> found;
        for (const Request& request : server.requests()) {
            if (request.method != "GET")
                found << request;
        }
        return found;
    }
    std::optional<QString> problemOf(const QString& projectID) const {
        const std::optional<ActionState> action = state->actionState(projectID);
        return action ? action->problem : std::nullopt;
    }
};

} // namespace

TEST_F(DeploymentActionsTest, EachActionSendsItsOneRequestAndTheNextPassShowsIt) {
    AppState& s = connected();
    const ProjectSnapshot api = snapshot("api");
    const ProjectSnapshot web = snapshot("web");
    EXPECT_TRUE(s.canRedeploy(api));
    EXPECT_FALSE(s.canCancel(api));
    EXPECT_TRUE(s.canCancel(web));
    EXPECT_FALSE(s.canRedeploy(web));
    EXPECT_EQ(s.actionConfirmation(DeploymentAction::redeploy, api),
              "Redeploy api to Production? Commit “Fix login” (4f2a9c1) on main.");
    EXPECT_EQ(s.actionConfirmation(DeploymentAction::cancel, web),
              "Cancel the Preview deployment of web? Commit “Fix login” (4f2a9c1) on main.");
    {
        FrenchDesktop french;
        EXPECT_EQ(s.actionConfirmation(DeploymentAction::redeploy, api),
                  "Redéployer api en production ? Commit « Fix login » (4f2a9c1) sur main.");
    }

    QSignalSpy actions(&s, &AppState::actionsChanged);
    auto redeploying = s.redeploy(api);
    ASSERT_EQ(s.actionState("p_api")->running, true);
    EXPECT_EQ(s.actionState("p_api")->action, DeploymentAction::redeploy);
    EXPECT_TRUE(QCoro::waitFor(std::move(redeploying)));
    EXPECT_FALSE(s.actionState("p_api"));
    EXPECT_EQ(actions.count(), 2); // running, then gone
    // The new deployment is there at the pass that follows at once, not after the loop's pause.
    ASSERT_TRUE(waitUntil([&] { return shown("api") == "dpl_redeploy1 Queued"; }))
        << shown("api").toStdString();
    EXPECT_TRUE(snapshot("api").latest->isProduction());

    // One that succeeds while a pass runs, which may have read the scope before the change:
    // another pass follows that one.
    ASSERT_TRUE(waitUntil([&] { return !s.isRefreshing(); }));
    auto pass = s.refresh();
    EXPECT_TRUE(QCoro::waitFor(s.cancelDeployment(web)));
    QCoro::waitFor(std::move(pass));
    const int afterPass = account.requestCount("/v6/deployments");
    ASSERT_TRUE(waitUntil([&] { return account.requestCount("/v6/deployments") > afterPass; }));
    ASSERT_TRUE(waitUntil([&] { return shown("web") == "dpl_web1 Canceled"; }))
        << shown("web").toStdString();
    EXPECT_TRUE(s.canRedeploy(snapshot("web")));

    const QList<Request> sent = writes();
    ASSERT_EQ(sent.size(), 2);
    EXPECT_EQ(sent[0].method, "POST");
    EXPECT_EQ(sent[0].path + '?' + sent[0].rawQuery,
              "/v13/deployments?forceNew=1&teamId=team_acme");
    EXPECT_EQ(sent[0].headerValues("content-type"), QList<QByteArray>{"application/json"});
    EXPECT_EQ(sent[0].headerValues("authorization"), QList<QByteArray>{"Bearer tok_secret_123"});
    EXPECT_EQ(QJsonDocument::fromJson(sent[0].body).object(),
              QJsonObject({{"deploymentId", "dpl_api1"},
                           {"meta", QJsonObject{{"action", "redeploy"}}},
                           {"name", "api"},
                           {"target", "production"}}));
    EXPECT_EQ(sent[1].method, "PATCH");
    EXPECT_EQ(sent[1].path, "/v12/deployments/dpl_web1/cancel");
    EXPECT_FALSE(sent[1].hasQuery); // the personal account names no team
    EXPECT_TRUE(sent[1].body.isEmpty());
}

TEST_F(DeploymentActionsTest, ARefusalSaysWhyAndChangesNothingElse) {
    ASSERT_TRUE(keychain.storeToken("tok_secret_123"));
    AppState& s = connected();
    const QByteArray storedPreferences = prefs.bytes();
    const QStringList before{shown("web"), shown("api")};
    // web finished on Vercel after the pass that showed it building.
    account.updateDeployment("", "dpl_web1", [](QJsonObject& d) { d.insert("state", "READY"); });
    struct Case {
        const char* what;
        std::function<void()> arrange;
        DeploymentAction action;
        const char* project;
        QString sentence;
    };
    const QList<Case> cases{
        {"team closed to writes", [&] { account.readOnlyTeams.insert("team_acme"); },
         DeploymentAction::redeploy, "api",
         "Not allowed: this token may not change the deployments of this team or project."},
        {"finished before the cancel", [] {}, DeploymentAction::cancel, "web",
         "The deployment had already finished: there was nothing to cancel."},
        {"rejected token",
         [&] {
             account.failures.insert("/v13/deployments",
                                     Response::vercelError(401, "forbidden", "Invalid token"));
         },
         DeploymentAction::redeploy, "api", "Vercel rejected the token: it is invalid or expired."},
        {"connection cut",
         [&] {
             account.failures.insert("/v13/deployments",
                                     Response::resetMidBody(QByteArray(64, '{')));
         },
         DeploymentAction::redeploy, "api",
         "Vercel could not be reached. Check the network, then try again."},
        {"server error",
         [&] {
             account.failures.insert("/v13/deployments",
                                     Response::vercelError(502, "bad_gateway", "Down"));
         },
         DeploymentAction::redeploy, "api", "Vercel answered with an error (HTTP 502)."},
        // Last: the requests that follow it wait for Vercel's time.
        {"rate limit",
         [&] {
             account.failures.insert("/v13/deployments",
                                     Response::vercelError(429, "rate_limited", "Slow down")
                                         .withHeader("Retry-After", "120"));
         },
         DeploymentAction::redeploy, "api",
         "Vercel asked Quillon to slow down. Try again at 3:02 PM."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        account.readOnlyTeams.clear();
        account.failures.clear();
        c.arrange();
        const int passRequests = account.requestCount("/v6/deployments");
        const ProjectSnapshot target = snapshot(QString::fromLatin1(c.project));
        const AppState::ActionResult result = QCoro::waitFor(s.act(c.action, target));
        EXPECT_FALSE(result.done);
        ASSERT_TRUE(result.problem);
        EXPECT_EQ(result.problem->sentence(), c.sentence);
        EXPECT_EQ(problemOf(target.id), c.sentence);
        EXPECT_FALSE(s.isRefreshing()); // no pass asked for
        EXPECT_EQ(account.requestCount("/v6/deployments"), passRequests);
    }
    {
        FrenchDesktop french; // the sentence follows the language when the row reads it
        EXPECT_EQ(problemOf("p_api"), "Vercel a demandé à Quillon de ralentir. Réessayez à 15:02.");
    }
    EXPECT_EQ(QStringList({shown("web"), shown("api")}), before);
    EXPECT_TRUE(s.connection().isConnected());
    EXPECT_EQ(keychain.loadToken()->token, "tok_secret_123");
    EXPECT_EQ(prefs.bytes(), storedPreferences);
    EXPECT_EQ(writes().size(), 6);
}

TEST_F(DeploymentActionsTest, OneActionAtATimeAndAProblemLastsUntilReplaced) {
    AppState& s = connected();
    const ProjectSnapshot api = snapshot("api");
    account.failures.insert("/v13/deployments", Response::never());
    auto first = s.redeploy(api);
    EXPECT_FALSE(QCoro::waitFor(s.redeploy(api))); // refused at once
    EXPECT_TRUE(s.actionState("p_api")->running);
    ASSERT_TRUE(waitUntil([&] { return writes().size() == 1; }));
    EXPECT_FALSE(QCoro::waitFor(std::move(first))); // the 3 s timeout of the fixture
    EXPECT_EQ(writes().size(), 1);

    // 30 seconds on the clock.
    ASSERT_TRUE(problemOf("p_api"));
    clock.advance(29s);
    EXPECT_TRUE(problemOf("p_api"));
    clock.advance(1s);
    EXPECT_FALSE(s.actionState("p_api"));

    // Another action of the project: the problem goes as it starts.
    account.failures.insert("/v13/deployments", Response::vercelError(500, "oops", "Oops"));
    EXPECT_FALSE(QCoro::waitFor(s.redeploy(api)));
    ASSERT_TRUE(problemOf("p_api"));
    account.failures.clear();
    auto again = s.redeploy(api);
    EXPECT_TRUE(s.actionState("p_api")->running);
    EXPECT_FALSE(problemOf("p_api"));
    EXPECT_TRUE(QCoro::waitFor(std::move(again)));

    // A new latest deployment of the project.
    ASSERT_TRUE(waitUntil([&] { return shown("api") == "dpl_redeploy1 Queued"; }));
    ASSERT_TRUE(waitUntil([&] { return !s.isRefreshing(); }));
    account.readOnlyTeams.insert("team_acme");
    EXPECT_FALSE(QCoro::waitFor(s.cancelDeployment(snapshot("api"))));
    ASSERT_TRUE(problemOf("p_api"));
    QCoro::waitFor(s.refresh());
    EXPECT_TRUE(problemOf("p_api")); // the same deployment
    account.addDeployment("team_acme", deployment("dpl_api9", "p_api", "QUEUED", 1));
    QCoro::waitFor(s.refresh());
    EXPECT_EQ(shown("api"), "dpl_api9 Queued");
    EXPECT_FALSE(s.actionState("p_api"));
}

// The demo plays the actions on its fake deployments, without a request.
TEST_F(DeploymentActionsTest, DemoActionsPlayWithoutNetworkAndTheNotificationAsksToRedeploy) {
    AppState& s = makeState();
    s.start(true);
    QSignalSpy asked(&s, &AppState::redeployRequested);
    s.demo()->runScene(2); // api fails after 2 + 16 s
    clock.advance(18s);
    ASSERT_EQ(shown("api").section(' ', 1), "Failed");
    ASSERT_EQ(notifications.posted.size(), 1);
    const FailureNotification posted = notifications.posted.first();
    EXPECT_TRUE(posted.offersRedeploy);
    ASSERT_TRUE(notifications.redeployHandler);
    notifications.redeployHandler(posted.identifier);
    ASSERT_EQ(asked.count(), 1);
    const auto requested = asked.first().first().value<ProjectSnapshot>();
    EXPECT_EQ(described(requested), shown("api"));

    const int today = s.todayCount();
    EXPECT_TRUE(QCoro::waitFor(s.redeploy(requested)));
    const QString redeployed = snapshot("api").latest->deploymentID();
    EXPECT_NE(redeployed, posted.identifier);
    EXPECT_EQ(shown("api"), redeployed + " Queued");
    EXPECT_EQ(snapshot("api").latest->commitTitle(), "Handle checkout webhook");
    EXPECT_EQ(s.todayCount(), today + 1);
    EXPECT_FALSE(s.copyDeploymentURL(snapshot("api")));
    clock.advance(2s + 16s);
    EXPECT_EQ(shown("api"), redeployed + " Live");
    EXPECT_TRUE(s.copyDeploymentURL(snapshot("api")));
    ASSERT_EQ(clipboard.texts.size(), 1);
    EXPECT_TRUE(clipboard.texts.first().startsWith("https://api-"));
    EXPECT_TRUE(clipboard.texts.first().endsWith("-acme.vercel.app"));
    // The notification of a failure that is no longer the latest asks nothing, even when a newer
    // one failed too.
    s.demo()->runScene(2);
    clock.advance(18s);
    ASSERT_EQ(shown("api").section(' ', 1), "Failed");
    notifications.redeployHandler(posted.identifier);
    EXPECT_EQ(asked.count(), 1);

    s.demo()->runScene(1);
    const ProjectSnapshot queued = snapshot("my-saas");
    EXPECT_TRUE(QCoro::waitFor(s.cancelDeployment(queued)));
    EXPECT_EQ(shown("my-saas"), queued.latest->deploymentID() + " Canceled");
    clock.advance(60s); // the canceled build stays canceled
    EXPECT_EQ(shown("my-saas"), queued.latest->deploymentID() + " Canceled");
    EXPECT_FALSE(QCoro::waitFor(s.cancelDeployment(queued)));
    EXPECT_EQ(problemOf("my-saas"),
              "The deployment had already finished: there was nothing to cancel.");
    EXPECT_TRUE(server.requests().isEmpty());
}
