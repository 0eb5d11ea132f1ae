// `quillon-cli wait` run as a process against a loopback account, in folders made for each case:
// the exit code and what goes to each stream, for every way a wait ends.
#include "support/CliProcess.h"
#include "support/FakeVercelAccount.h"
#include "support/LocalCheckout.h"
#include "support/QtPrinters.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using Response = LoopbackHttpServer::Response;

namespace {

const QString waitToken = QStringLiteral("vc_wait_Lx92Qp");
const QString headSha = QStringLiteral("4f2a9c1e0b8d7c6a5f4e3d2c1b0a9f8e7d6c5b4a");

// A 40-digit hash made of one repeated digit.
QString shaOf(char digit) {
    return QString(40, QChar::fromLatin1(digit));
}

class WaitCommandTest : public ::testing::Test {
protected:
    LoopbackHttpServer server;
    FakeVercelAccount account{server};
    QTemporaryDir home;
    QTemporaryDir folder; // where the command runs unless told otherwise: no git, no link
    QProcessEnvironment env =
        isolatedCliEnvironment(waitToken, server.baseUrl().toString(), home.path());

    void SetUp() override {
        account.addProject("", "p_web", "web");
        account.linkProject("", "p_web", github("shop"));
    }

    static QJsonObject github(const char* repo) {
        return {{"type", "github"}, {"org", "acme"}, {"repo", repo}, {"repoId", 1}};
    }

    CliRun run(const QStringList& args, const QString& in = {}) {
        return runCli(QStringList{"wait"} + args, env, waitToken, {}, 0,
                      QStringLiteral(QUILLON_CLI_PATH), in.isEmpty() ? folder.path() : in);
    }

    // A deployment of the commit `sha` in `project`, made a minute ago.
    static QJsonObject deployment(const QString& id, const QString& state, const QString& sha,
                                  const QString& project = "p_web") {
        QJsonObject d = FakeVercelAccount::deployment(
            id, project, state, double(QDateTime::currentMSecsSinceEpoch() - 60'000));
        QJsonObject meta = d.value("meta").toObject();
        meta.insert("githubCommitSha", sha);
        d.insert("meta", meta);
        return d;
    }
};

} // namespace

// The build is followed to its end through a 429; --json prints one object per state.
TEST_F(WaitCommandTest, ALiveBuildEndsWithItsAddressAfterVercelAsksToSlowDown) {
    account.addDeployment("", deployment("dpl_1", "BUILDING", headSha));
    Response limited = Response::vercelError(429, "rate_limited", "Rate limit exceeded");
    limited.headers = {{"X-RateLimit-Limit", "100"},
                       {"X-RateLimit-Remaining", "0"},
                       {"X-RateLimit-Reset", "1"},
                       {"Retry-After", "1"}};
    account.upcoming["/v13/deployments/dpl_1"] = {
        limited, Response::json(QJsonDocument(account.singleDeployment("", "dpl_1", [](auto& d) {
                                    d.insert("readyState", "READY");
                                })).toJson())};

    const CliRun result = run({"--commit", headSha, "--project", "web", "--json"});

    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    const QStringList lines = result.out.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 2) << result.out.toStdString();
    QStringList states;
    for (const QString& line : lines) {
        QJsonParseError error;
        const QJsonObject object = QJsonDocument::fromJson(line.toUtf8(), &error).object();
        ASSERT_EQ(error.error, QJsonParseError::NoError) << line.toStdString();
        states << object["state"].toString();
        EXPECT_EQ(object["url"], "https://dpl_1.vercel.app");
        EXPECT_EQ(object["commit"], headSha);
        EXPECT_EQ(object["project"], "web");
    }
    EXPECT_EQ(states, (QStringList{"BUILDING", "READY"}));
    EXPECT_TRUE(result.err.startsWith("Waiting for the deployment of 4f2a9c1 in web…\n"))
        << result.err.toStdString();
    EXPECT_TRUE(result.err.contains("Vercel asked Quillon to slow down. Next check at "));
    EXPECT_EQ(account.rateLimitedCount(), 0); // the 429 was the fake's own, not its pacing
    EXPECT_EQ(server.requestsTo("/v13/deployments/dpl_1").size(), 2);
}

TEST_F(WaitCommandTest, FailedCanceledSkippedAndMissingBuildsEndWithTheirCodes) {
    account.addDeployment("", deployment("dpl_err", "ERROR", shaOf('a')));
    account.events.insert("dpl_err", QJsonArray{QJsonObject{{"text", "Running \"next build\""}},
                                                QJsonObject{{"text", "Error: Cannot find x"}}});
    account.addDeployment("", deployment("dpl_can", "CANCELED", shaOf('b')));
    QJsonObject ignored = deployment("dpl_skip", "CANCELED", shaOf('c'));
    ignored.insert("errorLink", "https://vercel.com/docs/platform/projects#ignored-build-step");
    account.addDeployment("", ignored);

    const CliRun failed = run({"--commit", shaOf('a'), "--project", "web"});
    EXPECT_EQ(failed.exitCode, 1);
    EXPECT_EQ(failed.out, "");
    EXPECT_TRUE(failed.err.contains("] web aaaaaaa: Failed\n# Vercel deployment failed: web\n"))
        << failed.err.toStdString();
    EXPECT_TRUE(failed.err.endsWith("```\nRunning \"next build\"\nError: Cannot find x\n```\n\n"
                                    "Please find the cause of this failed build and propose the "
                                    "fix.\n"));

    const CliRun canceled = run({"--commit", "bbbbbbb", "--project", "p_web"});
    EXPECT_EQ(canceled.exitCode, 2);
    EXPECT_TRUE(canceled.err.endsWith("The deployment of bbbbbbb in web was canceled.\n"));
    const CliRun skipped = run({"--commit", shaOf('c'), "--project=web"});
    EXPECT_EQ(skipped.exitCode, 2);
    EXPECT_TRUE(skipped.err.endsWith("Vercel skipped the build of ccccccc in web: the project's "
                                     "Ignored Build Step found nothing to build.\n"));
    env.insert("LANGUAGE", "fr");
    env.insert("LC_ALL", "fr_FR.UTF-8");
    const CliRun french = run({"--commit", shaOf('b'), "--project", "web"});
    EXPECT_TRUE(french.err.endsWith("Le déploiement de bbbbbbb dans web a été annulé.\n"))
        << french.err.toStdString();
    env.insert("LANGUAGE", "en");

    const CliRun never = run({"--commit", shaOf('d'), "--project", "web", "--timeout", "1"});
    EXPECT_EQ(never.exitCode, 124);
    EXPECT_EQ(never.out, "");
    EXPECT_TRUE(never.err.endsWith("No deployment of ddddddd appeared in web within 1 s.\n"))
        << never.err.toStdString();
    EXPECT_LT(never.elapsedMs, 4000); // not the 5 s of the next look
}

TEST_F(WaitCommandTest, AShortHashIsFoundOnTheSecondPage) {
    account.addDeployment("", deployment("dpl_mine", "READY", headSha));
    for (int i = 0; i < 130; ++i) {
        QJsonObject newer =
            FakeVercelAccount::deployment(QStringLiteral("dpl_%1").arg(i), "p_web", "READY",
                                          double(QDateTime::currentMSecsSinceEpoch() - 200 * i));
        newer.insert("meta", i % 2 ? QJsonValue() : QJsonObject{{"githubCommitSha", shaOf('e')}});
        account.addDeployment("", newer);
    }
    const CliRun found = run({"--commit", "4f2a9c1e", "--project", "web"});
    EXPECT_EQ(found.exitCode, 0) << found.err.toStdString();
    EXPECT_EQ(found.out, "https://dpl_mine.vercel.app\n");
    EXPECT_TRUE(found.err.contains("] web 4f2a9c1: Live\n"));
    EXPECT_EQ(server.requestsTo("/v6/deployments").size(), 2);
}

// The project of the folder: .vercel/project.json in the folder or the repository's root, else
// the project that deploys the remote named origin; --project before either.
TEST_F(WaitCommandTest, TheProjectComesFromTheLinkedFolderOrTheGitRemote) {
    QTemporaryDir checkout;
    const QString repo = checkout.path();
    gitFolder::git(repo, {"init", "-q"});
    gitFolder::git(repo, {"commit", "-q", "--allow-empty", "-m", "first"});
    gitFolder::git(repo, {"remote", "add", "origin", "https://github.com/Acme/shop.git"});
    const QString sha = gitFolder::head(repo);
    QDir().mkpath(repo + "/apps/web");
    account.addTeam("team_1", "acme");
    account.addProject("team_1", "p_api", "api");
    account.addProject("", "p_other", "other");
    account.linkProject("", "p_other", github("other"));
    account.addDeployment("", deployment("dpl_web", "READY", sha));
    account.addDeployment("team_1", deployment("dpl_api", "READY", sha, "p_api"));

    const CliRun byRemote = run({}, repo + "/apps/web");
    EXPECT_EQ(byRemote.exitCode, 0) << byRemote.err.toStdString();
    EXPECT_EQ(byRemote.out, "https://dpl_web.vercel.app\n");
    const auto asked = server.requestsTo("/v6/deployments");
    ASSERT_EQ(asked.size(), 1);
    EXPECT_TRUE(
        asked[0].queryItems().contains(std::pair<QString, QString>("meta-githubCommitSha", sha)));

    gitFolder::write(repo + "/.vercel/project.json",
                     R"({"projectId": "p_api", "orgId": "team_1"})");
    EXPECT_EQ(run({}, repo + "/apps/web").out, "https://dpl_api.vercel.app\n");
    EXPECT_EQ(run({"--project", "web"}, repo).out, "https://dpl_web.vercel.app\n");
    // A monorepo's app folder linked on its own comes before the root.
    gitFolder::write(repo + "/apps/web/.vercel/project.json",
                     R"({"projectId": "p_web", "orgId": "usr_1"})");
    EXPECT_EQ(run({}, repo + "/apps/web").out, "https://dpl_web.vercel.app\n");
    EXPECT_EQ(run({}, repo).out, "https://dpl_api.vercel.app\n");
    QFile::remove(repo + "/.vercel/project.json");
    QFile::remove(repo + "/apps/web/.vercel/project.json");

    account.linkProject("", "p_other", github("shop"));
    const CliRun several = run({}, repo);
    EXPECT_EQ(several.exitCode, 2);
    EXPECT_EQ(several.err, "quillon-cli wait: Several Vercel projects deploy github.com/acme/shop: "
                           "web (ada), other (ada). Choose one with --project.\n");
    gitFolder::git(repo, {"remote", "set-url", "origin", "git@github.com:acme/gone.git"});
    const CliRun none = run({}, repo);
    EXPECT_EQ(none.exitCode, 2);
    EXPECT_EQ(none.err, "quillon-cli wait: No Vercel project deploys github.com/acme/gone. Name "
                        "one with --project.\n");
    const CliRun noCommit = run({"--project", "web"});
    EXPECT_EQ(noCommit.exitCode, 2);
    EXPECT_TRUE(noCommit.err.contains("this folder has no git commit to wait for"));
}
