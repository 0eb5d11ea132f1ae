#pragma once

#include "core/vercel/VercelRecords.h"

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QSet>
#include <limits>

class PassAccumulator;

// What one scope's refresh passes keep between them, so that most passes ask Vercel only for
// what can have changed.
//
// A complete reading hands a pass the scope's 100 newest deployments, every deployment since
// local midnight and each project's `latestDeployments`. Of these the memory keeps what the
// monitored projects' snapshots and today's count depend on: the 100 newest whatever their
// project (they decide which deployments a reading holds), the monitored projects' deployments
// since midnight beyond them, and the monitored projects' latest deployments. What a later pass
// learns (deployments created since, builds that moved on, deployments gone) slides into that
// window the way it would into a complete reading, so both give the same snapshots.
//
// How far back a pass must look is measured on Vercel's own clock: a deployment's creation time
// says that Vercel's clock had reached it, and the local clock says how much time went by since,
// so a skewed local clock does not matter. A margin covers deployments that Vercel lists a little
// after their creation time.
class ScopeMemory {
public:
    // A complete reading holds at least this many of the newest deployments, whatever their age.
    static constexpr int kNewest = 100;
    // How late after its creation time a deployment may still appear in Vercel's list.
    static constexpr qint64 kLateMs = 2 * 60 * 1000;

    // What a pass is about in this scope.
    struct Focus {
        QString scopeSlug;
        QSet<QString> known;                   // every project id of the scope
        QHash<QString, QString> projectByName; // for deployments without a projectId
        QSet<QString> monitored;               // the monitored project ids of the scope
        double dayStartMs = 0;                 // local midnight
    };

    // When the first request of an answer went out and when the last one came back (local).
    struct Exchange {
        QDateTime sentAt;
        QDateTime receivedAt;
    };

    // What a pass that asked only for changes learned.
    struct Changes {
        QList<VercelDeployment> created;   // every deployment created after since()
        QList<VercelDeployment> rechecked; // stillRunning() as Vercel gives them now
        QSet<QString> gone;                // deployment ids of stillRunning() Vercel no longer has
    };

    // A complete reading: the projects (with their latest deployments) and the deployments read
    // back to midnight. Answers the ids of projects the focus does not know yet.
    QSet<QString> replace(const QList<VercelProject>& projects,
                          const QList<VercelDeployment>& deployments, const Focus& focus,
                          const Exchange& exchange);
    // Only the projects answered: their latest deployments replace the kept ones.
    void replaceLatest(const QList<VercelProject>& projects, const Focus& focus);
    // Answers the ids of projects the focus does not know yet.
    QSet<QString> merge(const Changes& changes, const Focus& focus, const Exchange& exchange);

    // A complete reading was made, and when it was received.
    bool isComplete() const { return readAt_.isValid(); }
    const QDateTime& readAt() const { return readAt_; }
    // The monitored projects the kept deployments were chosen for.
    const QSet<QString>& monitored() const { return monitored_; }

    // ms since the epoch: the next pass asks for the deployments created after it.
    qint64 since() const;
    // The monitored projects' deployments still queued, initializing or building that an
    // answer since since() would not hold: each is asked for again.
    QList<VercelDeployment> stillRunning(const Focus& focus) const;

    // Hands the kept deployments to a pass, as a complete reading's answers would be.
    void feed(PassAccumulator& pass, const QString& scopeSlug) const;
    // Every deployment kept, for tests and measurements.
    int size() const;

private:
    std::optional<QString> projectOf(const VercelDeployment& deployment, const Focus& focus) const;
    void trim(const Focus& focus);
    void addToLatest(const VercelDeployment& deployment, const Focus& focus);
    // Vercel's clock at `local` at the least, from what was seen so far.
    double serverTimeAt(const QDateTime& local) const;
    void noteAnswer(double newestMs, const Exchange& exchange, bool fresh);
    QSet<QString> unknownProjects(const QList<VercelDeployment>& deployments,
                                  const Focus& focus) const;

    QList<VercelDeployment> recent_;                 // newest first
    QHash<QString, QList<VercelDeployment>> latest_; // by monitored project id
    int latestCap_ = 0;                              // how many latest deployments Vercel gives
    double anchorMs_ = -std::numeric_limits<double>::infinity(); // Vercel's clock had reached this
    QDateTime anchorAt_;                                         // at this local time
    double coveredMs_ = 0; // every deployment created up to here is known
    QDateTime readAt_;
    QSet<QString> monitored_;
};
