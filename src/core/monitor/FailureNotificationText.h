#pragma once

#include "core/monitor/PlatformServices.h"
#include "core/vercel/ProjectSnapshot.h"

// The notification for a snapshot whose latest deployment failed, in the user's language:
// "<project>: deployment failed", body "Branch main · Fix login · 2 min 5 s"; for a blocked one
// "<project>: deployment blocked" with Vercel's reason.
FailureNotification failureNotification(const ProjectSnapshot& snapshot);
