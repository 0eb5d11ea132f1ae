// quillon-cli watch [--once]: the monitoring engine in a terminal, one block per pass.
#include "cli/CliApi.h"
#include "cli/CliCommand.h"
#include "cli/CliEngine.h"
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
    WatchSession(AppState& state, bool once) : state_(state), once_(once) {
        QObject::connect(&state, &AppState::snapshotsChanged, this, &WatchSession::printPass);
        QObject::connect(&state, &AppState::connectionChanged, this,
                         &WatchSession::onConnectionChanged);
    }

    void printPass() {
        const QDateTime now = state_.clock().now();
        cliOut() << '[' << now.time().toString(QStringLiteral("HH:mm:ss")) << "] "
                 << passLine(state_) << '\n';
        for (const ProjectSnapshot& snapshot : state_.snapshots())
            cliOut() << snapshotLine(snapshot, now) << '\n';
        cliOut().flush();
        if (once_ && (state_.hasLoadedOnce() || state_.isDemo()))
            Q_EMIT finished(0);
    }

Q_SIGNALS:
    void finished(int code);

private:
    void onConnectionChanged() {
        const Connection& connection = state_.connection();
        if (connection.kind != Connection::Kind::failed)
            return;
        cliErr() << state_.statusSummary() << ": " << connection.detail << '\n';
        cliErr().flush();
        Q_EMIT finished(kExitFailed);
    }

    AppState& state_;
    bool once_;
};

QCoro::Task<int> runWatch(QStringList args) {
    const bool once = args.removeAll(QStringLiteral("--once")) > 0;
    if (args == QStringList{QStringLiteral("--help")}) {
        printUsage(watchCommand());
        co_return 0;
    }
    if (!args.isEmpty()) {
        cliErr() << "quillon-cli watch: unexpected argument '" << args.first() << "'\n";
        co_return kExitUsage;
    }
    const std::optional<QUrl> base = apiBaseFromEnvironment();
    if (!base)
        co_return kExitUsage;
    CliEngine engine(*base);
    AppState& state = engine.state;
    std::optional<WatchSession> session;
    std::unique_ptr<DemoHotKeys> hotKeys;
    if (qEnvironmentVariable("QUILLON_DEMO") == QLatin1String("1")) {
        // The demo publishes while it starts; its first complete picture is the one after.
        state.start(true);
        // Before the first block, so whoever reads it may press the keys at once.
        if (!once)
            hotKeys = bindDemoHotKeys(state);
        session.emplace(state, once);
        session->printPass();
        if (once)
            co_return 0;
    } else {
        session.emplace(state, once);
        const std::optional<QString> token =
            tokenFromEnvironmentOrKeyring(engine.platform.keychain);
        if (!token)
            co_return kExitUsage;
        state.connect(*token);
    }
    const int code = co_await qCoro(&*session, &WatchSession::finished);
    co_return code;
}

CliCommand watchCommand() {
    return {QStringLiteral("watch"), QStringLiteral("watch [--once]"),
            QStringLiteral("follows the monitored projects, one block per refresh pass"), runWatch};
}

const CliCommand::Registration registration(watchCommand());

} // namespace

#include "WatchCommand.moc"
