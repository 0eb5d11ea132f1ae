// What a project row lets the user do with its latest deployment: copy the failure report or the
// live address, open the log, redeploy or cancel after a question asked inside the row.
#include "core/common/Language.h"
#include "core/monitor/AppState.h"
#include "ui/common/MuteMenu.h"
#include "ui/panel/InlineConfirmation.h"
#include "ui/panel/ProjectRow.h"
#include "ui/panel/RowAction.h"
#include "ui/status/StatusPalette.h"

#include <QMenu>

namespace {

QString runningTitle(DeploymentAction action) {
    return action == DeploymentAction::redeploy ? Language::text("Redeploying…", "Redéploiement…")
                                                : Language::text("Canceling…", "Annulation…");
}

QString confirmTitle(DeploymentAction action) {
    return action == DeploymentAction::redeploy
               ? Language::text("Redeploy", "Redéployer")
               : Language::text("Cancel build", "Annuler le build");
}

} // namespace

bool ProjectRow::isRunning(DeploymentAction action) const {
    return action_ && action_->running && action_->action == action;
}

QString ProjectRow::problemText() const {
    return action_ && action_->problem ? *action_->problem : QString();
}

QList<RowAction*> ProjectRow::actionLine() const {
    const DeployStatus s = status();
    if (s == DeployStatus::error)
        return {copy_, log_, redeploy_};
    if (s == DeployStatus::canceled)
        return {redeploy_, log_};
    if (state_.canCancel(snap_))
        return {cancel_};
    return {};
}

void ProjectRow::applyActions() {
    action_ = state_.actionState(snap_.id);
    // A question about a deployment that is no longer there, or no longer fits, is moot.
    if (asking_ && (asking_ == DeploymentAction::redeploy ? !state_.canRedeploy(snap_)
                                                          : !state_.canCancel(snap_)))
        keep();

    const QList<RowAction*> line = asking_ ? QList<RowAction*>() : actionLine();
    for (RowAction* action : {copy_, log_, redeploy_, cancel_})
        action->setVisible(line.contains(action));
    copy_->setTint(palette_.error());
    copy_->setTitle(copied_ ? Language::text("Copied", "Copié")
                            : Language::text("Copy for AI", "Copier pour l'IA"));
    copy_->setSymbol(copied_ ? QStringLiteral("checkmark") : QStringLiteral("doc.on.clipboard"));
    log_->setTint(std::nullopt);
    log_->setTitle(Language::text("View log", "Voir les logs"));
    log_->setSymbol(QStringLiteral("arrow.up.right"));
    redeploy_->setTitle(isRunning(DeploymentAction::redeploy)
                            ? runningTitle(DeploymentAction::redeploy)
                            : Language::text("Redeploy", "Redéployer"));
    redeploy_->setSymbol(QStringLiteral("arrow.clockwise"));
    cancel_->setTitle(isRunning(DeploymentAction::cancel) ? runningTitle(DeploymentAction::cancel)
                                                          : Language::text("Cancel", "Annuler"));
    cancel_->setSymbol(QStringLiteral("xmark"));

    // A live deployment offers its address only while the pointer is over the row, so idle rows
    // stay quiet; "Copied" stays its two seconds wherever the pointer goes.
    const bool offersURL = state_.deploymentURL(snap_).has_value();
    copyURL_->setVisible(offersURL && !asking_ && (hovering_ || urlCopied_));
    copyURL_->setTitle(urlCopied_ ? Language::text("Copied", "Copié")
                                  : Language::text("Copy URL", "Copier l'URL"));
    copyURL_->setSymbol(urlCopied_ ? QStringLiteral("checkmark") : QStringLiteral("link"));
    confirmation_->setVisible(asking_.has_value());
    updateGeometry();
    layoutChildren();
    update();
}

void ProjectRow::ask(DeploymentAction action) {
    const bool applies =
        action == DeploymentAction::redeploy ? state_.canRedeploy(snap_) : state_.canCancel(snap_);
    if (!applies || (action_ && action_->running))
        return;
    asking_ = action;
    const QColor tint =
        action == DeploymentAction::redeploy ? palette_.success() : palette_.error();
    confirmation_->ask(state_.actionConfirmation(action, snap_), confirmTitle(action),
                       action == DeploymentAction::redeploy ? QStringLiteral("arrow.clockwise")
                                                            : QStringLiteral("xmark"),
                       tint, primaryText());
    applyActions();
    confirmation_->setFocus(Qt::OtherFocusReason);
}

void ProjectRow::confirm() {
    if (!asking_)
        return;
    const DeploymentAction action = *asking_;
    asking_.reset();
    // The state runs the request; the row follows it through actionsChanged.
    if (action == DeploymentAction::redeploy)
        state_.redeploy(snap_);
    else
        state_.cancelDeployment(snap_);
    applyActions();
}

void ProjectRow::keep() {
    if (!asking_)
        return;
    asking_.reset();
    applyActions();
}

void ProjectRow::fillContextMenu(QMenu& menu) {
    const bool busy = action_ && action_->running;
    const auto add = [&](const QString& title, bool enabled, auto slot) {
        QAction* item = menu.addAction(title);
        item->setEnabled(enabled);
        // The menu outlives neither the row nor the panel it opened in.
        QObject::connect(item, &QAction::triggered, this, slot);
    };
    const DeployStatus s = status();
    if (s == DeployStatus::error)
        add(Language::text("Copy for AI", "Copier pour l'IA"), true, &ProjectRow::copyForAI);
    if (state_.canRedeploy(snap_))
        add(Language::text("Redeploy…", "Redéployer…"), !busy,
            [this] { ask(DeploymentAction::redeploy); });
    if (state_.canCancel(snap_))
        add(Language::text("Cancel build…", "Annuler le build…"), !busy,
            [this] { ask(DeploymentAction::cancel); });
    if (state_.deploymentURL(snap_))
        add(Language::text("Copy URL", "Copier l'URL"), true, &ProjectRow::copyURL);
    if (s == DeployStatus::error || s == DeployStatus::canceled)
        add(Language::text("View log", "Voir les logs"), snap_.dashboardURL().has_value(),
            &ProjectRow::openDashboard);
    if (!menu.isEmpty())
        menu.addSeparator();
    addMuteActions(menu, state_, snap_.id, snap_.name);
}

void ProjectRow::copyForAI() {
    confirmCopy(this, state_, snap_, alive_);
}

QCoro::Task<> ProjectRow::confirmCopy(QPointer<ProjectRow> self, AppState& state,
                                      ProjectSnapshot snap, std::shared_ptr<Cancellation> token) {
    Clock& clock = state.clock();
    co_await state.copyFailureReport(std::move(snap));
    if (!self)
        co_return;
    self->copied_ = true;
    self->applyActions();
    co_await clock.sleep(copiedDuration, token);
    // Each press clears the confirmation at its own end, also when cut short.
    if (!self)
        co_return;
    self->copied_ = false;
    self->applyActions();
}

void ProjectRow::copyURL() {
    if (!state_.copyDeploymentURL(snap_))
        return;
    confirmURLCopy(this, state_.clock(), alive_);
}

QCoro::Task<> ProjectRow::confirmURLCopy(QPointer<ProjectRow> self, Clock& clock,
                                         std::shared_ptr<Cancellation> token) {
    self->urlCopied_ = true;
    self->applyActions();
    co_await clock.sleep(copiedDuration, token);
    if (!self)
        co_return;
    self->urlCopied_ = false;
    self->applyActions();
}
