#pragma once

#include "core/monitor/DeploymentAction.h"
#include "core/vercel/ProjectSnapshot.h"

#include <QMessageBox>
#include <QPointer>

class AppState;
class QAbstractButton;

// Asks before an action that comes from outside the panel (the failure notification's "Redeploy",
// the capsule's "Cancel build"): the same question as the panel's row, with the action and "Keep".
// Escape and closing the window keep. It stays above Quillon's capsule and takes the keyboard;
// confirmed, it hands the snapshot it asked about to the state's operation. Never modal: the tray
// and the panel go on answering while it waits.
class ActionConfirmationWindow : public QMessageBox {
    Q_OBJECT
public:
    // Opens the question, or brings forward the one already open for that project and action.
    // `activationToken`, when the click that asked came with one (a notification's button), lets
    // the desktop hand the keyboard to the window despite its focus-stealing prevention.
    static ActionConfirmationWindow* ask(AppState& state, DeploymentAction action,
                                         const ProjectSnapshot& snapshot,
                                         const QString& activationToken = {});

    DeploymentAction action() const { return action_; }
    const ProjectSnapshot& snapshot() const { return snapshot_; }
    QAbstractButton* confirmButton() const { return confirm_; }
    QAbstractButton* keepButton() const { return keep_; }

private:
    ActionConfirmationWindow(AppState& state, DeploymentAction action, ProjectSnapshot snapshot);
    void answer(QAbstractButton* button);
    void present(const QString& activationToken);

    QPointer<AppState> state_;
    DeploymentAction action_;
    ProjectSnapshot snapshot_;
    QAbstractButton* confirm_;
    QAbstractButton* keep_;
};
