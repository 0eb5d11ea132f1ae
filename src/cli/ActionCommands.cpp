// quillon-cli redeploy PROJECT and cancel PROJECT: the panel's actions on a project's latest
// deployment, confirmed at a terminal, and only with --yes from a script.
#include "cli/CliApi.h"
#include "cli/CliCommand.h"
#include "cli/CliEngine.h"
#include "cli/EngineStart.h"
#include "cli/ProjectLookup.h"
#include "core/common/Language.h"
#include "core/monitor/Clock.h"

#include <QCoro/QCoroSignal>
#include <QFile>
#include <QSocketNotifier>
#include <unistd.h>

namespace {

CliCommand redeployCommand();
CliCommand cancelCommand();

struct ActionRequest {
    QString project;
    bool confirmed = false; // --yes
};

std::optional<ActionRequest> parseAction(QStringList args, const QString& command) {
    ActionRequest request;
    request.confirmed = args.removeAll(QStringLiteral("--yes")) > 0;
    if (args.size() == 1 && !args.first().startsWith(QLatin1Char('-'))) {
        request.project = args.first();
        return request;
    }
    cliErr() << "quillon-cli " << command << ": "
             << Language::text("name one project (see 'quillon-cli %1 --help').",
                               "nommez un projet (voir 'quillon-cli %1 --help').")
                    .arg(command)
             << '\n';
    return std::nullopt;
}

// The project's snapshot with its latest deployment: the pass's for a monitored project, else
// asked of Vercel (the newest deployment of the project in its scope).
QCoro::Task<std::optional<ProjectSnapshot>> latestOf(const AppState& state, ProjectRef project) {
    for (const ProjectSnapshot& snapshot : state.snapshots()) {
        if (snapshot.id == project.id)
            co_return snapshot;
    }
    ProjectSnapshot snapshot{project.id, project.name, project.scopeSlug, project.teamId, {}, {}};
    if (!state.api())
        co_return snapshot;
    const VercelAPI::Query query =
        VercelAPI::withTeam(project.teamId, {{QStringLiteral("limit"), QStringLiteral("1")},
                                             {QStringLiteral("projectId"), project.id}});
    const RequestResult<DeploymentsResponse> answer =
        co_await state.api()->get<DeploymentsResponse>(QStringLiteral("/v6/deployments"), query);
    if (!answer) {
        reportFailure(answer.error());
        co_return std::nullopt;
    }
    if (!answer->deployments.isEmpty())
        snapshot.latest = answer->deployments.first();
    co_return snapshot;
}

// Asks the question on standard error and waits for a line at the terminal, without holding the
// event loop; yes is "y" or "yes" (or "o", "oui").
QCoro::Task<bool> confirmed(const QString& question) {
    cliErr() << question << Language::text(" [y/N] ", " [o/N] ");
    cliErr().flush();
    // Awaited through a signal of ours: QCoro's wrapper of `activated`, a private signal, binds
    // a null reference.
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    Cancellation typed;
    QObject::connect(&input, &QSocketNotifier::activated, &typed, &Cancellation::cancel);
    co_await qCoro(&typed, &Cancellation::cancelled);
    QFile in;
    if (!in.open(stdin, QIODevice::ReadOnly))
        co_return false;
    const QString answer = QString::fromUtf8(in.readLine()).trimmed().toLower();
    co_return QStringList{"y", "yes", "o", "oui"}.contains(answer);
}

// The pass a success asks for is let run to its end: a request still in flight when the process
// ends would be cut off with the network session, and the waits on it left behind.
QCoro::Task<> passesEnded(AppState& state) {
    while (state.isRefreshing())
        co_await qCoro(&state, &AppState::refreshingChanged);
}

QString doneSentence(DeploymentAction action, const ProjectSnapshot& snapshot,
                     const std::optional<VercelDeployment>& answered) {
    if (action == DeploymentAction::cancel)
        return Language::text("%1: build %2 canceled.", "%1 : build %2 annulé.")
            .arg(snapshot.name, snapshot.latest->deploymentID());
    QString sentence =
        Language::text("%1: redeploy started.", "%1 : redéploiement lancé.").arg(snapshot.name);
    if (answered && !answered->deploymentID().isEmpty())
        sentence += QLatin1Char(' ') + answered->deploymentID();
    if (answered && answered->url)
        sentence += QStringLiteral(" https://") + *answered->url;
    return sentence;
}

QCoro::Task<int> runAction(DeploymentAction action, CliCommand command, QStringList args) {
    if (args == QStringList{QStringLiteral("--help")}) {
        printUsage(command);
        co_return 0;
    }
    const std::optional<ActionRequest> request = parseAction(args, command.name);
    if (!request)
        co_return kExitUsage;
    const bool terminal = isatty(STDIN_FILENO) == 1;
    if (!request->confirmed && !terminal) {
        cliErr() << "quillon-cli " << command.name << ": "
                 << Language::text("not at a terminal: add --yes to confirm. Nothing was sent.",
                                   "pas de terminal : ajoutez --yes pour confirmer. Rien n'a été "
                                   "envoyé.")
                 << '\n';
        co_return kExitUsage;
    }
    const std::unique_ptr<CliEngine> engine = CliEngine::fromEnvironment();
    if (!engine)
        co_return kExitUsage;
    AppState& state = engine->state;
    if (const int code = co_await startEngine(state, engine->platform.keychain); code != 0)
        co_return code;
    const std::optional<ProjectRef> project = findProject(state, request->project, command.name);
    if (!project)
        co_return kExitFailed;
    const std::optional<ProjectSnapshot> snapshot = co_await latestOf(state, *project);
    if (!snapshot)
        co_return kExitFailed;
    if (!snapshot->latest) {
        cliErr() << Language::text("%1 has no deployment yet.", "%1 n'a encore aucun déploiement.")
                        .arg(snapshot->name)
                 << '\n';
        co_return kExitFailed;
    }
    const bool applies = action == DeploymentAction::redeploy ? state.canRedeploy(*snapshot)
                                                              : state.canCancel(*snapshot);
    if (applies && !request->confirmed &&
        !co_await confirmed(state.actionConfirmation(action, *snapshot))) {
        cliErr() << Language::text("Nothing was sent.", "Rien n'a été envoyé.") << '\n';
        co_return kExitFailed;
    }
    const AppState::ActionResult result = co_await state.act(action, *snapshot);
    if (!result.done) {
        cliErr() << (result.problem ? result.problem->sentence()
                                    : Language::text("Another action is under way.",
                                                     "Une autre action est en cours."))
                 << '\n';
        co_return kExitFailed;
    }
    cliOut() << doneSentence(action, *snapshot, result.deployment) << '\n';
    cliOut().flush();
    co_await passesEnded(state);
    co_return 0;
}

QCoro::Task<int> runRedeploy(QStringList args) {
    return runAction(DeploymentAction::redeploy, redeployCommand(), std::move(args));
}

QCoro::Task<int> runCancel(QStringList args) {
    return runAction(DeploymentAction::cancel, cancelCommand(), std::move(args));
}

CliCommand redeployCommand() {
    return {QStringLiteral("redeploy"), QStringLiteral("redeploy PROJECT [--yes]"),
            QStringLiteral("build a project's failed or canceled latest deployment again (name "
                           "or id; asks first, or --yes)"),
            runRedeploy};
}

CliCommand cancelCommand() {
    return {QStringLiteral("cancel"), QStringLiteral("cancel PROJECT [--yes]"),
            QStringLiteral("stop a project's queued or running build (name or id; asks first, or "
                           "--yes)"),
            runCancel};
}

const CliCommand::Registration redeployRegistration(redeployCommand());
const CliCommand::Registration cancelRegistration(cancelCommand());

} // namespace
