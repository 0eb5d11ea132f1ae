#pragma once

#include <QString>
#include <QStringView>
#include <optional>

// The state of a deployment, with the raw values Vercel sends. `blocked`: Vercel refused to build
// it (a commit author without a seat on the team, for one); `unknown`: any state not listed.
enum class DeployStatus {
    queued,
    initializing,
    building,
    ready,
    error,
    canceled,
    blocked,
    unknown
};

// Exact, case-sensitive match of the whole text ("QUEUED" … "UNKNOWN").
std::optional<DeployStatus> deployStatusFromRaw(QStringView raw);
QString rawValue(DeployStatus status);
// "Queued" / "En attente", … in the language chosen when asked.
QString title(DeployStatus status);
QString title(DeployStatus status, bool french);
// queued, initializing and building.
bool isInProgress(DeployStatus status);
// error and blocked: the deployment went nowhere and the user has something to do.
bool isFailure(DeployStatus status);
