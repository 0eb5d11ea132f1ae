// quillon-cli watch [--once] [--json]: the monitoring engine in a terminal, one block per pass,
// or one JSON object per line for status bars and scripts.
#include "cli/CliApi.h"
#include "cli/CliCommand.h"
#include "cli/CliEngine.h"
#include "core/common/PreferenceFileWatch.h"
#include "core/monitor/StatusJson.h"
#include "core/monitor/StatusLines.h"
#include "demo/DemoHotKeyBinding.h"

#include <QCoreApplication>
#include <QCoro/QCoroSignal>
#include <QTime>

namespace {

CliCommand watchCommand();

// Prints each publication of the engine and says when watching is over.
class WatchSession : public QObject {
    Q_OBJECT
public:
    enum class Format { text, json };

    WatchSession(AppState& state, bool once, Format format)
        : state_(state), once_(once), format_(format), start_(state.clock().now()) {
        QObject::connect(&state, &AppState::snapshotsChanged, this, &WatchSession::printPass);
        QObject::connect(&state, &AppState::connectionChanged, this,
                         &WatchSession::onConnectionChanged);
        QObject::connect(&state, &AppState::noticesChanged, this, &WatchSession::printNotices);
        // The demo's quiet ticks are passes too, so a reader never waits long for a line.
        QObject::connect(&state, &AppState::changed, this, [this] {
            if (state_.isDemo() && state_.lastRefresh() && state_.lastRefresh() != printed_)
                printPass();
        });
    }

    void printPass() {
        const QDateTime now = state_.clock().now();
        printed_ = state_.lastRefresh();
        if (format_ == Format::json)
            cliOut() << statusJsonLine(state_, now) << '\n';
        else
            printBlock(now);
        // A bar reading a pipe must see each pass as it happens.
        cliOut().flush();
        if (once_ && (state_.hasLoadedOnce() || state_.isDemo()))
            Q_EMIT finished(0);
    }

Q_SIGNALS:
    void finished(int code);

private:
    void printBlock(const QDateTime& now) {
        cliOut() << '[' << now.time().toString(QStringLiteral("HH:mm:ss")) << "] "
                 << passLine(state_) << '\n';
        for (const ProjectSnapshot& snapshot : state_.snapshots())
            cliOut() << snapshotLine(snapshot, now) << '\n';
    }

    // A team Vercel keeps closed and Vercel asking Quillon to slow down go to standard error, each
    // when it first appears (the slow-down again with each new time of the next check).
    void printNotices() {
        const QStringList notices = state_.notices();
        for (const QString& notice : notices) {
            if (!printedNotices_.contains(notice))
                cliErr() << notice << '\n';
        }
        cliErr().flush();
        printedNotices_ = notices;
    }

    // A failed check ends the watch; one that will be tried again keeps it going (a single
    // pass waits about 30 s for it), and says so.
    void onConnectionChanged() {
        const Connection& connection = state_.connection();
        const bool givesUp = connection.kind == Connection::Kind::failed ||
                             (once_ && oneShotGivesUp(connection, start_));
        if (givesUp) {
            printConnectionFailure(connection);
            Q_EMIT finished(kExitFailed);
        } else if (connection.kind == Connection::Kind::retrying) {
            cliErr() << state_.statusSummary() << ": " << state_.connectionMessage() << '\n';
            cliErr().flush();
        }
    }

    AppState& state_;
    bool once_;
    Format format_;
    QDateTime start_;
    std::optional<QDateTime> printed_;
    QStringList printedNotices_;
};

QCoro::Task<int> runWatch(QStringList args) {
    const bool once = args.removeAll(QStringLiteral("--once")) > 0;
    const auto format = args.removeAll(QStringLiteral("--json")) > 0 ? WatchSession::Format::json
                                                                     : WatchSession::Format::text;
    if (const std::optional<int> answered = answerWithoutArguments(args, watchCommand()))
        co_return *answered;
    const std::unique_ptr<CliEngine> engine = CliEngine::fromEnvironment();
    if (!engine)
        co_return kExitUsage;
    AppState& state = engine->state;
    // Mutes and switches changed meanwhile (quillon-cli mute, set) hold from the next pass.
    PreferenceFileWatch preferences(Preferences::standard().filePath());
    QObject::connect(&preferences, &PreferenceFileWatch::changed, &state,
                     &AppState::reloadPreferences);
    std::optional<WatchSession> session;
    std::unique_ptr<DemoHotKeys> hotKeys;
    if (qEnvironmentVariable("QUILLON_DEMO") == QLatin1String("1")) {
        // The demo publishes while it starts; its first complete picture is the one after.
        state.start(true);
        // Before the first block, so whoever reads it may press the keys at once.
        if (!once)
            hotKeys = bindDemoHotKeys(state);
        session.emplace(state, once, format);
        session->printPass();
        if (once)
            co_return 0;
    } else {
        session.emplace(state, once, format);
        const std::optional<QString> token =
            tokenFromEnvironmentOrKeyring(engine->platform.keychain);
        if (!token)
            co_return kExitUsage;
        state.connect(*token);
    }
    const int code = co_await qCoro(&*session, &WatchSession::finished);
    co_return code;
}

CliCommand watchCommand() {
    return {QStringLiteral("watch"), QStringLiteral("watch [--once] [--json]"),
            QStringLiteral("follows the monitored projects, one block (or with --json one JSON "
                           "object per line) per refresh pass"),
            runWatch};
}

const CliCommand::Registration registration(watchCommand());

} // namespace

#include "WatchCommand.moc"
