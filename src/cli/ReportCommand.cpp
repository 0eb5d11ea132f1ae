// quillon-cli report PROJECT: the failure report of a project's latest deployment, the same text
// "Copy for AI" puts on the clipboard, printed for a terminal or a script.
#include "cli/CliApi.h"
#include "cli/CliCommand.h"
#include "cli/CliEngine.h"

#include <QCoreApplication>
#include <QCoro/QCoroSignal>

namespace {

CliCommand reportCommand();

// Remembers how the engine's start ended: its first complete pass, or a failed connection.
class FirstPass : public QObject {
    Q_OBJECT
public:
    explicit FirstPass(AppState& state) : state_(state), start_(state.clock().now()) {
        QObject::connect(&state, &AppState::snapshotsChanged, this, [this] {
            if (state_.hasLoadedOnce())
                finish(true);
        });
        QObject::connect(&state, &AppState::connectionChanged, this, [this] {
            if (oneShotGivesUp(state_.connection(), start_))
                finish(false);
        });
    }

    // Answers whether the pass completed, once it has or the connection failed.
    QCoro::Task<bool> loaded() {
        if (!outcome_)
            co_await qCoro(this, &FirstPass::finished);
        co_return *outcome_;
    }

Q_SIGNALS:
    void finished();

private:
    void finish(bool loaded) {
        if (outcome_)
            return;
        outcome_ = loaded;
        Q_EMIT finished();
    }

    AppState& state_;
    QDateTime start_;
    std::optional<bool> outcome_;
};

std::optional<ProjectSnapshot> findProject(const AppState& state, const QString& nameOrID) {
    for (const ProjectSnapshot& snapshot : state.snapshots()) {
        if (snapshot.name == nameOrID || snapshot.id == nameOrID)
            return snapshot;
    }
    return std::nullopt;
}

void printUnknownProject(const AppState& state, const QString& nameOrID) {
    QStringList names;
    for (const ProjectSnapshot& snapshot : state.snapshots())
        names << snapshot.name;
    cliErr() << "quillon-cli report: no monitored project is named '" << nameOrID << "'";
    if (!names.isEmpty())
        cliErr() << " (monitored: " << names.join(QStringLiteral(", ")) << ")";
    cliErr() << '\n';
    if (state.lastError())
        cliErr() << "The last refresh failed: " << *state.lastError() << '\n';
}

// Starts the engine the way the tray does (demo, or the account of the token) and answers
// whether its snapshots are ready to read.
QCoro::Task<int> startEngine(AppState& state, KeychainStore& keychain) {
    if (qEnvironmentVariable("QUILLON_DEMO") == QLatin1String("1")) {
        state.start(true); // the demo's snapshots are there at once, with its fake build log
        co_return 0;
    }
    const std::optional<QString> token = tokenFromEnvironmentOrKeyring(keychain);
    if (!token)
        co_return kExitUsage;
    FirstPass pass(state);
    state.connect(*token);
    if (co_await pass.loaded())
        co_return 0;
    printConnectionFailure(state.connection());
    co_return kExitFailed;
}

QCoro::Task<int> runReport(QStringList args) {
    if (args == QStringList{QStringLiteral("--help")}) {
        printUsage(reportCommand());
        co_return 0;
    }
    if (args.size() != 1 || args.first().startsWith(QLatin1Char('-'))) {
        cliErr() << "quillon-cli report: name one project (see 'quillon-cli report --help')\n";
        co_return kExitUsage;
    }
    const std::optional<QUrl> base = apiBaseFromEnvironment();
    if (!base)
        co_return kExitUsage;
    CliEngine engine(*base);
    AppState& state = engine.state;
    if (const int code = co_await startEngine(state, engine.platform.keychain); code != 0)
        co_return code;

    const QString wanted = args.first();
    const std::optional<ProjectSnapshot> snapshot = findProject(state, wanted);
    if (!snapshot) {
        printUnknownProject(state, wanted);
        co_return kExitFailed;
    }
    const std::optional<QString> report = co_await state.failureReport(*snapshot);
    if (!report) {
        cliErr() << "quillon-cli report: " << snapshot->name << " has no deployment yet\n";
        co_return kExitFailed;
    }
    cliOut() << *report;
    co_return 0;
}

CliCommand reportCommand() {
    return {
        QStringLiteral("report"), QStringLiteral("report PROJECT"),
        QStringLiteral("print the failure report of a project's latest deployment (name or id)"),
        runReport};
}

const CliCommand::Registration registration(reportCommand());

} // namespace

#include "ReportCommand.moc"
