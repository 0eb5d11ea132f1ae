// Actions on a project's latest deployment: redeploy, cancel, copy its address.
#include "core/common/Language.h"
#include "core/demo/DemoDirector.h"
#include "core/monitor/AppState.h"
#include "core/vercel/DeploymentWrites.h"

using namespace std::chrono_literals;

namespace {

// A failed action's sentence stays this long in the row, unless something replaces it earlier.
constexpr auto problemShown = 30s;

bool applies(DeploymentAction action, const ProjectSnapshot& snapshot) {
    if (!snapshot.latest)
        return false;
    const DeployStatus status = snapshot.latest->status();
    if (action == DeploymentAction::cancel)
        return isInProgress(status);
    return status == DeployStatus::error || status == DeployStatus::canceled;
}

// "Commit “Fix build” (a1b2c3d) on main.", from what the deployment tells of its commit.
QString commitSentence(const VercelDeployment& deployment) {
    const std::optional<QString> title = deployment.commitTitle();
    const std::optional<QString> sha = deployment.shortSHA();
    const std::optional<QString> branch = deployment.branch();
    QString commit;
    if (title)
        commit = Language::text("Commit “%1”", "Commit « %1 »").arg(*title);
    if (sha)
        commit = commit.isEmpty() ? QStringLiteral("Commit ") + *sha
                                  : commit + QStringLiteral(" (") + *sha + QLatin1Char(')');
    if (branch)
        commit = commit.isEmpty() ? Language::text("Branch ", "Branche ") + *branch
                                  : commit + Language::text(" on ", " sur ") + *branch;
    return commit.isEmpty() ? QString() : commit + QLatin1Char('.');
}

} // namespace

bool AppState::canRedeploy(const ProjectSnapshot& snapshot) const {
    return applies(DeploymentAction::redeploy, snapshot);
}

bool AppState::canCancel(const ProjectSnapshot& snapshot) const {
    return applies(DeploymentAction::cancel, snapshot);
}

std::optional<QUrl> AppState::deploymentURL(const ProjectSnapshot& snapshot) const {
    if (!snapshot.latest || snapshot.latest->status() != DeployStatus::ready)
        return std::nullopt;
    const QString address = snapshot.latest->url.value_or(QString()).trimmed();
    if (address.isEmpty())
        return std::nullopt;
    const QUrl url(QStringLiteral("https://") + address, QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty())
        return std::nullopt;
    return url;
}

bool AppState::copyDeploymentURL(const ProjectSnapshot& snapshot) {
    const std::optional<QUrl> url = deploymentURL(snapshot);
    if (!url)
        return false;
    services_.clipboard.setText(url->toString());
    return true;
}

QString AppState::actionConfirmation(DeploymentAction action,
                                     const ProjectSnapshot& snapshot) const {
    const bool production = snapshot.latest && snapshot.latest->isProduction();
    const QString target = production ? Language::text("Production", "production")
                                      : Language::text("Preview", "preview");
    QString question = action == DeploymentAction::redeploy
                           ? Language::text("Redeploy %1 to %2?", "Redéployer %1 en %2 ?")
                                 .arg(snapshot.name, target)
                           : Language::text("Cancel the %2 deployment of %1?",
                                            "Annuler le déploiement de %1 en %2 ?")
                                 .arg(snapshot.name, target);
    if (snapshot.latest) {
        const QString commit = commitSentence(*snapshot.latest);
        if (!commit.isEmpty())
            question += QLatin1Char(' ') + commit;
    }
    return question;
}

std::optional<ActionState> AppState::actionState(const QString& projectID) const {
    const auto found = actions_.constFind(projectID);
    if (found == actions_.constEnd())
        return std::nullopt;
    ActionState state{found->action, !found->problem.has_value(), std::nullopt};
    if (found->problem)
        state.problem = found->problem->sentence();
    return state;
}

QCoro::Task<bool> AppState::redeploy(ProjectSnapshot snapshot) {
    const ActionResult result = co_await act(DeploymentAction::redeploy, std::move(snapshot));
    co_return result.done;
}

QCoro::Task<bool> AppState::cancelDeployment(ProjectSnapshot snapshot) {
    const ActionResult result = co_await act(DeploymentAction::cancel, std::move(snapshot));
    co_return result.done;
}

QCoro::Task<AppState::ActionResult> AppState::act(DeploymentAction action,
                                                  ProjectSnapshot snapshot) {
    const auto current = actions_.constFind(snapshot.id);
    if (current != actions_.constEnd() && !current->problem)
        co_return ActionResult{}; // one at a time per project
    if (!applies(action, snapshot))
        co_return refuseAction(action, snapshot, ActionProblem::Kind::nothingToDo);
    if (isDemo_)
        co_return playDemoAction(action, snapshot);
    if (!api_ || !connection_.isConnected())
        co_return refuseAction(action, snapshot, ActionProblem::Kind::notConnected);

    const quint64 serial = ++actionSerial_;
    actions_.insert(snapshot.id, {action, snapshot.latest->deploymentID(), std::nullopt, serial});
    Q_EMIT actionsChanged();
    QPointer<AppState> self(this);
    const RequestResult<std::optional<VercelDeployment>> answer =
        co_await sendAction(action, snapshot);
    if (!self)
        co_return ActionResult{};
    if (!answer) {
        const ActionProblem problem = ActionProblem::from(action, answer.error());
        setActionProblem(snapshot.id, serial, problem);
        co_return ActionResult{false, {}, problem};
    }
    removeAction(snapshot.id, serial);
    askForPass();
    co_return ActionResult{true, answer.value(), std::nullopt};
}

QCoro::Task<RequestResult<std::optional<VercelDeployment>>>
AppState::sendAction(DeploymentAction action, const ProjectSnapshot& snapshot) {
    if (action == DeploymentAction::redeploy)
        return requestRedeploy(*api_, *snapshot.latest, snapshot.name, snapshot.teamId);
    return requestCancel(*api_, snapshot.latest->deploymentID(), snapshot.teamId);
}

// The demo's fake deployments change at once, without a request: nothing runs, nothing fails
// but a cancel that comes after the build ended.
AppState::ActionResult AppState::playDemoAction(DeploymentAction action,
                                                const ProjectSnapshot& snapshot) {
    if (action == DeploymentAction::redeploy) {
        if (std::optional<VercelDeployment> started = demo_->redeploy(snapshot.id))
            return {true, std::move(started), std::nullopt};
        return refuseAction(action, snapshot, ActionProblem::Kind::nothingToDo);
    }
    if (demo_->cancel(snapshot.id))
        return {true, demo_->latest(snapshot.id), std::nullopt};
    return refuseAction(action, snapshot, ActionProblem::Kind::alreadyFinished);
}

AppState::ActionResult AppState::refuseAction(DeploymentAction action,
                                              const ProjectSnapshot& snapshot,
                                              ActionProblem::Kind why) {
    const quint64 serial = ++actionSerial_;
    const QString deploymentID = snapshot.latest ? snapshot.latest->deploymentID() : QString();
    actions_.insert(snapshot.id, {action, deploymentID, std::nullopt, serial});
    const ActionProblem problem = ActionProblem::of(action, why);
    setActionProblem(snapshot.id, serial, problem);
    return {false, {}, problem};
}

void AppState::setActionProblem(const QString& projectID, quint64 serial, ActionProblem problem) {
    const auto found = actions_.find(projectID);
    if (found == actions_.end() || found->serial != serial)
        return;
    found->problem = std::move(problem);
    Q_EMIT actionsChanged();
    expireProblem(QPointer<AppState>(this), projectID, serial, actionWaits_);
}

void AppState::removeAction(const QString& projectID, quint64 serial) {
    const auto found = actions_.find(projectID);
    if (found == actions_.end() || found->serial != serial)
        return;
    actions_.erase(found);
    Q_EMIT actionsChanged();
}

QCoro::Task<> AppState::expireProblem(QPointer<AppState> self, QString projectID, quint64 serial,
                                      std::shared_ptr<Cancellation> token) {
    co_await self->clock().sleep(problemShown, token);
    if (self && !token->isCancelled())
        self->removeAction(projectID, serial);
}

// A problem belongs to the deployment it was asked of: once the project's latest is another one
// (or the project is no longer shown), the sentence no longer applies.
void AppState::dropOutdatedProblems() {
    QHash<QString, QString> latest;
    for (const ProjectSnapshot& snapshot : std::as_const(snapshots_))
        latest.insert(snapshot.id, snapshot.latest ? snapshot.latest->deploymentID() : QString());
    const qsizetype before = actions_.size();
    actions_.removeIf([&](const auto& entry) {
        const ActionRecord& record = entry.value();
        return record.problem && latest.value(entry.key()) != record.deploymentID;
    });
    if (actions_.size() != before)
        Q_EMIT actionsChanged();
}

// The new or canceled deployment shows at the next pass, which comes now rather than after the
// loop's pause; one running now may have read the scope before the change.
void AppState::askForPass() {
    if (isDemo_ || !api_ || !connection_.isConnected())
        return;
    if (isRefreshing_) {
        passAfterThis_ = true;
        return;
    }
    startLoop();
}

void AppState::redeployFromNotification(const QString& deploymentID) {
    const auto notified = notifiedFailures_.constFind(deploymentID);
    if (notified == notifiedFailures_.constEnd())
        return;
    for (const ProjectSnapshot& snapshot : std::as_const(snapshots_)) {
        if (snapshot.id != notified->id)
            continue;
        // A newer deployment took its place: the notification's failure is history.
        if (snapshot.latest && snapshot.latest->deploymentID() == deploymentID &&
            canRedeploy(snapshot))
            Q_EMIT redeployRequested(snapshot);
        return;
    }
}
