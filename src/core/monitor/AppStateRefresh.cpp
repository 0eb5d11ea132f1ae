// The polling loop and one refresh pass.
#include "core/common/Language.h"
#include "core/monitor/AppState.h"
#include "core/monitor/FailureNotificationText.h"
#include "core/monitor/PassAccumulator.h"
#include "core/monitor/SlowBuildCheck.h"

#include <QCoro/QCoroSignal>

using namespace std::chrono_literals;

namespace {

const VercelAPI::Query limit100{{QStringLiteral("limit"), QStringLiteral("100")}};

// Team ids and user names never collide with each other's prefix.
QString scopeKey(const Scope& scope) {
    return scope.teamId ? QStringLiteral("team:") + *scope.teamId
                        : QStringLiteral("user:") + scope.slug;
}

// Local midnight of the day `now` falls in.
QDateTime startOfDay(const QDateTime& now) {
    return now.toLocalTime().date().startOfDay();
}

} // namespace

// Answers true when the error ends the pass: a rejected token ends the connection and the loop.
bool AppState::handlePassError(const RequestError& error) {
    if (error.isUnauthorized()) {
        setConnection(Connection::failed(error.message()));
        cancelLoop();
        setRefreshing(false);
        return true;
    }
    setLastError(error.message());
    return false;
}

QCoro::Task<> AppState::refresh() {
    if (!api_ || isRefreshing_ || !connection_.isConnected())
        co_return;
    QPointer<AppState> self(this);
    const quint64 generation = generation_;
    auto abandoned = [&] { return !self || self->generation_ != generation; };
    setRefreshing(true);
    const VercelAPI client = *api_;
    const QList<Scope> scopes = scopes_;
    PassAccumulator pass(availableProjects_);

    for (const Scope& scope : scopes) {
        const QString key = scopeKey(scope);
        const VercelAPI::Query query = VercelAPI::withTeam(scope.teamId, limit100);
        const auto projects =
            co_await client.get<ProjectsResponse>(QStringLiteral("/v9/projects"), query);
        if (abandoned())
            co_return;
        if (!projects) {
            if (handlePassError(projects.error()))
                co_return;
            pass.addProjects(lastAnswers_.value(key).projects);
            pass.addDeployments(scope.slug, lastAnswers_.value(key).deployments);
            continue;
        }
        lastAnswers_[key].projects = projects->projects;
        pass.addProjects(projects->projects);

        const auto deployments =
            co_await client.get<DeploymentsResponse>(QStringLiteral("/v6/deployments"), query);
        if (abandoned())
            co_return;
        if (!deployments) {
            if (handlePassError(deployments.error()))
                co_return;
            pass.addDeployments(scope.slug, lastAnswers_.value(key).deployments);
            continue;
        }
        lastAnswers_[key].deployments = deployments->deployments;
        pass.addDeployments(scope.slug, deployments->deployments);
    }

    PassAccumulator::Result result = pass.finish(effectiveMonitoredIDs(), countProductionOnly_,
                                                 startOfDay(services_.clock.now()));
    notifyFailures(result.snapshots);
    hasLoadedOnce_ = true;
    publish(std::move(result.snapshots), result.todayCount);
    if (lastError_ && !snapshots_.isEmpty())
        setLastError(std::nullopt);
    setRefreshing(false);
}

std::chrono::milliseconds AppState::pauseAfterPass() const {
    const bool building = std::any_of(snapshots_.begin(), snapshots_.end(), [](const auto& s) {
        return s.latest && isInProgress(s.latest->status());
    });
    if (building)
        return 8s;
    return std::chrono::seconds(std::max(refreshInterval_, 10));
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
        co_await self->refresh();
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
        if (notifyOnFailure_ && !firstPass && snapshot.latest && status == DeployStatus::error &&
            !notifiedDeployments_.contains(snapshot.latest->deploymentID()) &&
            previousStatus_.value(snapshot.id, DeployStatus::unknown) != DeployStatus::error) {
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
