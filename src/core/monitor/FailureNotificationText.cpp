#include "core/monitor/FailureNotificationText.h"

#include "core/common/Language.h"
#include "core/common/TimeTexts.h"

namespace {

// "Branch main · Fix login · 2 min 5 s", the pieces the deployment has; empty without one.
QString deploymentBody(const ProjectSnapshot& snapshot) {
    QStringList pieces;
    if (snapshot.latest) {
        const VercelDeployment& deployment = *snapshot.latest;
        if (const auto branch = deployment.branch())
            pieces.append(Language::text("Branch ", "Branche ") + *branch);
        if (const auto title = deployment.commitTitle())
            pieces.append(*title);
        if (const auto duration = deployment.buildDuration())
            pieces.append(durationText(*duration));
    }
    return pieces.join(QStringLiteral(" · "));
}

} // namespace

FailureNotification failureNotification(const ProjectSnapshot& snapshot) {
    FailureNotification notification;
    notification.title =
        snapshot.name + Language::text(": deployment failed", " : échec du déploiement");
    if (snapshot.latest)
        notification.identifier = snapshot.latest->deploymentID();
    notification.body = deploymentBody(snapshot);
    notification.url = snapshot.dashboardURL();
    notification.offersReport = snapshot.latest.has_value();
    return notification;
}

FailureNotification fixedNotification(const ProjectSnapshot& snapshot) {
    FailureNotification notification;
    notification.title =
        snapshot.name + Language::text(" is live again", " est de nouveau en ligne");
    if (snapshot.latest)
        notification.identifier = snapshot.latest->deploymentID();
    notification.body = deploymentBody(snapshot);
    notification.url = snapshot.dashboardURL();
    return notification;
}
