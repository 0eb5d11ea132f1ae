#pragma once

#include "core/vercel/VercelAPI.h"

#include <QCoro/QCoroTask>
#include <optional>

// The two requests that change a deployment, sent as Vercel's own CLI sends them, in the scope of
// the deployment's team when it has one. Each answers the deployment Vercel returns, or none when
// that answer cannot be read (the change was made all the same).

// A new build of `from`, in the same project and for the same target: POST /v13/deployments
// ?forceNew=1 with {"deploymentId", "meta": {"action": "redeploy"}, "name", "target"} (no target
// for a preview).
QCoro::Task<RequestResult<std::optional<VercelDeployment>>>
requestRedeploy(VercelAPI api, VercelDeployment from, QString projectName,
                std::optional<QString> teamId);

// Stops a queued or running build: PATCH /v12/deployments/{id}/cancel, without a body.
QCoro::Task<RequestResult<std::optional<VercelDeployment>>>
requestCancel(VercelAPI api, QString deploymentID, std::optional<QString> teamId);
