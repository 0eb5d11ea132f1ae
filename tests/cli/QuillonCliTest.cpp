// quillon-cli run as a separate process against a loopback Vercel.
#include "support/CliProcess.h"
#include "support/LoopbackHttpServer.h"
#include "support/QtPrinters.h"

#include <QDateTime>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QTcpServer>
#include <gtest/gtest.h>

using namespace std::chrono_literals;
using Request = LoopbackHttpServer::Request;
using Response = LoopbackHttpServer::Response;

namespace {

const QString cliToken = QStringLiteral("vc_cli_Qm4rT8zW");

class QuillonCliTest : public ::testing::Test {
protected:
    LoopbackHttpServer server;

    // The child's environment: our token and server, English unless told otherwise.
    QProcessEnvironment environment(const QString& language = QStringLiteral("en")) const {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("VERCEL_TOKEN"), cliToken);
        env.insert(QStringLiteral("QUILLON_API_BASE"), server.baseUrl().toString());
        env.insert(QStringLiteral("LANGUAGE"), language);
        env.insert(QStringLiteral("LC_ALL"), language == QLatin1String("fr")
                                                 ? QStringLiteral("fr_FR.UTF-8")
                                                 : QStringLiteral("C.UTF-8"));
        return env;
    }

    CliRun run(const QStringList& args, const QProcessEnvironment& env) {
        return runCli(args, env, cliToken);
    }
    CliRun run(const QStringList& args) { return run(args, environment()); }
};

QByteArray deploymentsPage(qint64 nowMs) {
    const QByteArray fiveMinutesAgo = QByteArray::number(nowMs - 5 * 60'000 - 30'000);
    const QByteArray threeHoursAgo = QByteArray::number(nowMs - 3 * 3'600'000 - 600'000);
    return R"({"deployments": [
      {"uid": "dpl_1", "name": "storefront", "state": "BUILDING", "readyState": "BUILDING",
       "createdAt": )" +
           fiveMinutesAgo + R"(, "target": "production", "creator": {"uid": "u_1"},
       "meta": {"githubCommitRef": "main", "githubCommitSha": "4f9c2a7be0d1e6f3",
                "githubCommitMessage": "Fix checkout rounding\n\nCloses #412", "githubPrId": null}},
      {"uid": "dpl_2", "name": "docs", "state": "ERROR", "created": )" +
           threeHoursAgo + R"(, "target": null,
       "meta": {"gitlabCommitRef": "feat/search", "gitlabCommitSha": "a1b2c3d",
                "gitlabCommitMessage": "\n\n  Add search page  \nmore"}},
      {"uid": "dpl_3", "name": null, "readyState": "WHATEVER", "meta": {}}
    ], "pagination": {"count": 3, "next": null, "prev": null}})";
}

// A printed line cut at its runs of two or more spaces.
QStringList cells(const QString& line) {
    static const QRegularExpression gap(QStringLiteral("\\s{2,}"));
    return line.split(gap);
}

TEST_F(QuillonCliTest, UserPrintsTheAccountName) {
    server.route(QStringLiteral("/v2/user"), [](const Request&) {
        return Response::chunkedJson(R"({"user":{"uid":"u_1","username":"ana","name":null,
            "email":"ana@acme.dev","defaultTeamId":null,"billing":{"plan":"hobby"}}})");
    });

    const CliRun result = run({QStringLiteral("user")});

    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out, QStringLiteral("ana\n"));
    EXPECT_EQ(result.err, QString());
    ASSERT_EQ(server.requests().size(), 1);
    EXPECT_TRUE(server.requests().first().headerValues("authorization") ==
                QList<QByteArray>{"Bearer " + cliToken.toUtf8()})
        << "the token from VERCEL_TOKEN was not sent as the bearer token";
}

TEST_F(QuillonCliTest, DeploymentsPrintsOneAlignedLinePerDeployment) {
    const qint64 nowMs = QDateTime::currentMSecsSinceEpoch();
    server.route(QStringLiteral("/v6/deployments"),
                 [&](const Request&) { return Response::json(deploymentsPage(nowMs)); });

    const CliRun team =
        run({QStringLiteral("deployments"), QStringLiteral("--team"), QStringLiteral("team_acme")});
    const CliRun personal = run({QStringLiteral("deployments")});

    EXPECT_EQ(team.exitCode, 0) << team.err.toStdString();
    const QStringList lines = team.out.split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 3) << team.out.toStdString();
    EXPECT_EQ(cells(lines[0]), (QStringList{"Building", "storefront", "main", "4f9c2a7",
                                            "Fix checkout rounding", "5 min ago"}));
    EXPECT_EQ(cells(lines[1]), (QStringList{"Failed", "docs", "feat/search", "a1b2c3d",
                                            "Add search page", "3 h ago"}));
    EXPECT_EQ(cells(lines[2]), (QStringList{"No deployment", "-", "-", "-", "-", "-"}));
    // Aligned: every line starts its second column at the same place.
    EXPECT_EQ(lines[0].indexOf(QLatin1String("storefront")),
              lines[1].indexOf(QLatin1String("docs")));
    EXPECT_EQ(personal.out, team.out);

    const QList<Request> sent = server.requestsTo(QStringLiteral("/v6/deployments"));
    ASSERT_EQ(sent.size(), 2);
    using Items = QList<std::pair<QString, QString>>;
    EXPECT_EQ(sent[0].queryItems(), (Items{{"limit", "100"}, {"teamId", "team_acme"}}));
    EXPECT_EQ(sent[1].queryItems(), (Items{{"limit", "100"}}));
}

TEST_F(QuillonCliTest, RejectedTokenIsReportedInTheUsersLanguage) {
    server.route(QStringLiteral("/v2/user"), [](const Request&) {
        return Response::vercelError(401, "unauthorized", "Not authorized");
    });
    server.route(QStringLiteral("/v6/deployments"), [](const Request&) {
        return Response::vercelError(403, "forbidden", "Not authorized");
    });

    const CliRun english = run({QStringLiteral("user")});
    const CliRun french = run({QStringLiteral("deployments")}, environment(QStringLiteral("fr")));

    EXPECT_EQ(english.exitCode, 1);
    EXPECT_EQ(english.out, QString());
    EXPECT_EQ(english.err, QStringLiteral("Token rejected by Vercel. It is invalid or expired.\n"));
    EXPECT_EQ(french.exitCode, 1);
    EXPECT_EQ(french.out, QString());
    EXPECT_EQ(french.err, QStringLiteral("Jeton refusé par Vercel. Il est invalide ou expiré.\n"));
}

TEST_F(QuillonCliTest, UnreachableServerIsReported) {
    QTcpServer closed;
    ASSERT_TRUE(closed.listen(QHostAddress::LocalHost));
    QProcessEnvironment env = environment();
    env.insert(QStringLiteral("QUILLON_API_BASE"),
               QStringLiteral("http://127.0.0.1:%1").arg(closed.serverPort()));
    closed.close();

    const CliRun result = run({QStringLiteral("user")}, env);

    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, QString());
    EXPECT_TRUE(result.err.contains(QLatin1String("refused"), Qt::CaseInsensitive))
        << result.err.toStdString();
}

TEST_F(QuillonCliTest, MissingTokenOrUnsafeAddressSendsNothing) {
    QProcessEnvironment noToken = environment();
    noToken.remove(QStringLiteral("VERCEL_TOKEN"));
    QProcessEnvironment cleartext = environment();
    cleartext.insert(QStringLiteral("QUILLON_API_BASE"), QStringLiteral("http://api.vercel.com"));

    const CliRun withoutToken = run({QStringLiteral("user")}, noToken);
    const CliRun overCleartext = run({QStringLiteral("deployments")}, cleartext);
    const CliRun badArgument = run({QStringLiteral("deployments"), QStringLiteral("--team")});

    EXPECT_EQ(withoutToken.exitCode, 2);
    EXPECT_TRUE(withoutToken.err.contains(QLatin1String("VERCEL_TOKEN")));
    EXPECT_EQ(overCleartext.exitCode, 2);
    EXPECT_TRUE(overCleartext.err.contains(QLatin1String("QUILLON_API_BASE")));
    EXPECT_EQ(badArgument.exitCode, 2);
    EXPECT_TRUE(badArgument.err.contains(QLatin1String("team id")));
    EXPECT_TRUE(server.requests().isEmpty());
}

TEST_F(QuillonCliTest, HelpAndVersionAnswerWithoutTheNetwork) {
    const CliRun help = run({QStringLiteral("--help")});
    const CliRun version = run({QStringLiteral("--version")});
    const CliRun userHelp = run({QStringLiteral("user"), QStringLiteral("--help")});
    const CliRun deploymentsHelp = run({QStringLiteral("deployments"), QStringLiteral("--help")});

    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.out.contains(QLatin1String("deployments [--team ID]")));
    EXPECT_TRUE(help.out.contains(QLatin1String("user")));
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_EQ(version.out, QStringLiteral("quillon-cli " QUILLON_VERSION "\n"));
    EXPECT_EQ(userHelp.exitCode, 0);
    EXPECT_TRUE(userHelp.out.startsWith(QLatin1String("Usage: quillon-cli user")));
    EXPECT_EQ(deploymentsHelp.exitCode, 0);
    EXPECT_TRUE(deploymentsHelp.out.startsWith(QLatin1String("Usage: quillon-cli deployments")));
    EXPECT_TRUE(server.requests().isEmpty());
}

} // namespace
