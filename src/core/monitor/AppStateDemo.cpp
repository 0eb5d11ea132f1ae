// Demo mode: the director's fake data stands in for the refresh cycle; no request is ever made.
#include "core/demo/DemoDirector.h"
#include "core/keychain/KeychainStore.h"
#include "core/monitor/AppState.h"

using namespace std::chrono_literals;

void AppState::startDemo() {
    isDemo_ = true;
    mutes_.clear(); // the account's mutes are of other projects; the demo's are its own
    scheduleMuteEnd();
    demo_ = std::make_unique<DemoDirector>(services_.clock);
    availableProjects_ = demo_->projectRefs();
    Q_EMIT availableProjectsChanged();
    monitoredIDs_.clear();
    for (const ProjectRef& ref : availableProjects_)
        monitoredIDs_.insert(ref.id);
    persistMonitored();
    setConnection(Connection::connected(QStringLiteral("acme")));
    keychainMode_ = KeychainStore::Mode::synced;
    tokenExpiry_ = TokenExpiry::never();
    accountUserId_ = DemoDirector::userId();
    hasLoadedOnce_ = true;
    QPointer<AppState> self(this);
    demo_->onChange = [self] {
        if (self)
            self->rebuildDemoSnapshots();
    };
    demo_->start();
    services_.notifications.requestAuthorization();
    cancelLoop();
    loopTask_ = std::make_shared<Cancellation>();
    runDemoTicks(self, loopTask_);
}

QCoro::Task<> AppState::runDemoTicks(QPointer<AppState> self, std::shared_ptr<Cancellation> token) {
    while (self && !token->isCancelled()) {
        co_await self->clock().sleep(20s, token);
        if (!self || token->isCancelled())
            co_return;
        self->lastRefresh_ = self->clock().now();
        Q_EMIT self->changed();
    }
}

void AppState::rebuildDemoSnapshots() {
    if (!demo_)
        return;
    QList<ProjectSnapshot> kept;
    for (const ProjectSnapshot& snapshot : demo_->snapshots()) {
        if (monitoredIDs_.contains(snapshot.id))
            kept.append(snapshot);
    }
    notifyFailures(kept);
    publish(std::move(kept), demo_->todayCount());
}
