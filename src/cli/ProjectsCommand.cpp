// quillon-cli projects: every project the token can see, over every scope and every page: the
// list Settings offers to monitor, one aligned line each.
#include "cli/CliApi.h"
#include "cli/CliCommand.h"
#include "cli/CliEngine.h"
#include "cli/EngineStart.h"

namespace {

CliCommand projectsCommand();

QCoro::Task<int> runProjects(QStringList args) {
    if (const std::optional<int> answered = answerWithoutArguments(args, projectsCommand()))
        co_return *answered;
    const std::unique_ptr<CliEngine> engine = CliEngine::fromEnvironment();
    if (!engine)
        co_return kExitUsage;
    AppState& state = engine->state;
    if (const int code = co_await startEngine(state, engine->platform.keychain); code != 0)
        co_return code;
    // "x" marks the monitored ones.
    const QSet<QString> monitored = state.effectiveMonitoredIDs();
    QList<QStringList> rows;
    for (const ProjectRef& ref : state.availableProjects())
        rows.append({monitored.contains(ref.id) ? QStringLiteral("x") : QStringLiteral("-"),
                     ref.name, ref.scopeSlug, ref.id});
    for (const QString& line : alignedLines(rows))
        cliOut() << line << '\n';
    // The teams it could not list, and why.
    for (const QString& notice : state.notices())
        cliErr() << notice << '\n';
    co_return 0;
}

CliCommand projectsCommand() {
    return {QStringLiteral("projects"), QStringLiteral("projects"),
            QStringLiteral("list every project of your account and teams; x marks the "
                           "monitored ones"),
            runProjects};
}

const CliCommand::Registration registration(projectsCommand());

} // namespace
