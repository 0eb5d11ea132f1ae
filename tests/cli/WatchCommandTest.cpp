// quillon-cli watch as a process: the engine against a loopback Vercel account, and the demo.
#include "support/CliProcess.h"
#include "support/FakeVercelAccount.h"
#include "support/QtPrinters.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace std::chrono_literals;
using Response = LoopbackHttpServer::Response;

namespace {

const QString watchToken = QStringLiteral("vc_watch_Zr81Qk2L");

class WatchCommandTest : public ::testing::Test {
protected:
    LoopbackHttpServer server;
    FakeVercelAccount account{server};
    QTemporaryDir home;

    QProcessEnvironment environment() const {
        return isolatedCliEnvironment(watchToken, server.baseUrl().toString(), home.path());
    }

    CliRun run(const QStringList& args, const QProcessEnvironment& env) {
        return runCli(args, env, watchToken);
    }

    static int countedToday(double createdMs) {
        return QDateTime::fromMSecsSinceEpoch(qint64(createdMs)).date() == QDate::currentDate();
    }

    static double minutesAgo(int minutes) {
        return static_cast<double>(QDateTime::currentMSecsSinceEpoch() - minutes * 60'000LL);
    }
};

} // namespace

TEST_F(WatchCommandTest, OncePrintsOnePassWithTwoRequestsPerScope) {
    account.addTeam("team_1", "acme");
    account.addProject("", "p_web", "web");
    account.addProject("team_1", "p_api", "api");
    account.addDeployment(
        "", FakeVercelAccount::deployment("dpl_1", "p_web", "BUILDING", minutesAgo(2)));
    account.addDeployment("team_1", FakeVercelAccount::deployment("dpl_2", "p_api", "READY",
                                                                  minutesAgo(2 * 1440),
                                                                  minutesAgo(2 * 1440 - 1)));
    const CliRun result = run({"watch", "--once"}, environment());
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    const QStringList lines = result.out.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 3) << result.out.toStdString();
    // Just after midnight the build started yesterday and today's count is still 0.
    const bool startedToday =
        QDateTime::fromMSecsSinceEpoch(qint64(minutesAgo(2))).date() == QDate::currentDate();
    const QString count = startedToday ? "1" : "0";
    EXPECT_TRUE(lines[0].endsWith("] building · 1 building · today " + count))
        << lines[0].toStdString();
    EXPECT_EQ(lines[1], "  Building  web  main  4f2a9c1  Fix login  2 min ago");
    EXPECT_EQ(lines[2], "  Live  api  main  4f2a9c1  Fix login  2 d ago");
    EXPECT_EQ(account.requestCount("/v9/projects"), 2 + 2); // project list, then one pass
    EXPECT_EQ(account.requestCount("/v6/deployments"), 2);
}

TEST_F(WatchCommandTest, RejectedTokenEndsTheWatchWithTheSentence) {
    account.failures.insert("/v2/user", Response::vercelError(401, "unauthorized", "no"));
    const CliRun result = run({"watch"}, environment());
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err.trimmed(),
              "Connection failed: Token rejected by Vercel. It is invalid or expired.");
}

TEST_F(WatchCommandTest, DemoNeedsNoAccountAndNoNetwork) {
    QProcessEnvironment env = environment();
    env.insert("QUILLON_DEMO", "1");
    env.remove("VERCEL_TOKEN");
    const CliRun result = run({"watch", "--once"}, env);
    EXPECT_EQ(result.exitCode, 0);
    const QStringList lines = result.out.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 7);
    EXPECT_TRUE(lines[0].endsWith("· today 11"));
    EXPECT_TRUE(lines[1].startsWith("  Live  my-saas  main"));
    EXPECT_TRUE(server.requests().isEmpty());
}

// What a status bar reads: one JSON object per line, for the demo and for a real account.
TEST_F(WatchCommandTest, JsonGivesOneParsableObjectPerPass) {
    account.addProject("", "p_web", "web");
    account.addDeployment(
        "", FakeVercelAccount::deployment("dpl_1", "p_web", "ERROR", minutesAgo(3), minutesAgo(1)));
    const CliRun live = run({"watch", "--once", "--json"}, environment());
    QProcessEnvironment demoEnv = environment();
    demoEnv.insert("QUILLON_DEMO", "1");
    const CliRun demo = run({"watch", "--json", "--once"}, demoEnv);

    ASSERT_EQ(live.exitCode, 0) << live.err.toStdString();
    ASSERT_EQ(live.out.count('\n'), 1) << live.out.toStdString();
    QJsonParseError error;
    const QJsonObject pass = QJsonDocument::fromJson(live.out.toUtf8(), &error).object();
    ASSERT_EQ(error.error, QJsonParseError::NoError);
    EXPECT_EQ(pass["tone"], "error");
    EXPECT_EQ(pass["todayCount"].toInt(-1), countedToday(minutesAgo(3)));
    const QJsonObject web = pass["projects"].toArray().at(0).toObject();
    EXPECT_EQ(web["id"], "p_web");
    EXPECT_EQ(web["status"], "error");
    EXPECT_EQ(web["shortHash"], "4f2a9c1");
    EXPECT_NEAR(web["ageSeconds"].toDouble(), 180, 30);
    EXPECT_TRUE(web["url"].toString().startsWith("https://vercel.com/"));

    ASSERT_EQ(demo.exitCode, 0);
    const QJsonObject demoPass = QJsonDocument::fromJson(demo.out.toUtf8()).object();
    EXPECT_EQ(demoPass["todayCount"], 11);
    EXPECT_EQ(demoPass["projects"].toArray().size(), 6);
    EXPECT_TRUE(demoPass["projects"].toArray().at(0).toObject()["url"].isNull());
}

TEST_F(WatchCommandTest, WithoutAnyTokenItSaysHowToGetOne) {
    QProcessEnvironment env = environment();
    env.remove("VERCEL_TOKEN");
    const CliRun result = run({"watch", "--once"}, env);
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_TRUE(result.err.contains("quillon-cli token set"));
    EXPECT_TRUE(server.requests().isEmpty());
}
