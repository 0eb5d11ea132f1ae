// A recognisable token goes through every path that handles it (the command-line tool against a
// private keyring, and the application's connect, refresh, report and failure paths in process),
// then every output, file, clipboard text, notification, request and command line is searched
// for it. The only place it may appear is the Authorization header.
#include "core/monitor/StatusJson.h"
#include "platform/XdgAutostart.h"
#include "support/CliProcess.h"
#include "support/EngineFixture.h"
#include "support/desktop/PrivateDesktop.h"

#include <QDirIterator>
#include <QFile>
#include <QRandomGenerator>
#include <csignal>

using namespace std::chrono_literals;
using Response = LoopbackHttpServer::Response;

namespace {

QString recognisableToken() {
    return QStringLiteral("tok_HYGIENE_%1%2")
        .arg(QRandomGenerator::global()->generate(), 8, 16, QLatin1Char('0'))
        .arg(QRandomGenerator::global()->generate(), 8, 16, QLatin1Char('0'));
}

QByteArray fileBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Collects where the token showed, by place name only, so a failure never prints the token.
class TokenSearch {
public:
    explicit TokenSearch(QString token) : token_(std::move(token)) {}

    void bytes(const QString& where, const QByteArray& bytes) {
        ++searched_;
        if (bytes.contains(token_.toUtf8()))
            found_ << where;
    }
    void text(const QString& where, const QString& text) { bytes(where, text.toUtf8()); }

    // Every file under `dir`, whatever wrote it.
    void tree(const QString& where, const QString& dir) {
        QDirIterator files(dir, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString path = files.next();
            bytes(where + QDir(dir).relativeFilePath(path), fileBytes(path));
        }
    }

    // The token belongs in the Authorization header, and nowhere else of a request.
    void requests(const QList<LoopbackHttpServer::Request>& requests) {
        for (const LoopbackHttpServer::Request& request : requests) {
            const QString where = QStringLiteral("request to ") + request.path;
            bytes(where + QStringLiteral(" (target)"), request.path.toUtf8() + request.rawQuery);
            bytes(where + QStringLiteral(" (body)"), request.body);
            for (const auto& [name, value] : request.headers) {
                if (name.compare("authorization", Qt::CaseInsensitive) == 0)
                    authorized_ += value == "Bearer " + token_.toUtf8();
                else
                    bytes(where + QStringLiteral(" (header ") + name + ')', value);
            }
        }
    }

    const QStringList& found() const { return found_; }
    int searched() const { return searched_; }
    // Requests that carried the token as they should: proof it was really in use.
    int authorized() const { return authorized_; }

private:
    QString token_;
    QStringList found_;
    int searched_ = 0;
    int authorized_ = 0;
};

// Two projects; api's build log says why it failed.
void addAccount(FakeVercelAccount& account) {
    account.addProject("", "p_api", "api");
    account.addProject("", "p_web", "web");
    account.events.insert(
        "dpl_fail",
        QJsonArray{
            QJsonObject{{"type", "command"}, {"payload", QJsonObject{{"text", "next build"}}}},
            QJsonObject{{"type", "stderr"}, {"text", "\x1b[31mType error: customerId\x1b[39m"}}});
}

// api's latest deployment in `apiState`, web building.
QJsonArray deployments(double startedMs, const QString& apiState) {
    const bool done = apiState == QLatin1String("ERROR");
    return {FakeVercelAccount::deployment("dpl_fail", "p_api", apiState, startedMs,
                                          done ? std::optional(startedMs + 60'000) : std::nullopt),
            FakeVercelAccount::deployment("dpl_run", "p_web", "BUILDING", startedMs)};
}

class CliTokenHygiene : public ::testing::Test {
protected:
    void SetUp() override {
        std::optional<QString> failure = desktop.startBus();
        if (!failure)
            failure = desktop.startKeyring();
        ASSERT_FALSE(failure) << failure->toStdString();
        env = desktop.environment();
        env.insert("QUILLON_API_BASE", server.baseUrl().toString());
        // Every debug category of Qt too: networking must not log the header either.
        env.insert("QT_LOGGING_RULES", "*.debug=true");
        env.remove("VERCEL_TOKEN");
    }

    // Runs quillon-cli to its end, which checks what it printed; `stop` (a signal) ends it once
    // it has printed something. Its command line is searched here.
    CliRun run(const QStringList& args, const QProcessEnvironment& environment,
               const QByteArray& input = {}, int stop = 0) {
        const CliRun result = runCli(args, environment, token, input, stop);
        searchFor.bytes(args.join(' ') + QStringLiteral(": /proc/PID/cmdline"), result.cmdline);
        return result;
    }

    const QString token = recognisableToken();
    TokenSearch searchFor{token};
    PrivateDesktop desktop;
    LoopbackHttpServer server;
    FakeVercelAccount account{server};
    QProcessEnvironment env;
};

} // namespace

TEST_F(CliTokenHygiene, NoOutputFileRequestTargetOrCommandLineHoldsTheToken) {
    addAccount(account);
    account.deployments[""] =
        deployments(double(QDateTime::currentMSecsSinceEpoch() - 300'000), "ERROR");
    QProcessEnvironment withToken = env;
    withToken.insert("VERCEL_TOKEN", token);

    ASSERT_EQ(run({"token", "set"}, env, token.toUtf8() + '\n').exitCode, 0);
    run({"token", "status"}, env);
    // From the keyring: the commands that run the engine.
    EXPECT_TRUE(run({"watch", "--once"}, env).out.contains("Failed  api"));
    run({"watch", "--once", "--json"}, env);
    EXPECT_TRUE(run({"report", "api"}, env).out.contains("Type error: customerId"));
    // From the environment: the commands that call the API alone.
    EXPECT_EQ(run({"user"}, withToken).out, "ada\n");
    run({"deployments"}, withToken);
    // A running watch killed by a crash signal prints whatever the crash prints.
    EXPECT_TRUE(run({"watch"}, env, {}, SIGSEGV).crashed);
    EXPECT_TRUE(run({"watch", "--json"}, withToken, {}, SIGABRT).crashed);

    account.failures.insert("/v6/deployments", Response::vercelError(500, "internal", "Boom"));
    run({"deployments"}, withToken);
    run({"watch", "--once"}, env);
    account.failures.insert("/v2/user", Response::vercelError(403, "forbidden", "Not authorized"));
    EXPECT_EQ(run({"watch"}, env).exitCode, 1);
    run({"user"}, withToken);
    run({"report", "api"}, env);

    searchFor.requests(server.requests());
    // Preferences, the autostart folder, caches, the keyring's own file: the whole private home.
    searchFor.tree(QStringLiteral("file ~/"), desktop.home());
    EXPECT_GE(searchFor.authorized(), 20);
    EXPECT_GE(searchFor.searched(), 60);
    EXPECT_EQ(searchFor.found(), QStringList()) << "the token showed in these places";
}

namespace {

// The application's engine with the real autostart entry, in a private folder.
class AppTokenHygiene : public EngineFixture {
protected:
    void SetUp() override {
        makeState(
            {*prefs, keychain, autostart, notifications, clipboard, clock, server.baseUrl(), 3s});
        messages().clear();
        previousHandler = qInstallMessageHandler(&AppTokenHygiene::record);
    }
    void TearDown() override {
        qInstallMessageHandler(previousHandler);
        EngineFixture::TearDown();
    }

    static void record(QtMsgType, const QMessageLogContext&, const QString& message) {
        messages() << message;
    }
    static QStringList& messages() {
        static QStringList all;
        return all;
    }

    QTemporaryDir autostartDir;
    XdgAutostart autostart{QStringLiteral("/usr/bin/quillon"), autostartDir.path()};
    QtMessageHandler previousHandler = nullptr;
};

} // namespace

TEST_F(AppTokenHygiene, ConnectRefreshReportAndFailuresKeepTheTokenToTheHeader) {
    const QString token = recognisableToken();
    TokenSearch searchFor(token);
    addAccount(account);
    account.deployments[""] = deployments(at(-5), "BUILDING");
    AppState& s = *state;
    QStringList published; // every error and connection text the views were handed
    QObject listening;
    QObject::connect(&s, &AppState::changed, &listening, [&] {
        published << s.connection().detail << s.statusSummary() << s.lastError().value_or("")
                  << QString::fromUtf8(statusJsonLine(s, clock.now()));
    });

    QCoro::waitFor(s.saveToken(token));
    ASSERT_TRUE(waitUntil([&] { return s.hasLoadedOnce() && !s.isRefreshing(); }));
    account.deployments[""] = deployments(at(-5), "ERROR"); // notified, with its report
    nextPass();
    ASSERT_EQ(notifications.posted.size(), 1);
    notifications.reportHandler("dpl_fail");
    ASSERT_TRUE(waitUntil([&] { return clipboard.texts.size() == 1; }));
    EXPECT_TRUE(clipboard.texts[0].contains("Type error: customerId"));
    s.setLaunchAtLogin(true);
    EXPECT_TRUE(QFile::exists(autostart.entryPath()));

    account.failures.insert("/v6/deployments", Response::vercelError(500, "internal", "Boom"));
    nextPass();
    EXPECT_TRUE(published.join('\n').contains("HTTP 500")); // shown while the pass ran
    account.failures.insert("/v9/projects", Response::vercelError(403, "forbidden", "Denied"));
    nextPass();
    EXPECT_EQ(s.connection().kind, Connection::Kind::failed);

    for (const FailureNotification& posted : notifications.posted)
        searchFor.text("notification " + posted.title, posted.identifier + posted.title +
                                                           posted.body +
                                                           posted.url.value_or(QUrl()).toString());
    for (const QString& text : clipboard.texts)
        searchFor.text("clipboard", text);
    searchFor.text("published state", published.join('\n'));
    searchFor.text("Qt messages", messages().join('\n'));
    searchFor.bytes("preference file", prefs.bytes());
    searchFor.tree("autostart folder ", autostartDir.path());
    searchFor.requests(server.requests());
    EXPECT_GE(searchFor.authorized(), 8);
    EXPECT_EQ(notifications.posted.size(), 2); // the failure, then "Failure report copied"
    EXPECT_EQ(searchFor.found(), QStringList()) << "the token showed in these places";
}
