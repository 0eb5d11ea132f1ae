#pragma once

#include "core/monitor/DeploymentAction.h"

#include <QString>
#include <optional>

// What a project's row shows of the last action asked of it: "Redeploying…" or "Canceling…" while
// the request runs, then why it failed, if it did, until the deployment changes, another action
// starts or 30 seconds pass. A success leaves nothing: the next pass shows its effect.
struct ActionState {
    DeploymentAction action = DeploymentAction::redeploy;
    bool running = false;
    std::optional<QString> problem; // in the user's language, when asked
};
