// quillon-cli report PROJECT: the failure report of a project's latest deployment, the same text
// "Copy for AI" puts on the clipboard, printed for a terminal or a script.
#include "cli/CliApi.h"
#include "cli/CliCommand.h"
#include "cli/CliEngine.h"
#include "cli/EngineStart.h"

namespace {

CliCommand reportCommand();

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

QCoro::Task<int> runReport(QStringList args) {
    if (args == QStringList{QStringLiteral("--help")}) {
        printUsage(reportCommand());
        co_return 0;
    }
    if (args.size() != 1 || args.first().startsWith(QLatin1Char('-'))) {
        cliErr() << "quillon-cli report: name one project (see 'quillon-cli report --help')\n";
        co_return kExitUsage;
    }
    const std::unique_ptr<CliEngine> engine = CliEngine::fromEnvironment();
    if (!engine)
        co_return kExitUsage;
    AppState& state = engine->state;
    if (const int code = co_await startEngine(state, engine->platform.keychain); code != 0)
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
