// A wait followed from the first look to its end on a loopback account, on a manual clock: the
// states a build goes through, failures, cancels and skips, a deadline, a commit on the second
// page, a 429 and a dead network.
#include "core/wait/DeploymentWait.h"
#include "core/wait/AccountProjects.h"
#include "core/wait/DeploymentJson.h"
#include "support/FakeVercelAccount.h"
#include "support/ManualClock.h"
#include "support/QtPrinters.h"
#include "support/WaitUntil.h"

#include <QJsonDocument>
#include <gtest/gtest.h>

using namespace std::chrono_literals;
using Response = LoopbackHttpServer::Response;

namespace {

const QString sha = QStringLiteral("4f2a9c1e0b8d7c6a5f4e3d2c1b0a9f8e7d6c5b4a");

class DeploymentWaitTest : public ::testing::Test {
protected:
    LoopbackHttpServer server;
    FakeVercelAccount account{server};
    ManualClock clock;
    QStringList told; // what the observer heard, one entry each

    void SetUp() override {
        account.addTeam("team_1", "acme");
        account.addProject("team_1", "p_web", "web");
        account.linkProject("team_1", "p_web",
                            QJsonObject{{"type", "github"},
                                        {"org", "acme"},
                                        {"repo", "shop"},
                                        {"repoId", 583920117},
                                        {"deployHooks", QJsonArray()}});
    }

    double msAgo(int seconds) const {
        return double(clock.now().addSecs(-seconds).toMSecsSinceEpoch());
    }

    // A deployment of the commit `commit` in the project, made `age` seconds ago.
    QJsonObject deployment(const QString& id, const QString& state, const QString& commit = sha,
                           int age = 60) const {
        QJsonObject d = FakeVercelAccount::deployment(id, "p_web", state, msAgo(age));
        QJsonObject meta = d.value("meta").toObject();
        meta.insert("githubCommitSha", commit);
        d.insert("meta", meta);
        return d;
    }

    // The answer of /v13/deployments/{id} in another state.
    Response stateOf(const QString& id, const QString& state) const {
        const QJsonObject d = account.singleDeployment(
            "team_1", id, [&](QJsonObject& o) { o.insert("readyState", state); });
        return Response::json(QJsonDocument(d).toJson());
    }

    // Runs a wait to its end, moving the clock on by whatever it sleeps.
    WaitOutcome wait(const QString& commit = sha, std::chrono::milliseconds timeout = 15min,
                     ProjectHints hints = {QStringLiteral("web")}) {
        WaitObserver observer{[this](const LinkedProject& p) { told << "started " + p.ref.id; },
                              [this](const VercelDeployment& d) {
                                  told << d.deploymentID() + " " +
                                              d.readyState.value_or(d.state.value_or("-"));
                              },
                              [this](const QString& note) { told << "note " + note; }};
        std::optional<WaitOutcome> outcome;
        const WaitRequest request{*CommitHash::parse(commit), std::move(hints), timeout};
        const VercelAPI api("tok_wait", server.baseUrl());
        // Named, so that what it captures outlives its frame.
        const auto body = [&]() -> QCoro::Task<> {
            outcome = co_await waitForDeployment(api, clock, request, observer);
        };
        auto running = body();
        // A wait of 15 min at one look every 5 s takes a few hundred turns.
        for (int turns = 0; !outcome; ++turns) {
            if (turns > 1000 ||
                !waitUntil([&] { return outcome || clock.pendingSleepers() > 0; }, 10000)) {
                ADD_FAILURE() << "the wait neither ended nor slept as it should";
                break;
            }
            if (!outcome)
                clock.advance(clock.requestedSleeps().last());
        }
        return outcome.value_or(WaitOutcome{WaitEnd::refused, "stuck", {}, {}});
    }

    QList<QList<std::pair<QString, QString>>> deploymentQueries() const {
        QList<QList<std::pair<QString, QString>>> queries;
        for (const auto& request : server.requestsTo("/v6/deployments"))
            queries << request.queryItems();
        return queries;
    }
};

} // namespace

TEST_F(DeploymentWaitTest, FollowsTheBuildEveryFiveSecondsUntilItIsLive) {
    account.addDeployment("team_1", deployment("dpl_1", "QUEUED"));
    const QByteArray created = QByteArray::number(qint64(msAgo(60)));
    account.upcoming["/v6/deployments"] = {
        Response::json(R"({"deployments": [], "pagination": null})")};
    account.upcoming["/v13/deployments/dpl_1"] = {
        stateOf("dpl_1", "BUILDING"), stateOf("dpl_1", "BUILDING"), stateOf("dpl_1", "READY")};
    const QDateTime start = clock.now();

    const WaitOutcome outcome = wait();

    ASSERT_EQ(outcome.end, WaitEnd::ready) << outcome.message.toStdString();
    EXPECT_EQ(outcome.message, "https://dpl_1.vercel.app");
    EXPECT_EQ(told,
              (QStringList{"started p_web", "dpl_1 QUEUED", "dpl_1 BUILDING", "dpl_1 READY"}));
    // Nothing the first time, found the next, then followed by its id in its team.
    EXPECT_EQ(start.secsTo(clock.now()), 4 * 5);
    for (const auto sleep : clock.requestedSleeps())
        EXPECT_EQ(sleep, 5s);
    const auto queries = deploymentQueries();
    ASSERT_EQ(queries.size(), 2);
    // A whole hash and a GitHub project: Vercel filters, one page does.
    EXPECT_EQ(queries[0], (QList<std::pair<QString, QString>>{{"limit", "100"},
                                                              {"projectId", "p_web"},
                                                              {"meta-githubCommitSha", sha},
                                                              {"teamId", "team_1"}}));
    const auto followed = server.requestsTo("/v13/deployments/dpl_1");
    ASSERT_EQ(followed.size(), 3);
    EXPECT_EQ(followed[0].queryItems(), (QList<std::pair<QString, QString>>{{"teamId", "team_1"}}));
    EXPECT_EQ(deploymentJsonLine(*outcome.deployment, *outcome.project, *CommitHash::parse(sha)),
              R"({"buildingAt":)" + created + R"(,"commit":")" + sha.toLatin1() +
                  R"(","createdAt":)" + created +
                  R"(,"id":"dpl_1","project":"web","projectId":"p_web","readyAt":null,)"
                  R"("scope":"acme","state":"READY","url":"https://dpl_1.vercel.app"})");
}

TEST_F(DeploymentWaitTest, FailedCanceledSkippedAndBlockedBuildsEachEndTheirWay) {
    account.addDeployment("team_1", deployment("dpl_err", "ERROR"));
    account.events.insert("dpl_err",
                          QJsonArray{QJsonObject{{"type", "stdout"}, {"text", "Cloning"}},
                                     QJsonObject{{"type", "stderr"}, {"text", "Error: no tests"}}});
    WaitOutcome failed = wait();
    EXPECT_EQ(failed.end, WaitEnd::failed);
    EXPECT_TRUE(
        failed.message.startsWith("# Vercel deployment failed: web\nBranch: main (4f2a9c1)"))
        << failed.message.toStdString();
    EXPECT_TRUE(failed.message.contains("Dashboard: https://vercel.com/acme/web/err\n"));
    EXPECT_TRUE(failed.message.contains("```\nCloning\nError: no tests\n```"));

    const QString other = QStringLiteral("aaaaaaa0b8d7c6a5f4e3d2c1b0a9f8e7d6c5b4a9");
    account.addDeployment("team_1", deployment("dpl_c", "CANCELED", other));
    EXPECT_EQ(wait(other).end, WaitEnd::canceled);
    EXPECT_EQ(wait(other).message, "The deployment of aaaaaaa in web was canceled.");
    account.updateDeployment("team_1", "dpl_c", [](QJsonObject& d) {
        d.insert("errorLink", "https://vercel.com/docs/projects/overview#ignored-build-step");
        d.insert("errorMessage", "The Deployment has been canceled as a result of running the "
                                 "command defined in the \"Ignored Build Step\" setting.");
    });
    const WaitOutcome skipped = wait(other);
    EXPECT_EQ(skipped.end, WaitEnd::skipped);
    EXPECT_EQ(skipped.message, "Vercel skipped the build of aaaaaaa in web: the project's Ignored "
                               "Build Step found nothing to build.");

    const QString third = QStringLiteral("bbbbbbb0b8d7c6a5f4e3d2c1b0a9f8e7d6c5b4a9");
    QJsonObject blocked = deployment("dpl_b", "BLOCKED", third);
    blocked.insert("readyStateReason", "Git author ana@acme.dev must have access to the team.");
    account.addDeployment("team_1", blocked);
    EXPECT_EQ(wait(third).message, "Vercel blocked the deployment of bbbbbbb in web. Git author "
                                   "ana@acme.dev must have access to the team.");
}

TEST_F(DeploymentWaitTest, NothingWithinTheTimeoutEndsAtTheDeadlineAndSaysWhatWasMissing) {
    const QDateTime start = clock.now();
    const WaitOutcome none = wait(sha, 1min);
    EXPECT_EQ(none.end, WaitEnd::timedOut);
    EXPECT_EQ(none.message, "No deployment of 4f2a9c1 appeared in web within 1 min.");
    EXPECT_EQ(clock.now(), start.addSecs(60));
    EXPECT_EQ(deploymentQueries().size(), 12); // at 0, 5, … 55 s: none at the deadline itself

    account.addDeployment("team_1", deployment("dpl_slow", "BUILDING"));
    const WaitOutcome slow = wait(sha, 90s);
    EXPECT_EQ(slow.end, WaitEnd::timedOut);
    EXPECT_EQ(slow.message, "The deployment of 4f2a9c1 in web did not end within 1 min 30 s "
                            "(Building).");
}

// A short hash cannot be a filter: the project's deployments are read page by page, 100 at a
// time, untidy as Vercel lists them.
TEST_F(DeploymentWaitTest, AShortHashIsFoundOnTheSecondPage) {
    account.addDeployment("team_1", deployment("dpl_old", "READY", sha, 3600));
    for (int i = 0; i < 150; ++i) {
        QJsonObject d = deployment(QStringLiteral("dpl_n%1").arg(i), "READY",
                                   QStringLiteral("%1").arg(i, 40, 10, QChar(u'c')), 60 + i);
        if (i % 3 == 0)
            d.remove("meta");
        else if (i % 3 == 1)
            d.insert("meta", QJsonObject{{"githubCommitSha", QJsonValue()}});
        account.addDeployment("team_1", d);
    }
    const WaitOutcome found = wait("4F2A9C1");
    ASSERT_EQ(found.end, WaitEnd::ready) << found.message.toStdString();
    EXPECT_EQ(found.deployment->deploymentID(), "dpl_old");
    const auto queries = deploymentQueries();
    ASSERT_EQ(queries.size(), 2);
    EXPECT_EQ(queries[0].size(), 3); // no meta- filter
    EXPECT_EQ(queries[1].last().first, "until");
    // A commit not deployed yet: its first look reads back as far, the next ones a page each.
    server.clearRequests();
    EXPECT_EQ(wait("0123abc", 10s).end, WaitEnd::timedOut);
    EXPECT_EQ(deploymentQueries().size(), 2 + 1);

    // Without a git link, a whole hash is matched the same way.
    account.linkProject("team_1", "p_web", QJsonObject{});
    server.clearRequests();
    const WaitOutcome whole = wait();
    ASSERT_EQ(whole.end, WaitEnd::ready) << whole.message.toStdString();
    EXPECT_EQ(whole.deployment->deploymentID(), "dpl_old");
    EXPECT_EQ(deploymentQueries().size(), 2);
}

TEST_F(DeploymentWaitTest, RateLimitsAndADeadNetworkAreWaitedOutARejectedTokenIsNot) {
    account.addDeployment("team_1", deployment("dpl_1", "BUILDING"));
    Response limited = Response::vercelError(429, "rate_limited", "Rate limit exceeded");
    limited.headers = {{"X-RateLimit-Limit", "100"},
                       {"X-RateLimit-Remaining", "0"},
                       {"X-RateLimit-Reset", "30"},
                       {"Retry-After", "30"}};
    account.upcoming["/v6/deployments"] = {Response::resetMidBody(R"({"deployments": [])")};
    account.upcoming["/v13/deployments/dpl_1"] = {limited, stateOf("dpl_1", "READY")};
    const QString deadline =
        clock.now().addSecs(15 * 60).toLocalTime().toString(QStringLiteral("HH:mm:ss"));

    const WaitOutcome outcome = wait();

    EXPECT_EQ(outcome.end, WaitEnd::ready);
    ASSERT_EQ(told.size(), 5) << told.join('\n').toStdString();
    EXPECT_TRUE(told[1].startsWith("note ") &&
                told[1].endsWith(" Trying again until " + deadline + "."))
        << told[1].toStdString();
    EXPECT_EQ(told[2], "dpl_1 BUILDING");
    EXPECT_TRUE(told[3].startsWith("note Vercel asked Quillon to slow down. Next check at "));
    EXPECT_EQ(told[4], "dpl_1 READY");
    // After the 429, nothing goes before Retry-After has passed (plus a little jitter).
    const auto sleeps = clock.requestedSleeps();
    ASSERT_EQ(sleeps.size(), 3);
    EXPECT_EQ(sleeps[0], 5s);
    EXPECT_EQ(sleeps[1], 5s);
    EXPECT_GE(sleeps[2], 30s);
    EXPECT_LE(sleeps[2], 32s);
    EXPECT_EQ(server.requestsTo("/v13/deployments/dpl_1").size(), 2);

    account.failures.insert("/v2/user", Response::vercelError(401, "unauthorized", "no"));
    const int slept = clock.requestedSleeps().size();
    const WaitOutcome refused = wait();
    EXPECT_EQ(refused.end, WaitEnd::refused);
    EXPECT_EQ(refused.message, "Token rejected by Vercel. It is invalid or expired.");
    EXPECT_EQ(clock.requestedSleeps().size(), slept);
}

// The projects of every scope and page the hints need; a team that wants SAML is passed over.
TEST_F(DeploymentWaitTest, ProjectsAreListedOverEveryScopeAndPage) {
    account.addSamlTeam("team_saml", "secret", "Secret");
    for (int i = 0; i < 120; ++i)
        account.addProject("", QStringLiteral("p_%1").arg(i), QStringLiteral("app-%1").arg(i));
    std::optional<RequestResult<AccountProjects>> listed;
    const auto list = [&](ProjectHints hints) {
        QCoro::waitFor([&]() -> QCoro::Task<> {
            listed.emplace(co_await listAccountProjects(VercelAPI("t", server.baseUrl()), hints));
        }());
        return listed->value();
    };
    const AccountProjects all = list({});
    EXPECT_EQ(all.projects.size(), 121);
    EXPECT_EQ(all.closed, QStringList{"secret"});
    EXPECT_EQ(all.projects.last().ref, (ProjectRef{"p_web", "web", "team_1", "acme"}));
    EXPECT_EQ(linkedRepository(*all.projects.last().link)->text(), "github.com/acme/shop");
    server.clearRequests();
    const AccountProjects linked =
        list({std::nullopt, LocalProjectLink{"p_web", "team_1", "/w/.vercel/project.json"}});
    EXPECT_EQ(linked.projects.size(), 1);
    EXPECT_EQ(server.requestsTo("/v9/projects").size(), 1);
}
