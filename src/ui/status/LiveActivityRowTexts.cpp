#include "ui/status/LiveActivityRowTexts.h"

#include "core/common/TimeTexts.h"

#include <algorithm>

namespace {

QString tr(bool french, const char* english, const char* frenchText) {
    return QString::fromUtf8(french ? frenchText : english);
}

QString commitOrTitle(const ProjectSnapshot& snapshot, bool french) {
    const QString status = snapshot.statusTitle(french);
    return snapshot.latest ? snapshot.latest->commitTitle().value_or(status) : status;
}

// A missing start counts from 1970, so such a row shows a long time rather than nothing.
QString runningTime(const ProjectSnapshot& snapshot, const QDateTime& now) {
    const double startedMs = snapshot.latest ? snapshot.latest->startedAt().value_or(0) : 0;
    const double seconds = (double(now.toMSecsSinceEpoch()) - startedMs) / 1000;
    return durationText(std::max(0.0, seconds));
}

} // namespace

namespace LiveActivityRowTexts {

QString subtitle(const ProjectSnapshot& snapshot, bool french) {
    const DeployStatus status = snapshot.status();
    const std::optional<double> duration =
        snapshot.latest ? snapshot.latest->buildDuration() : std::nullopt;
    if (status == DeployStatus::ready)
        return duration ? tr(french, "Live in ", "En ligne en ") + durationText(*duration)
                        : tr(french, "Live", "En ligne");
    if (status == DeployStatus::error)
        return duration ? tr(french, "Failed after ", "Échec après ") + durationText(*duration)
                        : tr(french, "Failed", "Échec");
    // Vercel's reason says what to do about it; it comes in English only.
    if (status == DeployStatus::blocked && snapshot.latest &&
        !snapshot.latest->readyStateReason.value_or(QString()).isEmpty())
        return *snapshot.latest->readyStateReason;
    return commitOrTitle(snapshot, french);
}

QString trailing(const ProjectSnapshot& snapshot, const QDateTime& now, bool french) {
    switch (snapshot.status()) {
    case DeployStatus::queued:
    case DeployStatus::initializing:
    case DeployStatus::blocked:
        return title(snapshot.status(), french);
    case DeployStatus::ready:
        return tr(french, "Live", "En ligne");
    case DeployStatus::error:
        return tr(french, "Failed", "Échec");
    default:
        return runningTime(snapshot, now);
    }
}

std::optional<double> progress(const ProjectSnapshot& snapshot, const QDateTime& now) {
    return snapshot.progress(now);
}

bool showsProgressLine(const ProjectSnapshot& snapshot) {
    return isInProgress(snapshot.status());
}

} // namespace LiveActivityRowTexts
