// quillon-cli wait [--commit SHA] [--project NAME] [--timeout DURATION] [--json]: waits for the
// deployment of a commit (the folder's HEAD) and ends with its result, for a terminal or a CI job.
// Progress goes to standard error, so `url=$(quillon-cli wait)` keeps only the address.
#include "cli/CliApi.h"
#include "cli/CliCommand.h"
#include "core/common/Language.h"
#include "core/keychain/KeychainStore.h"
#include "core/wait/DeploymentJson.h"
#include "core/wait/DeploymentWait.h"
#include "core/wait/GitCheckout.h"
#include "core/wait/WaitTexts.h"
#include "core/wait/WaitTimeout.h"
#include "platform/ModuleSecretBackend.h"

#include <QDir>

namespace {

CliCommand waitCommand();
void printHelp();

// As timeout(1) ends: nothing came in time.
constexpr int kExitTimedOut = 124;

struct WaitOptions {
    std::optional<QString> commit;
    std::optional<QString> project;
    std::chrono::seconds timeout{15 * 60};
    bool json = false;
};

int usageError(const QString& message) {
    cliErr() << "quillon-cli wait: " << message << '\n';
    return kExitUsage;
}

// The value of `--name VALUE` or `--name=VALUE` at `at`, moving `at` past it; absent when the
// argument is not that option. An option without its value answers an empty text.
std::optional<QString> optionValue(const QStringList& args, qsizetype& at, QLatin1StringView name) {
    const QString& arg = args.at(at);
    if (arg == name)
        return ++at < args.size() ? args.at(at) : QString();
    if (arg.startsWith(QString(name) + u'='))
        return arg.mid(name.size() + 1);
    return std::nullopt;
}

// The options, or the exit code after saying what is wrong.
Expected<WaitOptions, int> parseOptions(const QStringList& args) {
    WaitOptions options;
    for (qsizetype at = 0; at < args.size(); ++at) {
        if (args.at(at) == QLatin1String("--json")) {
            options.json = true;
        } else if (auto commit = optionValue(args, at, QLatin1StringView("--commit"))) {
            if (!CommitHash::parse(*commit))
                return usageError(Language::text(
                    "--commit takes a commit hash of at least 7 hexadecimal digits.",
                    "--commit prend un hash de commit d'au moins 7 chiffres hexadécimaux."));
            options.commit = commit;
        } else if (auto project = optionValue(args, at, QLatin1StringView("--project"))) {
            if (project->isEmpty())
                return usageError(Language::text("--project takes a project name or id.",
                                                 "--project prend un nom ou un identifiant de "
                                                 "projet."));
            options.project = project;
        } else if (auto timeout = optionValue(args, at, QLatin1StringView("--timeout"))) {
            const auto parsed = waitTimeoutFromText(*timeout);
            if (!parsed)
                return usageError(Language::text(
                    "--timeout takes a duration such as 90s, 15m or 1h (at most 24h).",
                    "--timeout prend une durée comme 90s, 15m ou 1h (24h au plus)."));
            options.timeout = *parsed;
        } else {
            return usageError(
                Language::text("unexpected argument '%1' (see 'quillon-cli wait --help').",
                               "argument inattendu '%1' (voir 'quillon-cli wait --help').")
                    .arg(args.at(at)));
        }
    }
    return options;
}

std::optional<QString> waitToken() {
    const QString token = qEnvironmentVariable("VERCEL_TOKEN").trimmed();
    if (!token.isEmpty())
        return token; // a CI job has no keyring to open
    ModuleSecretBackend secrets;
    KeychainStore keychain(secrets);
    return tokenFromEnvironmentOrKeyring(keychain);
}

// The commit and the hints from the options and the folder; absent after saying why not.
QCoro::Task<std::optional<WaitRequest>> requestFor(WaitOptions options) {
    const QString folder = QDir::currentPath();
    const GitCheckout checkout = co_await readGitCheckout(folder);
    const std::optional<QString> named = options.commit ? options.commit : checkout.head;
    const std::optional<CommitHash> commit =
        named ? CommitHash::parse(*named) : std::optional<CommitHash>();
    if (!commit) {
        usageError(Language::text("this folder has no git commit to wait for. Name one with "
                                  "--commit SHA.",
                                  "ce dossier n'a pas de commit git à attendre. Nommez-en un avec "
                                  "--commit SHA."));
        co_return std::nullopt;
    }
    WaitRequest request{*commit, {}, options.timeout};
    request.hints.named = options.project;
    QStringList folders{folder};
    if (checkout.topLevel && QDir(*checkout.topLevel) != QDir(folder))
        folders << *checkout.topLevel;
    const auto local = findLocalProjectLink(folders);
    if (!local) {
        usageError(local.error());
        co_return std::nullopt;
    }
    request.hints.local = local.value();
    if (checkout.originUrl)
        request.hints.remote = remoteRepository(*checkout.originUrl);
    co_return request;
}

WaitObserver printer(const WaitRequest& request, bool json) {
    const CommitHash commit = request.commit;
    auto project = std::make_shared<std::optional<LinkedProject>>();
    return {[project, commit](const LinkedProject& chosen) {
                *project = chosen;
                cliErr() << waitingLine(commit, chosen) << '\n';
                cliErr().flush();
            },
            [project, commit, json](const VercelDeployment& deployment) {
                if (json)
                    cliOut() << deploymentJsonLine(deployment, **project, commit) << '\n';
                else
                    cliErr() << stateLine(deployment, **project, commit,
                                          QDateTime::currentDateTime())
                             << '\n';
                cliOut().flush();
                cliErr().flush();
            },
            [](const QString& sentence) {
                cliErr() << sentence << '\n';
                cliErr().flush();
            }};
}

int finish(const WaitOutcome& outcome, bool json) {
    switch (outcome.end) {
    case WaitEnd::ready:
        if (!json)
            cliOut() << outcome.message << '\n';
        return 0;
    case WaitEnd::failed:
    case WaitEnd::refused:
        cliErr() << outcome.message << (outcome.message.endsWith(u'\n') ? "" : "\n");
        return kExitFailed;
    case WaitEnd::canceled:
    case WaitEnd::skipped:
        cliErr() << outcome.message << '\n';
        return kExitUsage;
    case WaitEnd::noProject:
        return usageError(outcome.message);
    case WaitEnd::timedOut:
        cliErr() << outcome.message << '\n';
        return kExitTimedOut;
    }
    Q_UNREACHABLE();
}

QCoro::Task<int> runWait(QStringList args) {
    if (args == QStringList{QStringLiteral("--help")}) {
        printHelp();
        co_return 0;
    }
    const Expected<WaitOptions, int> options = parseOptions(args);
    if (!options)
        co_return options.error();
    const std::optional<QUrl> base = apiBaseFromEnvironment();
    const std::optional<QString> token = base ? waitToken() : std::nullopt;
    if (!token)
        co_return kExitUsage;
    const std::optional<WaitRequest> request = co_await requestFor(options.value());
    if (!request)
        co_return kExitUsage;
    SystemClock clock;
    const VercelAPI api(*token, *base);
    const WaitObserver observer = printer(*request, options->json);
    const WaitOutcome outcome = co_await waitForDeployment(api, clock, *request, observer);
    co_return finish(outcome, options->json);
}

CliCommand waitCommand() {
    return {QStringLiteral("wait"),
            QStringLiteral("wait [--commit SHA] [--project NAME] [--timeout 15m] [--json]"),
            QStringLiteral("wait for the deployment of a commit (default: the folder's git HEAD) "
                           "and end with its result"),
            runWait};
}

void printHelp() {
    printUsage(waitCommand());
    cliOut() << "\n"
                "  --commit SHA        the commit, whole or its first 7 digits or more\n"
                "                      (default: the folder's HEAD)\n"
                "  --project NAME      the project, by name or id (default: the one in\n"
                "                      .vercel/project.json, else the one that deploys the\n"
                "                      folder's git remote origin)\n"
                "  --timeout DURATION  90s, 15m, 1h or a number of seconds (default 15m)\n"
                "  --json              one JSON object per state on standard output\n\n"
                "Each new state goes to standard error. Exit status: 0 live, its address on\n"
                "standard output; 1 failed, with the \"Copy for AI\" report on standard error,\n"
                "or refused by Vercel; 2 canceled, skipped by the Ignored Build Step, or no\n"
                "project found; 124 nothing ended in time.\n";
}

const CliCommand::Registration registration(waitCommand());

} // namespace
