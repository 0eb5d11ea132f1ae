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

// Vercel never built it, so there is no log to report: the notification carries Vercel's reason.
FailureNotification blockedNotification(const ProjectSnapshot& snapshot) {
    FailureNotification notification;
    const VercelDeployment& deployment = *snapshot.latest;
    notification.identifier = deployment.deploymentID();
    notification.title =
        snapshot.name + Language::text(": deployment blocked", " : déploiement bloqué");
    const QString reason = deployment.readyStateReason.value_or(QString()).trimmed();
    notification.body = !reason.isEmpty()
                            ? reason
                            : Language::text("Vercel blocked it without giving a reason.",
                                             "Vercel l'a bloqué sans en donner la raison.");
    notification.url = snapshot.dashboardURL();
    return notification;
}

} // namespace

FailureNotification failureNotification(const ProjectSnapshot& snapshot) {
    if (snapshot.status() == DeployStatus::blocked)
        return blockedNotification(snapshot);
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
