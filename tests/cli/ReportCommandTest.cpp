// quillon-cli report as a process against a loopback Vercel account (the demo's report is played
// end to end in tests/demo).
#include "support/CliProcess.h"
#include "support/FakeVercelAccount.h"
#include "support/QtPrinters.h"

#include <QDateTime>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using Response = LoopbackHttpServer::Response;

namespace {

const QString reportToken = QStringLiteral("vc_report_P7d3Lw9e");

class ReportCommandTest : public ::testing::Test {
protected:
    LoopbackHttpServer server;
    FakeVercelAccount account{server};
    QTemporaryDir home;

    QProcessEnvironment environment() const {
        return isolatedCliEnvironment(reportToken, server.baseUrl().toString(), home.path());
    }

    CliRun report(const QStringList& args, const QProcessEnvironment& env) {
        return runCli(QStringList{"report"} + args, env, reportToken);
    }
    CliRun report(const QStringList& args) { return report(args, environment()); }

    static double minutesAgo(int minutes) {
        return static_cast<double>(QDateTime::currentMSecsSinceEpoch() - minutes * 60'000LL);
    }
};

} // namespace

TEST_F(ReportCommandTest, PrintsTheReportOfTheLatestDeploymentWithItsCleanedLog) {
    account.addTeam("team_1", "acme");
    account.addProject("team_1", "p_api", "api");
    account.addDeployment("team_1", FakeVercelAccount::deployment("dpl_9", "p_api", "ERROR",
                                                                  minutesAgo(3), minutesAgo(1)));
    account.events.insert(
        "dpl_9",
        QJsonArray{
            QJsonObject{{"type", "stdout"}, {"text", "Cloning github.com/acme/api"}},
            QJsonObject{{"type", "command"}, {"payload", QJsonObject{{"text", "next build"}}}},
            QJsonObject{{"type", "stderr"},
                        {"text", "\x1b[31mType error: Property 'customerId'\x1b[39m"}},
            QJsonObject{{"type", "delimiter"}}});

    const CliRun result = report({"api"});

    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(result.err, QString());
    EXPECT_EQ(result.out,
              "# Vercel deployment failed: api\n"
              "Branch: main (4f2a9c1)\n"
              "Commit: Fix login\n"
              "Target: preview\n"
              "Failed after: 2 min\n"
              "Dashboard: https://vercel.com/acme/api/9\n"
              "\n## Build log (relevant part)\n```\n"
              "Cloning github.com/acme/api\n"
              "next build\n"
              "Type error: Property 'customerId'\n"
              "```\n\nPlease find the cause of this failed build and propose the fix.\n");
}

TEST_F(ReportCommandTest, FindsAProjectByIdAndSaysWhenItsLogIsUnavailable) {
    account.addProject("", "p_web", "web");
    account.addDeployment("", FakeVercelAccount::deployment("dpl_gone", "p_web", "ERROR",
                                                            minutesAgo(5), minutesAgo(4)));

    const CliRun result = report({"p_web"});

    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_TRUE(result.out.startsWith("# Vercel deployment failed: web\n"));
    EXPECT_TRUE(result.out.contains("\n```\n(log unavailable)\n```\n")) << result.out.toStdString();
    EXPECT_EQ(account.requestCount("/v3/deployments/dpl_gone/events"), 1);
}

TEST_F(ReportCommandTest, UnknownProjectOrNoDeploymentEndsWithASentence) {
    account.addProject("", "p_web", "web");
    account.addProject("", "p_new", "fresh");
    account.addDeployment(
        "", FakeVercelAccount::deployment("dpl_1", "p_web", "READY", minutesAgo(5), minutesAgo(4)));

    const CliRun unknown = report({"shop"});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_EQ(unknown.out, QString());
    EXPECT_TRUE(unknown.err.startsWith("quillon-cli report: no monitored project is named 'shop'"))
        << unknown.err.toStdString();
    EXPECT_TRUE(unknown.err.contains("fresh") && unknown.err.contains("web"));

    const CliRun fresh = report({"fresh"});
    EXPECT_EQ(fresh.exitCode, 1);
    EXPECT_EQ(fresh.out, QString());
    EXPECT_EQ(fresh.err, "quillon-cli report: fresh has no deployment yet\n");
}

TEST_F(ReportCommandTest, RejectedTokenMissingTokenAndBadArguments) {
    account.failures.insert("/v2/user", Response::vercelError(401, "unauthorized", "no"));
    const CliRun rejected = report({"api"});
    EXPECT_EQ(rejected.exitCode, 1);
    EXPECT_EQ(rejected.err.trimmed(),
              "Connection failed: Token rejected by Vercel. It is invalid or expired.");

    QProcessEnvironment noToken = environment();
    noToken.remove("VERCEL_TOKEN");
    const CliRun missing = report({"api"}, noToken);
    EXPECT_EQ(missing.exitCode, 2);
    EXPECT_TRUE(missing.err.contains("quillon-cli token set"));

    EXPECT_EQ(report({}).exitCode, 2);
    EXPECT_EQ(report({"api", "web"}).exitCode, 2);
    EXPECT_EQ(server.requestsTo("/v2/user").size(), 1); // only the rejected run asked
}
