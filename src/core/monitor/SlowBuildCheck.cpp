#include "core/monitor/SlowBuildCheck.h"

#include "core/common/Language.h"
#include "core/common/TimeTexts.h"

namespace {
constexpr double kMinimumSeconds = 120;
}

std::optional<double> slowBuildElapsed(const ProjectSnapshot& snapshot, const QDateTime& now) {
    if (!snapshot.latest || snapshot.status() != DeployStatus::building ||
        !snapshot.medianBuildDuration)
        return std::nullopt;
    const std::optional<double> started = snapshot.latest->startedAt();
    if (!started)
        return std::nullopt;
    const double elapsed = (static_cast<double>(now.toMSecsSinceEpoch()) - *started) / 1000;
    const double threshold = std::max(2 * *snapshot.medianBuildDuration, kMinimumSeconds);
    if (elapsed <= threshold)
        return std::nullopt;
    return elapsed;
}

FailureNotification slowBuildNotification(const ProjectSnapshot& snapshot, double elapsedSeconds) {
    FailureNotification notification;
    notification.identifier = snapshot.latest ? snapshot.latest->deploymentID() : QString();
    notification.title = snapshot.name + Language::text(": build is taking longer than usual",
                                                        " : la compilation dure plus longtemps "
                                                        "que d'habitude");
    notification.body = durationText(elapsedSeconds);
    notification.url = snapshot.dashboardURL();
    return notification;
}
