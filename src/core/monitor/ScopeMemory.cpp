#include "core/monitor/ScopeMemory.h"

#include "core/monitor/PassAccumulator.h"

#include <algorithm>
#include <cmath>

namespace {

void sortNewestFirst(QList<VercelDeployment>& list) {
    std::stable_sort(list.begin(), list.end(),
                     [](const VercelDeployment& a, const VercelDeployment& b) {
                         return creationTime(a) > creationTime(b);
                     });
}

// The first of each deployment id wins, as in a pass.
void dropDuplicates(QList<VercelDeployment>& list) {
    QSet<QString> seen;
    list.removeIf([&](const VercelDeployment& deployment) {
        const QString id = deployment.deploymentID();
        if (seen.contains(id))
            return true;
        seen.insert(id);
        return false;
    });
}

double newestOf(const QList<VercelDeployment>& list, double newest) {
    for (const VercelDeployment& deployment : list)
        newest = std::max(newest, creationTime(deployment));
    return newest;
}

// Replaces each deployment that `fresh` holds anew; answers the ids it replaced.
QSet<QString> refresh(QList<VercelDeployment>& list,
                      const QHash<QString, VercelDeployment>& fresh) {
    QSet<QString> replaced;
    for (VercelDeployment& deployment : list) {
        const auto found = fresh.constFind(deployment.deploymentID());
        if (found == fresh.constEnd())
            continue;
        deployment = *found;
        replaced.insert(found.key());
    }
    return replaced;
}

} // namespace

std::optional<QString> ScopeMemory::projectOf(const VercelDeployment& deployment,
                                              const Focus& focus) const {
    if (deployment.projectId)
        return deployment.projectId;
    const auto found = focus.projectByName.constFind(deployment.name.value_or(QString()));
    if (found == focus.projectByName.constEnd())
        return std::nullopt;
    return *found;
}

QSet<QString> ScopeMemory::unknownProjects(const QList<VercelDeployment>& deployments,
                                           const Focus& focus) const {
    QSet<QString> unknown;
    for (const VercelDeployment& deployment : deployments) {
        if (deployment.projectId && !focus.known.contains(*deployment.projectId))
            unknown.insert(*deployment.projectId);
    }
    return unknown;
}

// Keeps the newest of the scope, and beyond them the monitored projects' deployments of today.
void ScopeMemory::trim(const Focus& focus) {
    sortNewestFirst(recent_);
    dropDuplicates(recent_);
    int index = 0;
    recent_.removeIf([&](const VercelDeployment& deployment) {
        if (index++ < kNewest)
            return false;
        const std::optional<QString> project = projectOf(deployment, focus);
        return !project || !focus.monitored.contains(*project) ||
               creationTime(deployment) < focus.dayStartMs;
    });
}

// Vercel lists each project's few newest deployments: a new one pushes the oldest out.
void ScopeMemory::addToLatest(const VercelDeployment& deployment, const Focus& focus) {
    const std::optional<QString> project = projectOf(deployment, focus);
    if (!project || !focus.monitored.contains(*project) || latestCap_ <= 0)
        return;
    QList<VercelDeployment>& latest = latest_[*project];
    latest.append(deployment); // after the kept ones: of two made at once, the first listed wins
    sortNewestFirst(latest);
    dropDuplicates(latest);
    if (latest.size() > latestCap_)
        latest.resize(latestCap_);
}

double ScopeMemory::serverTimeAt(const QDateTime& local) const {
    if (!anchorAt_.isValid())
        return anchorMs_;
    return anchorMs_ + static_cast<double>(std::max<qint64>(0, anchorAt_.msecsTo(local)));
}

// An answer sent at `sentAt` reached Vercel when its clock was at serverTimeAt(sentAt) or later,
// and after the newest deployment it holds: everything created a margin before that is known.
void ScopeMemory::noteAnswer(double newestMs, const Exchange& exchange, bool fresh) {
    const double reached = std::max(serverTimeAt(exchange.sentAt), newestMs);
    if (std::isfinite(reached)) {
        const double covered = reached - static_cast<double>(kLateMs);
        coveredMs_ = fresh ? covered : std::max(coveredMs_, covered);
    }
    const double atReceipt = std::max(serverTimeAt(exchange.receivedAt), newestMs);
    if (std::isfinite(atReceipt)) {
        anchorMs_ = atReceipt;
        anchorAt_ = exchange.receivedAt;
    }
}

QSet<QString> ScopeMemory::replace(const QList<VercelProject>& projects,
                                   const QList<VercelDeployment>& deployments, const Focus& focus,
                                   const Exchange& exchange) {
    replaceLatest(projects, focus);
    recent_ = deployments;
    trim(focus);
    monitored_ = focus.monitored;
    readAt_ = exchange.receivedAt;
    double newest = newestOf(deployments, -std::numeric_limits<double>::infinity());
    for (const QList<VercelDeployment>& latest : std::as_const(latest_))
        newest = newestOf(latest, newest);
    noteAnswer(newest, exchange, true);
    return unknownProjects(deployments, focus);
}

void ScopeMemory::replaceLatest(const QList<VercelProject>& projects, const Focus& focus) {
    latest_.clear();
    latestCap_ = 0;
    for (const VercelProject& project : projects) {
        if (!project.latestDeployments)
            continue;
        latestCap_ = std::max(latestCap_, static_cast<int>(project.latestDeployments->size()));
        if (!focus.monitored.contains(project.id))
            continue;
        QList<VercelDeployment> latest = *project.latestDeployments;
        sortNewestFirst(latest);
        latest_.insert(project.id, latest);
    }
}

QSet<QString> ScopeMemory::merge(const Changes& changes, const Focus& focus,
                                 const Exchange& exchange) {
    const double after = static_cast<double>(since());
    QSet<QString> listed;
    for (const VercelDeployment& deployment : changes.created)
        listed.insert(deployment.deploymentID());
    // Created after since() yet missing from the answer, or no longer found: deleted.
    const auto deleted = [&](const VercelDeployment& deployment) {
        const QString id = deployment.deploymentID();
        return changes.gone.contains(id) ||
               (creationTime(deployment) > after && !listed.contains(id));
    };
    recent_.removeIf(deleted);
    for (QList<VercelDeployment>& latest : latest_)
        latest.removeIf(deleted);

    QHash<QString, VercelDeployment> fresh;
    for (const VercelDeployment& deployment : changes.rechecked)
        fresh.insert(deployment.deploymentID(), deployment);
    for (const VercelDeployment& deployment : changes.created)
        fresh.insert(deployment.deploymentID(), deployment);
    for (QList<VercelDeployment>& latest : latest_)
        refresh(latest, fresh);
    const QSet<QString> kept = refresh(recent_, fresh);
    for (const VercelDeployment& deployment : changes.created) {
        if (!kept.contains(deployment.deploymentID()))
            recent_.append(deployment);
        addToLatest(deployment, focus);
    }
    trim(focus);
    noteAnswer(newestOf(changes.created, -std::numeric_limits<double>::infinity()), exchange,
               false);
    return unknownProjects(changes.created, focus);
}

qint64 ScopeMemory::since() const {
    return static_cast<qint64>(std::floor(coveredMs_));
}

QList<VercelDeployment> ScopeMemory::stillRunning(const Focus& focus) const {
    const double after = static_cast<double>(since());
    QList<VercelDeployment> running;
    QSet<QString> seen;
    const auto consider = [&](const VercelDeployment& deployment) {
        const std::optional<QString> project = projectOf(deployment, focus);
        if (!isInProgress(deployment.status()) || creationTime(deployment) > after || !project ||
            !focus.monitored.contains(*project) || seen.contains(deployment.deploymentID()))
            return;
        seen.insert(deployment.deploymentID());
        running.append(deployment);
    };
    for (const VercelDeployment& deployment : recent_)
        consider(deployment);
    for (const QList<VercelDeployment>& latest : latest_) {
        for (const VercelDeployment& deployment : latest)
            consider(deployment);
    }
    return running;
}

void ScopeMemory::feed(PassAccumulator& pass, const QString& scopeSlug) const {
    QList<VercelProject> projects;
    projects.reserve(latest_.size());
    for (auto it = latest_.constBegin(); it != latest_.constEnd(); ++it)
        projects.append({it.key(), QString(), *it});
    pass.addProjects(projects);
    pass.addDeployments(scopeSlug, recent_);
}

int ScopeMemory::size() const {
    qsizetype count = recent_.size();
    for (const QList<VercelDeployment>& latest : latest_)
        count += latest.size();
    return static_cast<int>(count);
}
