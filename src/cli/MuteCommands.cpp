// quillon-cli mute PROJECT [--for 1h|--until-tomorrow], unmute PROJECT and mutes: the same mutes
// as the panel's, kept in the preferences, so the tray and `watch` obey them.
#include "cli/CliApi.h"
#include "cli/CliCommand.h"
#include "cli/CliEngine.h"
#include "cli/EngineStart.h"
#include "cli/ProjectLookup.h"
#include "core/common/Language.h"

#include <QRegularExpression>

namespace {

CliCommand muteCommand();
CliCommand unmuteCommand();
CliCommand mutesCommand();

constexpr qint64 longestMuteSeconds = 30 * 24 * 3600;

// "90m", "1h", "2d": a whole number of minutes, hours or days, up to 30 days.
std::optional<qint64> muteSeconds(const QString& text) {
    static const QRegularExpression form(QStringLiteral("^([0-9]{1,6})([mhd])$"));
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const qint64 count = match.captured(1).toLongLong();
    const QChar unit = match.captured(2).front();
    const qint64 seconds = count * (unit == u'm' ? 60 : unit == u'h' ? 3600 : 86400);
    if (seconds <= 0 || seconds > longestMuteSeconds)
        return std::nullopt;
    return seconds;
}

struct MuteRequest {
    QString project;
    std::optional<qint64> seconds; // --for
    bool untilTomorrow = false;
};

// The request, or absent after saying what is wrong with the arguments.
std::optional<MuteRequest> parseMute(QStringList args) {
    MuteRequest request;
    request.untilTomorrow = args.removeAll(QStringLiteral("--until-tomorrow")) > 0;
    const qsizetype forAt = args.indexOf(QStringLiteral("--for"));
    if (forAt >= 0) {
        if (forAt + 1 >= args.size() || !(request.seconds = muteSeconds(args[forAt + 1]))) {
            cliErr() << "quillon-cli mute: "
                     << Language::text("--for takes a length such as 30m, 1h or 2d (at most 30 "
                                       "days).",
                                       "--for prend une durée comme 30m, 1h ou 2d (30 jours au "
                                       "plus).")
                     << '\n';
            return std::nullopt;
        }
        args.remove(forAt, 2);
    }
    if (args.size() != 1 || args.first().startsWith(QLatin1Char('-')) ||
        (request.seconds && request.untilTomorrow)) {
        cliErr() << "quillon-cli mute: "
                 << Language::text("name one project, and at most one of --for and "
                                   "--until-tomorrow (see 'quillon-cli mute --help').",
                                   "nommez un projet, avec au plus --for ou --until-tomorrow "
                                   "(voir 'quillon-cli mute --help').")
                 << '\n';
        return std::nullopt;
    }
    request.project = args.first();
    return request;
}

// "api: Muted until 16:00".
void printMute(const QString& name, const ProjectMute& mute, const QDateTime& now) {
    cliOut() << name << Language::text(": ", " : ") << mutedText(mute, now) << '\n';
}

QCoro::Task<int> runMute(QStringList args) {
    if (args == QStringList{QStringLiteral("--help")}) {
        printUsage(muteCommand());
        co_return 0;
    }
    const std::optional<MuteRequest> request = parseMute(args);
    if (!request)
        co_return kExitUsage;
    const std::unique_ptr<CliEngine> engine = CliEngine::fromEnvironment();
    if (!engine)
        co_return kExitUsage;
    AppState& state = engine->state;
    // The account's projects, whatever QUILLON_DEMO says: the demo's are not kept.
    if (const int code = co_await startEngine(state, engine->platform.keychain, false); code != 0)
        co_return code;
    const std::optional<ProjectRef> project =
        findProject(state, request->project, QStringLiteral("mute"));
    if (!project)
        co_return kExitFailed;
    const QDateTime now = state.clock().now();
    if (request->seconds)
        state.muteProjectUntil(project->id, project->name, now.addSecs(*request->seconds));
    else
        state.muteProject(project->id, project->name,
                          request->untilTomorrow ? MuteLength::untilTomorrow
                                                 : MuteLength::untilUnmuted);
    printMute(project->name, *state.activeMute(project->id), now);
    co_return 0;
}

QCoro::Task<int> runUnmute(QStringList args) {
    if (args == QStringList{QStringLiteral("--help")}) {
        printUsage(unmuteCommand());
        co_return 0;
    }
    if (args.size() != 1 || args.first().startsWith(QLatin1Char('-'))) {
        cliErr() << "quillon-cli unmute: "
                 << Language::text("name one project (see 'quillon-cli unmute --help').",
                                   "nommez un projet (voir 'quillon-cli unmute --help').")
                 << '\n';
        co_return kExitUsage;
    }
    const std::unique_ptr<CliEngine> engine = CliEngine::fromEnvironment();
    if (!engine)
        co_return kExitUsage;
    AppState& state = engine->state;
    const QString wanted = args.first();
    QStringList ids;
    for (auto it = state.mutes().begin(); it != state.mutes().end(); ++it) {
        if ((it->name == wanted || it.key() == wanted) && state.activeMute(it.key()))
            ids << it.key();
    }
    if (ids.size() != 1) {
        cliErr() << "quillon-cli unmute: "
                 << (ids.isEmpty()
                         ? Language::text("no muted project is named '%1'.",
                                          "aucun projet en sourdine ne s'appelle '%1'.")
                               .arg(wanted)
                         : Language::text("several muted projects are named '%1': %2. Name one "
                                          "by its id.",
                                          "plusieurs projets en sourdine s'appellent '%1' : %2. "
                                          "Nommez-en un par son identifiant.")
                               .arg(wanted, ids.join(QStringLiteral(", "))))
                 << '\n';
        co_return kExitFailed;
    }
    const QString name = state.mutes().value(ids.first()).name;
    state.unmuteProject(ids.first());
    cliOut() << name << Language::text(": notifications back on", " : notifications réactivées")
             << '\n';
    co_return 0;
}

QCoro::Task<int> runMutes(QStringList args) {
    if (const std::optional<int> answered = answerWithoutArguments(args, mutesCommand()))
        co_return *answered;
    const std::unique_ptr<CliEngine> engine = CliEngine::fromEnvironment();
    if (!engine)
        co_return kExitUsage;
    const AppState& state = engine->state;
    const QDateTime now = state.clock().now();
    QList<std::pair<QString, ProjectMute>> active;
    for (auto it = state.mutes().begin(); it != state.mutes().end(); ++it) {
        if (it->isActive(now))
            active.append({it.key(), *it});
    }
    std::sort(active.begin(), active.end(), [](const auto& a, const auto& b) {
        return std::pair(a.second.name, a.first) < std::pair(b.second.name, b.first);
    });
    if (active.isEmpty())
        cliOut() << Language::text("No project is muted.", "Aucun projet n'est en sourdine.")
                 << '\n';
    for (const auto& [id, mute] : active)
        cliOut() << mute.name << "  " << id << "  " << mutedText(mute, now) << '\n';
    co_return 0;
}

CliCommand muteCommand() {
    return {QStringLiteral("mute"), QStringLiteral("mute PROJECT [--for 1h|--until-tomorrow]"),
            QStringLiteral("keep a project's failures out of notifications and the capsule (name "
                           "or id; until unmuted unless --for or --until-tomorrow)"),
            runMute};
}

CliCommand unmuteCommand() {
    return {QStringLiteral("unmute"), QStringLiteral("unmute PROJECT"),
            QStringLiteral("give a muted project its notifications back"), runUnmute};
}

CliCommand mutesCommand() {
    return {QStringLiteral("mutes"), QStringLiteral("mutes"),
            QStringLiteral("list the muted projects and until when"), runMutes};
}

const CliCommand::Registration muteRegistration(muteCommand());
const CliCommand::Registration unmuteRegistration(unmuteCommand());
const CliCommand::Registration mutesRegistration(mutesCommand());

} // namespace
