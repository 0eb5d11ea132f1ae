// The polling loop and one refresh pass.
#include "core/common/Language.h"
#include "core/monitor/AppState.h"
#include "core/monitor/FailureNotificationText.h"
#include "core/monitor/PassAccumulator.h"
#include "core/monitor/SlowBuildCheck.h"

#include <QCoro/QCoroSignal>
#include <utility>

using namespace std::chrono_literals;

QCoro::Task<> AppState::refresh() {
    co_await runPass(true);
}

QCoro::Task<> AppState::runPass(bool complete) {
    if (!api_ || isRefreshing_ || !connection_.isConnected())
        co_return;
    QPointer<AppState> self(this);
    setRefreshing(true);
    const quint64 generation = generation_;
    const VercelAPI client = *api_;
    const QList<Scope> scopes = scopes_;
    const int sentBefore = client.pacer() ? client.pacer()->sent() : 0;
    const QSet<QString> monitored = effectiveMonitoredIDs();
    const QDateTime startOfDay = localStartOfDay(services_.clock.now());
    PassAccumulator pass(availableProjects_);
    PassNotes notes;
    for (const Scope& scope : scopes) {
        const ScopeMemory::Focus focus = focusOf(scope, monitored, startOfDay);
        const QString key = scopeKey(scope);
        ScopeStep step = ScopeStep::next;
        // A scope left alone for now (a closed team) shows what it answered last.
        if (isLeftAlone(key))
            memories_.value(key).feed(pass, scope.slug);
        else if (complete || needsCompleteReading(key, focus))
            step = co_await refreshScope(client, scope, focus, pass, notes);
        else
            step = co_await readChanges(client, scope, focus, pass, notes);
        if (!self || step == ScopeStep::ended)
            co_return;
        if (step == ScopeStep::abandoned) {
            // Gone with the token (which ended the pass), or the kept readings were dropped.
            if (self->generation_ == generation)
                self->setRefreshing(false);
            co_return;
        }
    }
    finishPass(pass, notes, client.pacer() ? client.pacer()->sent() - sentBefore : 0, monitored);
}

void AppState::finishPass(PassAccumulator& pass, const PassNotes& notes, int requests,
                          const QSet<QString>& monitored) {
    PassAccumulator::Result result =
        pass.finish(monitored, countProductionOnly_, localStartOfDay(services_.clock.now()));
    notifyFailures(result.snapshots);
    hasLoadedOnce_ = true;
    lastPassRequests_ = requests;
    setSlowedDown(notes.heldUntil.has_value());
    publish(std::move(result.snapshots), result.todayCount);
    if (lastError_ && !snapshots_.isEmpty())
        setLastError(std::nullopt);
    setRefreshing(false);
    const bool again = std::exchange(passAfterThis_, false);
    // A team whose projects were missing from the list answered: they can be listed now.
    if (notes.relist) {
        loadProjects();
    } else {
        for (const Scope& scope : notes.toList)
            listScope(scope, notes.unlistedProjects);
        // The monitored projects changed while the pass ran, and its request for a pass was
        // dropped.
        if (notes.toList.isEmpty() && effectiveMonitoredIDs() != monitored)
            refresh();
    }
    // An action succeeded during this pass, which may have read the scope before it.
    if (again)
        startLoop();
}

// Eight seconds while anything builds, else the interval but at least ten; longer when Vercel
// asked to wait, or when the requests left in its window would not last until it resets.
std::chrono::milliseconds AppState::pauseAfterPass() {
    const bool building = std::any_of(snapshots_.begin(), snapshots_.end(), [](const auto& s) {
        return s.latest && isInProgress(s.latest->status());
    });
    std::chrono::milliseconds pause =
        building ? 8s
                 : std::chrono::milliseconds(std::chrono::seconds(std::max(refreshInterval_, 10)));
    if (api_ && api_->pacer())
        pause = std::max(pause, api_->pacer()->pauseFor(lastPassRequests_));
    nextCheck_ = services_.clock.now().addMSecs(pause.count());
    if (slowedDown_)
        Q_EMIT noticesChanged(); // the notice says when the next check comes
    Q_EMIT changed();
    return pause;
}

void AppState::startLoop() {
    cancelLoop();
    loopTask_ = std::make_shared<Cancellation>();
    runLoop(QPointer<AppState>(this), loopTask_);
}

void AppState::cancelLoop() {
    if (loopTask_)
        loopTask_->cancel();
    loopTask_.reset();
}

// A pass started elsewhere (the first listing starts one, so does a preference) makes the loop's
// own call return at once; the pause is chosen from what that pass publishes, not from before it.
QCoro::Task<> AppState::passFinished(std::shared_ptr<Cancellation> token) {
    if (!isRefreshing_ || token->isCancelled())
        co_return;
    Cancellation done;
    QObject::connect(this, &AppState::refreshingChanged, &done, [this, &done] {
        if (!isRefreshing_)
            done.cancel();
    });
    QObject::connect(token.get(), &Cancellation::cancelled, &done, &Cancellation::cancel);
    co_await qCoro(&done, &Cancellation::cancelled);
}

QCoro::Task<> AppState::runLoop(QPointer<AppState> self, std::shared_ptr<Cancellation> token) {
    while (self && !token->isCancelled()) {
        co_await self->poll();
        if (self)
            co_await self->passFinished(token);
        if (!self || token->isCancelled())
            co_return;
        Clock& clock = self->clock();
        co_await clock.sleep(self->pauseAfterPass(), token);
    }
}

void AppState::notifyFailures(const QList<ProjectSnapshot>& snapshots) {
    const bool firstPass = previousStatus_.isEmpty();
    const NotificationPolicy policy = notificationPolicy();
    const QDateTime now = services_.clock.now();
    for (const ProjectSnapshot& snapshot : snapshots) {
        const DeployStatus status = snapshot.status();
        // A blocked deployment is told like a failed one, with the reason Vercel gives.
        if (notifyOnFailure_ && !firstPass && snapshot.latest && isFailure(status) &&
            !notifiedDeployments_.contains(snapshot.latest->deploymentID()) &&
            previousStatus_.value(snapshot.id, DeployStatus::unknown) != status) {
            // A failure the policy keeps quiet is settled too: unmuting does not bring it late.
            notifiedDeployments_.insert(snapshot.latest->deploymentID());
            if (policy.allows(snapshot, now)) {
                notifiedFailures_.insert(snapshot.latest->deploymentID(), snapshot);
                pause_.deliver(failureNotification(snapshot));
            }
        }
        previousStatus_.insert(snapshot.id, status);
    }
    noticeFixes(snapshots, policy, now);
    warnSlowBuilds(snapshots);
}

// "Live again" follows the failures of the deployments the policy concerns itself with; a muted
// project or a paused monitor stays silent, and the failure counts as answered all the same.
void AppState::noticeFixes(const QList<ProjectSnapshot>& snapshots,
                           const NotificationPolicy& policy, const QDateTime& now) {
    for (const ProjectSnapshot& snapshot : snapshots) {
        if (!snapshot.latest || !policy.concerns(*snapshot.latest))
            continue;
        if (recovery_.endsFailure(snapshot) && notifyWhenFixed_ &&
            !policy.isMuted(snapshot.id, now) && !pause_.isPaused())
            services_.notifications.post(fixedNotification(snapshot));
    }
}

void AppState::warnSlowBuilds(const QList<ProjectSnapshot>& snapshots) {
    // A paused monitor stays silent; a build still slow when the pause ends is told then.
    if (!slowBuildWarning_ || pause_.isPaused())
        return;
    const NotificationPolicy policy = notificationPolicy();
    const QDateTime now = services_.clock.now();
    for (const ProjectSnapshot& snapshot : snapshots) {
        const std::optional<double> elapsed = slowBuildElapsed(snapshot, now);
        if (!elapsed || slowWarned_.contains(snapshot.latest->deploymentID()) ||
            !policy.allows(snapshot, now))
            continue;
        slowWarned_.insert(snapshot.latest->deploymentID());
        services_.notifications.post(slowBuildNotification(snapshot, *elapsed));
    }
}
