#pragma once

#include "core/monitor/PlatformServices.h"
#include "core/vercel/ProjectSnapshot.h"

// The notification for a snapshot whose latest deployment failed, in the user's language:
// "<project>: deployment failed", body "Branch main · Fix login · 2 min 5 s"; for a blocked one
// "<project>: deployment blocked" with Vercel's reason.
FailureNotification failureNotification(const ProjectSnapshot& snapshot);

// The notification for a project live again after a failure: "<project> is live again", with the
// same body of the ready deployment (its branch, commit and build time).
FailureNotification fixedNotification(const ProjectSnapshot& snapshot);
