#pragma once

#include "core/vercel/ProjectSnapshot.h"

#include <QHash>
#include <QSet>
#include <QString>

// Follows each project from a failed latest deployment to the next ready one, so that "live
// again" is told at most once per failure and never without one. Fed only the deployments the
// notification policy concerns itself with, so a failed preview is not "fixed" by production.
class FailureRecovery {
public:
    // Records the snapshot's latest deployment; answers true when it is a ready one that ends a
    // failure recorded before (a failed deployment, maybe followed by builds and cancels).
    bool endsFailure(const ProjectSnapshot& snapshot);

private:
    QHash<QString, QString> failing_; // project id → the failed deployment's id
    QSet<QString> recovered_;         // failed deployments already followed by a ready one
};
