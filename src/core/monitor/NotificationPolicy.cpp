#include "core/monitor/NotificationPolicy.h"

bool NotificationPolicy::isBotBranch(const QString& branch) {
    return branch.startsWith(QLatin1String("dependabot/")) ||
           branch.startsWith(QLatin1String("renovate/"));
}

bool NotificationPolicy::concerns(const VercelDeployment& deployment) const {
    if (filters_.productionOnly && !deployment.isProduction())
        return false;
    if (filters_.onlyMine && accountUserId_ && deployment.creatorUid != accountUserId_)
        return false;
    if (filters_.ignoreBots) {
        if (const std::optional<QString> branch = deployment.branch();
            branch && isBotBranch(*branch))
            return false;
    }
    return true;
}

bool NotificationPolicy::isMuted(const QString& projectId, const QDateTime& now) const {
    const auto mute = mutes_.constFind(projectId);
    return mute != mutes_.constEnd() && mute->isActive(now);
}

bool NotificationPolicy::allows(const ProjectSnapshot& snapshot, const QDateTime& now) const {
    return snapshot.latest && concerns(*snapshot.latest) && !isMuted(snapshot.id, now);
}
