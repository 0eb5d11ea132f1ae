#include "core/monitor/FailureRecovery.h"

bool FailureRecovery::endsFailure(const ProjectSnapshot& snapshot) {
    if (!snapshot.latest)
        return false;
    const DeployStatus status = snapshot.status();
    if (status == DeployStatus::error) {
        const QString failed = snapshot.latest->deploymentID();
        // The first failure of a run is the one a recovery answers; one already recovered from
        // (the list showing an older deployment again) starts nothing.
        if (!failing_.contains(snapshot.id) && !recovered_.contains(failed))
            failing_.insert(snapshot.id, failed);
        return false;
    }
    if (status != DeployStatus::ready)
        return false;
    const auto failure = failing_.constFind(snapshot.id);
    if (failure == failing_.constEnd())
        return false;
    recovered_.insert(*failure);
    failing_.erase(failure);
    return true;
}
