#include "core/monitor/FailureNotificationText.h"

#include "core/common/Language.h"
#include "core/common/TimeTexts.h"

FailureNotification failureNotification(const ProjectSnapshot& snapshot) {
    FailureNotification notification;
    notification.title =
        snapshot.name + Language::text(": deployment failed", " : échec du déploiement");
    QStringList pieces;
    if (snapshot.latest) {
        const VercelDeployment& deployment = *snapshot.latest;
        notification.identifier = deployment.deploymentID();
        if (const auto branch = deployment.branch())
            pieces.append(Language::text("Branch ", "Branche ") + *branch);
        if (const auto title = deployment.commitTitle())
            pieces.append(*title);
        if (const auto duration = deployment.buildDuration())
            pieces.append(durationText(*duration));
    }
    notification.body = pieces.join(QStringLiteral(" · "));
    notification.url = snapshot.dashboardURL();
    notification.offersReport = snapshot.latest.has_value();
    return notification;
}
