#include "ui/common/ActionConfirmationWindow.h"

#include "core/common/Language.h"
#include "core/monitor/AppState.h"
#include "ui/status/X11StartupNotification.h"

#include <QApplication>
#include <QPushButton>

ActionConfirmationWindow* ActionConfirmationWindow::ask(AppState& state, DeploymentAction action,
                                                        const ProjectSnapshot& snapshot,
                                                        const QString& activationToken) {
    for (QWidget* window : QApplication::topLevelWidgets()) {
        auto* open = qobject_cast<ActionConfirmationWindow*>(window);
        if (open && open->isVisible() && open->action_ == action &&
            open->snapshot_.id == snapshot.id) {
            open->present(activationToken);
            return open;
        }
    }
    auto* window = new ActionConfirmationWindow(state, action, snapshot);
    window->present(activationToken);
    return window;
}

ActionConfirmationWindow::ActionConfirmationWindow(AppState& state, DeploymentAction action,
                                                   ProjectSnapshot snapshot)
    : QMessageBox(QMessageBox::Question, QStringLiteral("Quillon"),
                  state.actionConfirmation(action, snapshot), QMessageBox::NoButton),
      state_(&state), action_(action), snapshot_(std::move(snapshot)) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::NonModal);
    confirm_ = addButton(action == DeploymentAction::redeploy
                             ? Language::text("Redeploy", "Redéployer")
                             : Language::text("Cancel build", "Annuler le build"),
                         QMessageBox::AcceptRole);
    keep_ = addButton(Language::text("Keep", "Garder"), QMessageBox::RejectRole);
    // Enter and Escape both keep: only a deliberate click or Space on the action sends it.
    setDefaultButton(qobject_cast<QPushButton*>(keep_));
    setEscapeButton(keep_);
    connect(this, &QMessageBox::buttonClicked, this, &ActionConfirmationWindow::answer);
}

void ActionConfirmationWindow::present(const QString& activationToken) {
    // Above the capsule, which stays on top of ordinary windows. (QMessageBox sets its own flags
    // while it is built.)
    setWindowFlag(Qt::WindowStaysOnTopHint);
    // The click happened in another program, so Quillon's own last input time is old and the
    // window manager would leave the keyboard where it is; the click's token vouches for it.
    markStartup(activationToken, *this);
    show();
    raise();
    activateWindow();
    completeStartup(activationToken, *this);
}

void ActionConfirmationWindow::answer(QAbstractButton* button) {
    if (button != confirm_ || !state_)
        return;
    if (action_ == DeploymentAction::redeploy)
        state_->redeploy(snapshot_);
    else
        state_->cancelDeployment(snapshot_);
}
