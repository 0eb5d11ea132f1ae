#include "core/monitor/PassAccumulator.h"

#include <algorithm>

double creationTime(const VercelDeployment& deployment) {
    return deployment.createdAt.value_or(deployment.created.value_or(0.0));
}

QDateTime localStartOfDay(const QDateTime& now) {
    return now.toLocalTime().date().startOfDay();
}

namespace {

QList<VercelDeployment> uniqueNewestFirst(const QList<VercelDeployment>& list) {
    QList<VercelDeployment> unique;
    unique.reserve(list.size());
    QSet<QString> seen;
    for (const VercelDeployment& deployment : list) {
        const QString id = deployment.deploymentID();
        if (seen.contains(id))
            continue;
        seen.insert(id);
        unique.append(deployment);
    }
    std::stable_sort(unique.begin(), unique.end(),
                     [](const VercelDeployment& a, const VercelDeployment& b) {
                         return creationTime(a) > creationTime(b);
                     });
    return unique;
}

bool inProgress(const ProjectSnapshot& snapshot) {
    return snapshot.latest && isInProgress(snapshot.latest->status());
}

double latestCreation(const ProjectSnapshot& snapshot) {
    return snapshot.latest ? creationTime(*snapshot.latest)
                           : -std::numeric_limits<double>::infinity();
}

} // namespace

PassAccumulator::PassAccumulator(const QList<ProjectRef>& availableProjects)
    : available_(availableProjects) {
    for (const ProjectRef& ref : availableProjects)
        index_.insert(ref.scopeSlug + QLatin1Char('/') + ref.name, ref);
}

void PassAccumulator::addProjects(const QList<VercelProject>& projects) {
    for (const VercelProject& project : projects) {
        QList<VercelDeployment>& entry = byProject_[project.id];
        if (project.latestDeployments)
            entry.append(*project.latestDeployments);
    }
}

void PassAccumulator::addDeployments(const QString& scopeSlug,
                                     const QList<VercelDeployment>& deployments) {
    for (const VercelDeployment& deployment : deployments) {
        if (deployment.projectId) {
            byProject_[*deployment.projectId].append(deployment);
            continue;
        }
        const QString key = scopeSlug + QLatin1Char('/') + deployment.name.value_or(QString());
        const auto found = index_.constFind(key);
        if (found != index_.constEnd())
            byProject_[found->id].append(deployment);
    }
}

std::optional<double>
PassAccumulator::medianBuildDuration(const QList<VercelDeployment>& newestFirst) {
    QList<double> durations;
    int readyCount = 0;
    for (const VercelDeployment& deployment : newestFirst) {
        if (deployment.status() != DeployStatus::ready)
            continue;
        if (++readyCount > 10)
            break;
        if (const auto duration = deployment.buildDuration())
            durations.append(*duration);
    }
    if (durations.isEmpty())
        return std::nullopt;
    std::sort(durations.begin(), durations.end());
    return durations.at(durations.size() / 2);
}

void PassAccumulator::order(QList<ProjectSnapshot>& snapshots) {
    std::stable_sort(snapshots.begin(), snapshots.end(),
                     [](const ProjectSnapshot& a, const ProjectSnapshot& b) {
                         if (inProgress(a) != inProgress(b))
                             return inProgress(a);
                         return latestCreation(a) > latestCreation(b);
                     });
}

PassAccumulator::Result PassAccumulator::finish(const QSet<QString>& monitored, bool productionOnly,
                                                const QDateTime& startOfDay) const {
    Result result;
    QSet<QString> today;
    const double dayStartMs = static_cast<double>(startOfDay.toMSecsSinceEpoch());
    for (const ProjectRef& ref : available_) {
        if (!monitored.contains(ref.id))
            continue;
        const QList<VercelDeployment> deployments = uniqueNewestFirst(byProject_.value(ref.id));
        ProjectSnapshot snapshot{ref.id,     ref.name,     ref.scopeSlug,
                                 ref.teamId, std::nullopt, medianBuildDuration(deployments)};
        if (!deployments.isEmpty())
            snapshot.latest = deployments.first();
        result.snapshots.append(std::move(snapshot));
        for (const VercelDeployment& deployment : deployments) {
            if (creationTime(deployment) < dayStartMs)
                continue;
            if (productionOnly && !deployment.isProduction())
                continue;
            today.insert(deployment.deploymentID());
        }
    }
    order(result.snapshots);
    result.todayCount = static_cast<int>(today.size());
    return result;
}
