#include "cli/EngineStart.h"

#include "cli/CliApi.h"
#include "core/monitor/AppState.h"

#include <QCoro/QCoroSignal>

FirstPass::FirstPass(AppState& state) : state_(state), start_(state.clock().now()) {
    QObject::connect(&state, &AppState::snapshotsChanged, this, [this] {
        if (state_.hasLoadedOnce())
            finish(true);
    });
    QObject::connect(&state, &AppState::connectionChanged, this, [this] {
        if (oneShotGivesUp(state_.connection(), start_))
            finish(false);
    });
}

QCoro::Task<bool> FirstPass::loaded() {
    if (!outcome_)
        co_await qCoro(this, &FirstPass::finished);
    co_return *outcome_;
}

void FirstPass::finish(bool loaded) {
    if (outcome_)
        return;
    outcome_ = loaded;
    Q_EMIT finished();
}

QCoro::Task<int> startEngine(AppState& state, KeychainStore& keychain, bool demoAllowed) {
    if (demoAllowed && qEnvironmentVariable("QUILLON_DEMO") == QLatin1String("1")) {
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
