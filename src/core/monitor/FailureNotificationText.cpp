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

// The project's name and `suffix` as title, the deployment's pieces as body, its dashboard link.
FailureNotification notificationAbout(const ProjectSnapshot& snapshot, const QString& suffix) {
    FailureNotification notification;
    notification.title = snapshot.name + suffix;
    if (snapshot.latest)
        notification.identifier = snapshot.latest->deploymentID();
    notification.body = deploymentBody(snapshot);
    notification.url = snapshot.dashboardURL();
    return notification;
}

// Vercel never built it, so there is no log to report: the notification carries Vercel's reason.
FailureNotification blockedNotification(const ProjectSnapshot& snapshot) {
    FailureNotification notification = notificationAbout(
        snapshot, Language::text(": deployment blocked", " : déploiement bloqué"));
    const QString reason = snapshot.latest->readyStateReason.value_or(QString()).trimmed();
    notification.body = !reason.isEmpty()
                            ? reason
                            : Language::text("Vercel blocked it without giving a reason.",
                                             "Vercel l'a bloqué sans en donner la raison.");
    return notification;
}

} // namespace

FailureNotification failureNotification(const ProjectSnapshot& snapshot) {
    if (snapshot.status() == DeployStatus::blocked)
        return blockedNotification(snapshot);
    FailureNotification notification = notificationAbout(
        snapshot, Language::text(": deployment failed", " : échec du déploiement"));
    notification.offersReport = snapshot.latest.has_value();
    // Blocked deployments are not offered: Vercel would refuse the new one for the same reason.
    notification.offersRedeploy = snapshot.status() == DeployStatus::error;
    return notification;
}

FailureNotification fixedNotification(const ProjectSnapshot& snapshot) {
    return notificationAbout(snapshot,
                             Language::text(" is live again", " est de nouveau en ligne"));
}
