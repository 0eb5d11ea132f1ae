// quillon-cli run as a separate process against a loopback Vercel account (the demo's report is
// played end to end in tests/demo).
#include "core/common/PreferenceFileWatch.h"
#include "core/common/Preferences.h"
#include "core/monitor/PreferenceCatalog.h"
#include "core/monitor/PreferenceKeys.h"
#include "core/monitor/ProjectMute.h"
#include "support/CliProcess.h"
#include "support/FakeDesktop.h"
#include "support/FakeVercelAccount.h"
#include "support/QtPrinters.h"
#include "support/StopProcess.h"
#include "support/WaitUntil.h"
#include "support/desktop/DunstControl.h"
#include "support/desktop/PrivateDesktop.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using Request = LoopbackHttpServer::Request;
using Response = LoopbackHttpServer::Response;

namespace {

const QString cliToken = QStringLiteral("vc_cli_Qm4rT8zW");

class QuillonCliTest : public ::testing::Test {
protected:
    LoopbackHttpServer server;
    FakeVercelAccount account{server};
    QTemporaryDir home;
    const QProcessEnvironment env =
        isolatedCliEnvironment(cliToken, server.baseUrl().toString(), home.path());

    CliRun run(const QStringList& args, const QProcessEnvironment& environment,
               const QByteArray& input = {}) {
        return runCli(args, environment, cliToken, input);
    }
    CliRun run(const QStringList& args) { return run(args, env); }

    QProcessEnvironment with(const char* name, const char* value) const {
        QProcessEnvironment changed = env;
        if (value)
            changed.insert(QString::fromLatin1(name), QString::fromUtf8(value));
        else
            changed.remove(QString::fromLatin1(name));
        return changed;
    }

    static double minutesAgo(int minutes) {
        return static_cast<double>(QDateTime::currentMSecsSinceEpoch() - minutes * 60'000LL);
    }
    // A deployment as the account lists it, created (and ready) so many minutes ago.
    static QJsonObject deployment(const QString& id, const QString& projectId, const QString& state,
                                  int created, std::optional<int> ready = std::nullopt) {
        return FakeVercelAccount::deployment(id, projectId, state, minutesAgo(created),
                                             ready ? std::optional(minutesAgo(*ready))
                                                   : std::nullopt);
    }
};

// A printed line cut at its runs of two or more spaces.
QStringList cells(const QString& line) {
    static const QRegularExpression gap(QStringLiteral("\\s{2,}"));
    return line.split(gap);
}

TEST_F(QuillonCliTest, UsageErrorsAndHelpSendNothing) {
    struct Case {
        QStringList args;
        QProcessEnvironment environment;
        int exitCode;
        const char* said; // in the output for help, else in the error stream
        QByteArray input = {};
    };
    const QProcessEnvironment noToken = with("VERCEL_TOKEN", nullptr);
    const QList<Case> cases{
        {{}, env, 2, "deployments [--team ID]"},
        {{"--help"}, env, 0, "deployments [--team ID]"},
        {{"--version"}, env, 0, "quillon-cli " QUILLON_VERSION "\n"},
        {{"frobnicate"}, env, 2, "unknown command 'frobnicate'"},
        {{"user", "--help"}, env, 0, "Usage: quillon-cli user"},
        {{"deployments", "--help"}, env, 0, "Usage: quillon-cli deployments"},
        {{"token", "--help"}, env, 0, "token set|status|remove"},
        {{"user"}, noToken, 2, "VERCEL_TOKEN"},
        {{"deployments"}, with("QUILLON_API_BASE", "http://api.vercel.com"), 2, "QUILLON_API_BASE"},
        {{"deployments", "--team"}, env, 2, "team id"},
        {{"watch", "--once"}, noToken, 2, "quillon-cli token set"},
        {{"watch", "--sometimes"}, env, 2, "unexpected argument"},
        {{"report", "api"}, noToken, 2, "quillon-cli token set"},
        {{"report"}, env, 2, "name one project"},
        {{"report", "api", "web"}, env, 2, "name one project"},
        {{"token"}, env, 2, "see token --help"},
        {{"token", "set", cliToken}, env, 2, "see token --help"},
        {{"token", "set"}, env, 2, "no token on standard input", " \n\t\n"},
        {{"redeploy", "--help"}, env, 0, "Usage: quillon-cli redeploy PROJECT [--yes]"},
        {{"cancel", "api", "web", "--yes"}, env, 2, "name one project"},
        {{"wait", "--help"}, env, 0, "--timeout DURATION"},
        {{"wait", "--timeout", "0"}, env, 2, "--timeout takes a duration"},
        {{"wait", "--commit", "4f2a9c"}, env, 2, "--commit takes a commit hash"},
        {{"wait", "--project"}, env, 2, "--project takes"},
        {{"wait", "--json", "web"}, env, 2, "unexpected argument 'web'"},
        {{"wait", "--commit", "4f2a9c1"}, noToken, 2, "quillon-cli token set"},
    };
    for (const Case& c : cases) {
        const CliRun result = run(c.args, c.environment, c.input);
        SCOPED_TRACE(c.args.join(' ').toStdString());
        EXPECT_EQ(result.exitCode, c.exitCode);
        EXPECT_TRUE((c.exitCode == 0 ? result.out : result.err).contains(QString::fromUtf8(c.said)))
            << result.out.toStdString() << result.err.toStdString();
    }
    EXPECT_TRUE(server.requests().isEmpty());
}

TEST_F(QuillonCliTest, UserAndDeploymentsPrintWhatVercelAnswers) {
    const QByteArray fiveMinutesAgo = QByteArray::number(qint64(minutesAgo(5)) - 30'000);
    const QByteArray threeHoursAgo = QByteArray::number(qint64(minutesAgo(190)));
    const QByteArray page = R"({"deployments": [
      {"uid": "dpl_1", "name": "storefront", "state": "BUILDING", "readyState": "BUILDING",
       "createdAt": )" + fiveMinutesAgo +
                            R"(, "target": "production", "creator": {"uid": "u_1"},
       "meta": {"githubCommitRef": "main", "githubCommitSha": "4f9c2a7be0d1e6f3",
                "githubCommitMessage": "Fix checkout rounding\n\nCloses #412", "githubPrId": null}},
      {"uid": "dpl_2", "name": "docs", "state": "ERROR", "created": )" +
                            threeHoursAgo + R"(,
       "target": null, "meta": {"gitlabCommitRef": "feat/search", "gitlabCommitSha": "a1b2c3d",
                                "gitlabCommitMessage": "\n\n  Add search page  \nmore"}},
      {"uid": "dpl_3", "name": null, "readyState": "WHATEVER", "meta": {}}
    ], "pagination": {"count": 3, "next": null, "prev": null}})";
    server.route("/v6/deployments", [&](const Request&) { return Response::json(page); });

    const CliRun user = run({"user"});
    ASSERT_EQ(user.exitCode, 0);
    EXPECT_EQ(user.out, "ada\n");
    EXPECT_EQ(user.err, "");
    EXPECT_TRUE(server.requests().first().headerValues("authorization") ==
                QList<QByteArray>{"Bearer " + cliToken.toUtf8()})
        << "the token from VERCEL_TOKEN was not sent as the bearer token";

    const CliRun team = run({"deployments", "--team", "team_acme"});
    const CliRun personal = run({"deployments"});
    EXPECT_EQ(team.exitCode, 0) << team.err.toStdString();
    const QStringList lines = team.out.split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 3) << team.out.toStdString();
    EXPECT_EQ(cells(lines[0]), (QStringList{"Building", "storefront", "main", "4f9c2a7",
                                            "Fix checkout rounding", "5 min ago"}));
    EXPECT_EQ(cells(lines[1]), (QStringList{"Failed", "docs", "feat/search", "a1b2c3d",
                                            "Add search page", "3 h ago"}));
    EXPECT_EQ(cells(lines[2]), (QStringList{"State WHATEVER", "-", "-", "-", "-", "-"}));
    // Aligned: every line starts its second column at the same place.
    EXPECT_EQ(lines[0].indexOf("storefront"), lines[1].indexOf("docs"));
    EXPECT_EQ(personal.out, team.out);
    const QList<Request> sent = server.requestsTo("/v6/deployments");
    ASSERT_EQ(sent.size(), 2);
    using Items = QList<std::pair<QString, QString>>;
    EXPECT_EQ(sent[0].queryItems(), (Items{{"limit", "100"}, {"teamId", "team_acme"}}));
    EXPECT_EQ(sent[1].queryItems(), (Items{{"limit", "100"}}));
}

TEST_F(QuillonCliTest, ARejectedTokenEndsEveryCommandInTheUsersLanguage) {
    account.failures.insert("/v2/user", Response::vercelError(401, "unauthorized", "no"));
    account.failures.insert("/v6/deployments", Response::vercelError(403, "forbidden", "no"));
    const QString sentence = QStringLiteral("Token rejected by Vercel. It is invalid or expired.");
    for (const QStringList& args : {QStringList{"user"}, QStringList{"deployments"},
                                    QStringList{"watch"}, QStringList{"report", "api"},
                                    QStringList{"wait", "--commit", "4f2a9c1", "--project=a"}}) {
        const CliRun result = run(args);
        EXPECT_EQ(result.exitCode, 1) << args.join(' ').toStdString();
        EXPECT_EQ(result.out, "");
        EXPECT_TRUE(result.err.trimmed().endsWith(sentence)) << result.err.toStdString();
    }
    QProcessEnvironment fr = with("LANGUAGE", "fr");
    fr.insert(QStringLiteral("LC_ALL"), QStringLiteral("fr_FR.UTF-8"));
    const CliRun french = run({"deployments"}, fr);
    EXPECT_EQ(french.err, "Jeton refusé par Vercel. Il est invalide ou expiré.\n");
}

TEST_F(QuillonCliTest, WatchOncePrintsOnePassWithTwoRequestsPerScope) {
    account.addTeam("team_1", "acme");
    account.addProject("", "p_web", "web");
    account.addProject("team_1", "p_api", "api");
    account.addDeployment("", deployment("dpl_1", "p_web", "BUILDING", 2));
    account.addDeployment("team_1", deployment("dpl_2", "p_api", "READY", 2 * 1440, 2 * 1440 - 1));
    const CliRun result = run({"watch", "--once"});
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    const QStringList lines = result.out.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 3) << result.out.toStdString();
    // Just after midnight the build started yesterday and today's count is still 0.
    const bool startedToday =
        QDateTime::fromMSecsSinceEpoch(qint64(minutesAgo(2))).date() == QDate::currentDate();
    EXPECT_TRUE(lines[0].endsWith(
        QStringLiteral("] building · 1 building · today %1").arg(startedToday ? 1 : 0)))
        << lines[0].toStdString();
    EXPECT_EQ(lines[1], "  Building  web  main  4f2a9c1  Fix login  2 min ago");
    EXPECT_EQ(lines[2], "  Live  api  main  4f2a9c1  Fix login  2 d ago");
    EXPECT_EQ(account.requestCount("/v9/projects"), 2 + 2); // project list, then one pass
    EXPECT_EQ(account.requestCount("/v6/deployments"), 2);
}

// What a status bar reads: one JSON object per line, for the demo and for a real account.
TEST_F(QuillonCliTest, WatchJsonGivesOneParsableObjectPerPass) {
    account.addProject("", "p_web", "web");
    account.addDeployment("", deployment("dpl_1", "p_web", "ERROR", 3, 1));
    const CliRun live = run({"watch", "--once", "--json"});
    const CliRun demo = run({"watch", "--json", "--once"}, with("QUILLON_DEMO", "1"));

    ASSERT_EQ(live.exitCode, 0) << live.err.toStdString();
    ASSERT_EQ(live.out.count('\n'), 1) << live.out.toStdString();
    QJsonParseError error;
    const QJsonObject pass = QJsonDocument::fromJson(live.out.toUtf8(), &error).object();
    ASSERT_EQ(error.error, QJsonParseError::NoError);
    EXPECT_EQ(pass["tone"], "error");
    const bool today =
        QDateTime::fromMSecsSinceEpoch(qint64(minutesAgo(3))).date() == QDate::currentDate();
    EXPECT_EQ(pass["todayCount"].toInt(-1), today ? 1 : 0);
    const QJsonObject web = pass["projects"].toArray().at(0).toObject();
    EXPECT_EQ(web["id"], "p_web");
    EXPECT_EQ(web["status"], "error");
    EXPECT_EQ(web["shortHash"], "4f2a9c1");
    EXPECT_NEAR(web["ageSeconds"].toDouble(), 180, 30);
    EXPECT_TRUE(web["url"].toString().startsWith("https://vercel.com/"));

    // The demo needs no account and no network, and links nowhere.
    ASSERT_EQ(demo.exitCode, 0);
    const QJsonObject demoPass = QJsonDocument::fromJson(demo.out.toUtf8()).object();
    EXPECT_EQ(demoPass["projects"].toArray().size(), 6);
    EXPECT_TRUE(demoPass["projects"].toArray().at(0).toObject()["url"].isNull());
    EXPECT_EQ(account.requestCount("/v2/user"), 1);
}

// Real accounts: many pages of projects and deployments, a team that wants SAML, a rate limit.
TEST_F(QuillonCliTest, ListingsPageThroughAndWatchSaysWhatKeepsATeamOrVercelBack) {
    account.addSamlTeam("team_saml", "acme", "Acme Team");
    for (int i = 0; i < 250; ++i)
        account.addProject("", QStringLiteral("p_%1").arg(i), QStringLiteral("app-%1").arg(i));
    const double now = static_cast<double>(QDateTime::currentMSecsSinceEpoch());
    int today = 0;
    for (int i = 0; i < 130; ++i) {
        const double created = now - 1000.0 * (i + 1);
        today += QDateTime::fromMSecsSinceEpoch(qint64(created)).date() == QDate::currentDate();
        account.addDeployment("", FakeVercelAccount::deployment(QStringLiteral("d_%1").arg(i),
                                                                "p_1", "READY", created, created));
    }
    const QString saml = "Acme Team requires SAML sign-in: sign in on vercel.com.\n";

    const CliRun projects = run({"projects"});
    ASSERT_EQ(projects.exitCode, 0) << projects.err.toStdString();
    const QStringList listed = projects.out.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(listed.size(), 250);
    EXPECT_EQ(cells(listed.first()), (QStringList{"x", "app-0", "ada", "p_0"}));
    EXPECT_EQ(projects.err, saml);

    const CliRun deployments = run({"deployments"});
    ASSERT_EQ(deployments.exitCode, 0) << deployments.err.toStdString();
    EXPECT_GE(deployments.out.count('\n'), std::max(today, 100));

    const CliRun watch = run({"watch", "--once"});
    ASSERT_EQ(watch.exitCode, 0) << watch.err.toStdString();
    EXPECT_EQ(watch.err, saml);
    EXPECT_TRUE(watch.out.contains(QStringLiteral(" · today %1").arg(today)))
        << watch.out.toStdString();

    // Three requests a minute: the project list meets a 429, and everything after it waits.
    account.rateLimit =
        FakeVercelAccount::RateLimit{3, [] { return QDateTime::currentDateTime(); }};
    const CliRun limited = run({"watch", "--once"});
    ASSERT_EQ(limited.exitCode, 0) << limited.err.toStdString();
    EXPECT_TRUE(limited.err.contains("Vercel asked Quillon to slow down."))
        << limited.err.toStdString();
    EXPECT_EQ(account.rateLimitedCount(), 1);
}

// The report itself is checked byte for byte in core; here, that the command finds the project,
// by name or id, and its cleaned log.
TEST_F(QuillonCliTest, ReportPrintsTheLatestDeploymentsReportOrSaysWhyNot) {
    account.addTeam("team_1", "acme");
    account.addProject("team_1", "p_api", "api");
    account.addProject("team_1", "p_new", "fresh");
    account.addDeployment("team_1", deployment("dpl_9", "p_api", "ERROR", 3, 1));
    account.events.insert(
        "dpl_9",
        QJsonArray{
            QJsonObject{{"type", "stdout"}, {"text", "Cloning github.com/acme/api"}},
            QJsonObject{{"type", "command"}, {"payload", QJsonObject{{"text", "next build"}}}},
            QJsonObject{{"type", "stderr"},
                        {"text", "\x1b[31mType error: Property 'customerId'\x1b[39m"}},
            QJsonObject{{"type", "delimiter"}}});

    const CliRun byName = run({"report", "api"});
    ASSERT_EQ(byName.exitCode, 0) << byName.err.toStdString();
    EXPECT_EQ(byName.err, "");
    EXPECT_TRUE(byName.out.startsWith("# Vercel deployment failed: api\n"));
    EXPECT_TRUE(byName.out.contains("Dashboard: https://vercel.com/acme/api/9\n"));
    EXPECT_TRUE(byName.out.contains("```\nCloning github.com/acme/api\nnext build\n"
                                    "Type error: Property 'customerId'\n```\n"))
        << byName.out.toStdString();
    account.events.clear();
    const CliRun byId = run({"report", "p_api"});
    EXPECT_TRUE(byId.out.contains("\n```\n(log unavailable)\n```\n")) << byId.out.toStdString();

    const CliRun unknown = run({"report", "shop"});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_EQ(unknown.out, "");
    EXPECT_TRUE(unknown.err.startsWith("quillon-cli report: no monitored project is named 'shop'"))
        << unknown.err.toStdString();
    EXPECT_TRUE(unknown.err.contains("fresh") && unknown.err.contains("api"));
    const CliRun fresh = run({"report", "fresh"});
    EXPECT_EQ(fresh.exitCode, 1);
    EXPECT_EQ(fresh.err, "quillon-cli report: fresh has no deployment yet\n");
}

} // namespace

// A terminal is asked first; a script must say --yes, and without it nothing is sent.
TEST_F(QuillonCliTest, RedeployAndCancelAskAtATerminalAndNeedYesElsewhere) {
    account.addTeam("team_acme", "acme");
    account.addProject("", "p_web", "web");
    account.addProject("team_acme", "p_api", "api");
    account.addDeployment("", deployment("dpl_web1", "p_web", "BUILDING", 2));
    QJsonObject failed = deployment("dpl_api1", "p_api", "ERROR", 10, 8);
    failed.insert("target", "production");
    account.addDeployment("team_acme", failed);
    {
        // api is not monitored: its latest deployment is asked of Vercel.
        Preferences stored(home.filePath("config/quillon/preferences.json"));
        stored.setStringList(PreferenceKeys::monitoredProjectIDs, {"p_web"});
        stored.setBoolean(PreferenceKeys::projectsConfigured, true);
    }
    const auto writes = [&] {
        QStringList sent;
        for (const Request& request : server.requests()) {
            if (request.method != "GET")
                sent << request.method + ' ' + request.path + '?' + request.rawQuery;
        }
        return sent;
    };
    // At a terminal (script(1) gives the command one), answered "n" and then "y".
    const auto atTerminal = [&](const char* command, const QByteArray& answer) {
        const QString line = QStringLiteral(QUILLON_CLI_PATH) + ' ' + QString::fromLatin1(command);
        return runCli({"-qec", line, "/dev/null"}, env, cliToken, answer, 0, "/usr/bin/script");
    };

    const CliRun refused = run({"redeploy", "api"});
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_EQ(refused.err,
              "quillon-cli redeploy: not at a terminal: add --yes to confirm. Nothing was sent.\n");
    EXPECT_TRUE(server.requests().isEmpty());
    const CliRun declined = atTerminal("cancel web", "n\n");
    EXPECT_EQ(declined.exitCode, 1);
    EXPECT_TRUE(declined.out.contains("Cancel the Preview deployment of web? Commit “Fix login” "
                                      "(4f2a9c1) on main. [y/N]"))
        << declined.out.toStdString();
    EXPECT_TRUE(declined.out.contains("Nothing was sent."));
    EXPECT_TRUE(writes().isEmpty());

    const CliRun redeployed = run({"redeploy", "api", "--yes"});
    EXPECT_EQ(redeployed.exitCode, 0) << redeployed.err.toStdString();
    EXPECT_EQ(redeployed.out,
              "api: redeploy started. dpl_redeploy1 https://dpl_redeploy1.vercel.app\n");
    const QList<Request> listed = server.requestsTo("/v6/deployments");
    EXPECT_TRUE(std::any_of(listed.begin(), listed.end(), [](const Request& request) {
        return request.queryItems() == QList<std::pair<QString, QString>>{{"limit", "1"},
                                                                          {"projectId", "p_api"},
                                                                          {"teamId", "team_acme"}};
    }));
    const CliRun canceled = atTerminal("cancel p_web", "y\n");
    EXPECT_EQ(canceled.exitCode, 0) << canceled.out.toStdString();
    EXPECT_TRUE(canceled.out.contains("web: build dpl_web1 canceled."))
        << canceled.out.toStdString();
    EXPECT_EQ(writes(), QStringList({"POST /v13/deployments?forceNew=1&teamId=team_acme",
                                     "PATCH /v12/deployments/dpl_web1/cancel?"}));

    // Refusals: nothing left to cancel, a team closed to writes; each says why and exits 1.
    const CliRun nothing = run({"cancel", "web", "--yes"});
    EXPECT_EQ(nothing.exitCode, 1);
    EXPECT_EQ(nothing.err, "The latest deployment is not building: there is nothing to cancel.\n");
    account.readOnlyTeams.insert("team_acme");
    const CliRun forbidden = run({"cancel", "api", "--yes"});
    EXPECT_EQ(forbidden.exitCode, 1);
    EXPECT_EQ(forbidden.err, "Not allowed: this token may not change the deployments of this "
                             "team or project.\n");
    EXPECT_EQ(forbidden.out, "");
    EXPECT_EQ(writes().size(), 3);
}

TEST_F(QuillonCliTest, MuteUnmuteAndMutesKeepTheMutesInThePreferences) {
    account.addTeam("team_1", "acme");
    account.addProject("", "p_web", "web");
    account.addProject("", "p_api", "api");
    account.addProject("team_1", "p_api2", "api");
    const QString stored = home.filePath("config/quillon/preferences.json");
    const QDateTime before = QDateTime::currentDateTime();

    // Muted again, the new length replaces the old one.
    for (const auto& [length, seconds] : {std::pair("45m", 45 * 60), std::pair("2h", 7200)}) {
        const CliRun web = run({"mute", "web", "--for", length});
        ASSERT_EQ(web.exitCode, 0) << web.err.toStdString();
        EXPECT_TRUE(web.out.startsWith("web: Muted until ")) << web.out.toStdString();
        const ProjectMute kept = MuteStore::read(Preferences(stored)).value("p_web");
        EXPECT_EQ(kept.name, "web");
        ASSERT_TRUE(kept.until);
        EXPECT_NEAR(before.secsTo(*kept.until), seconds, 60) << length;
    }

    const CliRun twice = run({"mute", "api"});
    EXPECT_EQ(twice.exitCode, 1);
    EXPECT_TRUE(twice.err.contains("several projects are named 'api': "));
    EXPECT_TRUE(twice.err.contains("p_api (ada)") && twice.err.contains("p_api2 (acme)"))
        << twice.err.toStdString();
    const CliRun byId = run({"mute", "p_api2", "--until-tomorrow"});
    EXPECT_EQ(byId.exitCode, 0) << byId.err.toStdString();
    EXPECT_EQ(byId.out, "api: Muted until tomorrow\n");
    const CliRun unknown = run({"mute", "blog"});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_TRUE(unknown.err.contains("no project is named 'blog'")) << unknown.err.toStdString();

    const int requests = int(server.requests().size());
    const QList<QStringList> misuses{{"mute"},
                                     {"mute", "web", "--for"},
                                     {"mute", "web", "--for", "0h"},
                                     {"mute", "web", "--for", "31d"},
                                     {"mute", "web", "--for", "1 h"},
                                     {"mute", "web", "--for", "1h", "--until-tomorrow"},
                                     {"unmute"},
                                     {"mutes", "web"}};
    for (const QStringList& args : misuses) {
        const CliRun result = run(args);
        EXPECT_EQ(result.exitCode, 2) << args.join(' ').toStdString();
        EXPECT_FALSE(result.err.isEmpty());
    }
    EXPECT_EQ(server.requests().size(), requests); // refused before asking Vercel

    // Listed by name, without asking Vercel.
    const CliRun listed = run({"mutes"}, with("QUILLON_API_BASE", "http://127.0.0.1:9"));
    ASSERT_EQ(listed.exitCode, 0) << listed.err.toStdString();
    const QStringList lines = listed.out.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 2) << listed.out.toStdString();
    EXPECT_EQ(lines[0], "api  p_api2  Muted until tomorrow");
    EXPECT_TRUE(lines[1].startsWith("web  p_web  Muted until "));

    const CliRun unmuted = run({"unmute", "web"});
    EXPECT_EQ(unmuted.exitCode, 0);
    EXPECT_EQ(unmuted.out, "web: notifications back on\n");
    EXPECT_EQ(run({"unmute", "web"}).exitCode, 1);
    QProcessEnvironment fr = with("LANGUAGE", "fr");
    fr.insert(QStringLiteral("LC_ALL"), QStringLiteral("fr_FR.UTF-8"));
    const CliRun french = run({"unmute", "api"}, fr);
    EXPECT_EQ(french.out, "api : notifications réactivées\n");
    EXPECT_EQ(run({"mutes"}).out, "No project is muted.\n");
    EXPECT_FALSE(Preferences(stored).contains(PreferenceKeys::mutedProjects));
}

TEST_F(QuillonCliTest, GetAndSetCheckEveryValueAndStoreNothingWrong) {
    const QString stored = home.filePath("config/quillon/preferences.json");
    EXPECT_EQ(run({"get", "notifyOnlyMine"}).out, "false\n"); // the default, nothing stored
    EXPECT_EQ(run({"get", "notifyOnFailure"}).out, "true\n");
    EXPECT_EQ(run({"get", "colorError"}).out, "#FF0074\n");
    EXPECT_EQ(run({"get", "colorError"}, with("QUILLON_ERROR_COLOR", "#00FF00")).out, "#00FF00\n");

    struct Case {
        QStringList args;
        QString stored; // the key's value read back with get
    };
    const QList<Case> accepted{
        {{"set", "notifyOnlyMine", "true"}, "true"},
        {{"set", "ignoreBotBranches", "true"}, "true"},
        {{"set", "notifyWhenFixed", "true"}, "true"},
        {{"set", "notifyProductionOnly", "true"}, "true"},
        {{"set", "liveActivity", "false"}, "false"},
        {{"set", "refreshInterval", "60"}, "60"},
        {{"set", "appLanguage", "en"}, "en"},
        {{"set", "colorSuccess", "  0cf1e9"}, "#0CF1E9"},
        {{"set", "SUEnableAutomaticChecks", "false"}, "false"},
    };
    for (const Case& c : accepted) {
        const CliRun set = run(c.args);
        EXPECT_EQ(set.exitCode, 0) << c.args.join(' ').toStdString() << set.err.toStdString();
        EXPECT_EQ(run({"get", c.args[1]}).out, c.stored + "\n") << c.args[1].toStdString();
    }
    EXPECT_EQ(Preferences(stored).boolean(PreferenceKeys::notifyOnlyMine), true);
    EXPECT_EQ(Preferences(stored).integer(PreferenceKeys::refreshInterval), 60);

    const QByteArray before = [&] {
        QFile file(stored);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }();
    const QList<std::pair<QStringList, QString>> refused{
        {{"set", "notifyOnlyMine", "yes"}, "notifyOnlyMine takes true or false."},
        {{"set", "refreshInterval", "5"}, "refreshInterval takes whole seconds from 10 to 3600."},
        {{"set", "refreshInterval", "60s"}, "whole seconds"},
        {{"set", "appLanguage", "de"}, "appLanguage takes auto, en or fr."},
        {{"set", "colorError", "red"}, "colorError takes a colour written #RRGGBB."},
        {{"set", "monitoredProjectIDs", "p_1"}, "Settings › Vercel"},
        {{"set", "mutedProjects", "p_1"}, "quillon-cli mute"},
        {{"set", "tokens", "x"}, "unknown preference 'tokens'"},
        {{"get", "tokens"}, "unknown preference 'tokens'"},
        {{"set", "notifyOnlyMine"}, "name one preference and its value"},
    };
    for (const auto& [args, said] : refused) {
        const CliRun result = run(args);
        EXPECT_EQ(result.exitCode, 2) << args.join(' ').toStdString();
        EXPECT_TRUE(result.err.contains(said)) << result.err.toStdString();
    }
    QFile after(stored);
    ASSERT_TRUE(after.open(QIODevice::ReadOnly));
    EXPECT_EQ(after.readAll(), before);

    QProcessEnvironment fr = with("LANGUAGE", "fr");
    fr.insert(QStringLiteral("LC_ALL"), QStringLiteral("fr_FR.UTF-8"));
    run({"set", "appLanguage", "auto"});
    EXPECT_EQ(run({"set", "notifyOnlyMine", "oui"}, fr).err,
              "quillon-cli set: notifyOnlyMine prend true ou false.\n");
    // Every key, one a line, with its value.
    const QStringList all = run({"get"}).out.split('\n', Qt::SkipEmptyParts);
    EXPECT_TRUE(all.contains("notifyOnlyMine true"));
    EXPECT_TRUE(all.contains("colorQueued #C05BEC"));
    EXPECT_EQ(all.size(), PreferenceCatalog::entries().size());
}

// What the commands store reaches an engine that is running, as it reaches the tray.
TEST_F(QuillonCliTest, ARunningEngineFollowsWhatTheCommandsStore) {
    account.addProject("", "p_web", "web");
    const QString path = home.filePath("config/quillon/preferences.json");
    FakeDesktop desktop;
    Preferences shared(path);
    AppState state(AppState::Services{shared, desktop.keychain, desktop.loginItem,
                                      desktop.notifications, desktop.clipboard, desktop.clock,
                                      server.baseUrl()});
    PreferenceFileWatch watch(path);
    QObject::connect(&watch, &PreferenceFileWatch::changed, &state, &AppState::reloadPreferences);
    QSignalSpy announced(&state, &AppState::preferencesChanged);

    ASSERT_EQ(run({"set", "notifyOnlyMine", "true"}).exitCode, 0);
    ASSERT_TRUE(waitUntil([&] { return state.notifyOnlyMine(); }));
    ASSERT_EQ(run({"mute", "web"}).exitCode, 0);
    ASSERT_TRUE(waitUntil([&] { return state.activeMute("p_web").has_value(); }));
    ASSERT_EQ(run({"unmute", "web"}).exitCode, 0);
    ASSERT_TRUE(waitUntil([&] { return !state.activeMute("p_web"); }));
    const int changes = int(announced.count());
    // The engine's own writes reach the commands, and reading them back changes nothing.
    state.setNotifyWhenFixed(true);
    EXPECT_EQ(run({"get", "notifyWhenFixed"}).out, "true\n");
    waitUntil([] { return false; }, 200);
    EXPECT_EQ(announced.count(), changes + 1);
}

// `watch` posts to the desktop what the mutes and switches let through, following changes made
// while it runs: on a private bus with dunst.
TEST_F(QuillonCliTest, WatchNotifiesOnlyWhatTheMutesAndSwitchesLetThrough) {
    PrivateDesktop desktop;
    for (auto start :
         {&PrivateDesktop::startDisplay, &PrivateDesktop::startBus, &PrivateDesktop::startDunst}) {
        const std::optional<QString> failure = (desktop.*start)();
        ASSERT_FALSE(failure) << failure->toStdString();
    }
    const auto shaped = [](const QString& id, const QString& project, const char* state,
                           bool production) {
        QJsonObject made = deployment(id, project, state, 1, 0);
        if (QByteArray(state) == "BUILDING")
            made.insert("ready", QJsonValue());
        if (production)
            made.insert("target", "production");
        return made;
    };
    for (const char* name : {"web", "api", "docs"})
        account.addProject("", QStringLiteral("p_") + name, name);
    const auto all = [&](const char* state) {
        account.deployments[""] =
            QJsonArray{shaped("dpl_w", "p_web", state, true), shaped("dpl_a", "p_api", state, true),
                       shaped("dpl_d", "p_docs", state, false)};
    };
    all("BUILDING");
    for (const QStringList& set :
         {QStringList{"refreshInterval", "10"}, QStringList{"notifyProductionOnly", "true"},
          QStringList{"notifyWhenFixed", "true"}})
        ASSERT_EQ(run(QStringList{"set"} + set).exitCode, 0);

    QProcessEnvironment watching = env;
    watching.insert("DBUS_SESSION_BUS_ADDRESS", desktop.busAddress());
    QProcess watch;
    watch.setProcessEnvironment(watching);
    watch.start(QStringLiteral(QUILLON_CLI_PATH), {"watch"});
    QString printed;
    const auto waitForOutput = [&](const QString& text) {
        return waitUntil(
            [&] {
                printed += QString::fromUtf8(watch.readAllStandardOutput());
                return printed.contains(text);
            },
            30000);
    };
    ASSERT_TRUE(waitForOutput("  Building  web")) << watch.readAllStandardError().toStdString();
    // Muted while `watch` runs.
    ASSERT_EQ(run({"mute", "web"}).exitCode, 0);

    all("ERROR");
    ASSERT_TRUE(waitForOutput("3 failed")) << printed.toStdString();
    DunstControl dunst(desktop.connection());
    ASSERT_TRUE(waitUntil([&] { return dunst.displayed() == 1; }));
    account.deployments[""] = QJsonArray{shaped("dpl_w", "p_web", "ERROR", true),
                                         shaped("dpl_a2", "p_api", "READY", true),
                                         shaped("dpl_d", "p_docs", "ERROR", false)};
    ASSERT_TRUE(waitForOutput("2 failed")) << printed.toStdString();
    ASSERT_TRUE(waitUntil([&] { return dunst.displayed() == 2; }));
    stopProcess(watch);
    ASSERT_TRUE(dunst.closeAll());
    QStringList summaries;
    for (const QVariantMap& shown : dunst.history())
        summaries << shown.value("summary").toString();
    summaries.sort();
    EXPECT_EQ(summaries, QStringList({"api is live again", "api: deployment failed"}));
}
