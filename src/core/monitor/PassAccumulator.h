#pragma once

#include "core/vercel/ProjectRef.h"
#include "core/vercel/ProjectSnapshot.h"
#include "core/vercel/VercelRecords.h"

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QSet>

// The pure part of one refresh pass: collects what the scopes answered, then turns it into the
// ordered snapshots of the monitored projects and today's count.
class PassAccumulator {
public:
    explicit PassAccumulator(const QList<ProjectRef>& availableProjects);

    // Every project's latestDeployments, monitored or not.
    void addProjects(const QList<VercelProject>& projects);
    // A scope's recent deployments, attached by projectId, else by scope slug + "/" + name.
    void addDeployments(const QString& scopeSlug, const QList<VercelDeployment>& deployments);

    struct Result {
        QList<ProjectSnapshot> snapshots; // in display order
        int todayCount = 0;
    };
    Result finish(const QSet<QString>& monitored, bool productionOnly,
                  const QDateTime& startOfDay) const;

    // Median of the newest (at most 10) ready builds, upper middle for an even count.
    static std::optional<double> medianBuildDuration(const QList<VercelDeployment>& newestFirst);
    // Building projects first, then newest latest deployment first; stable.
    static void order(QList<ProjectSnapshot>& snapshots);

private:
    QList<ProjectRef> available_;
    QHash<QString, ProjectRef> index_; // slug + "/" + name
    QHash<QString, QList<VercelDeployment>> byProject_;
};

// createdAt, else created, else 0 (ms since the epoch).
double creationTime(const VercelDeployment& deployment);
// Local midnight of the day `now` falls in: where today's count starts.
QDateTime localStartOfDay(const QDateTime& now);
