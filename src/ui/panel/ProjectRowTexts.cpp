#include "ui/panel/ProjectRowTexts.h"
#include "core/vercel/VercelTime.h"

#include "core/common/TimeTexts.h"

#include <algorithm>

namespace ProjectRowTexts {
namespace {

// ms since the epoch of when the deployment was finished or made; 0 when nothing says.
double lastMoment(const VercelDeployment& d) {
    if (d.ready)
        return *d.ready;
    if (d.createdAt)
        return *d.createdAt;
    return d.created.value_or(0);
}

QString tr(bool french, const char* english, const char* frenchText) {
    return QString::fromUtf8(french ? frenchText : english);
}

} // namespace

bool isFresh(const ProjectSnapshot& snap, const QDateTime& now) {
    if (!snap.latest)
        return false;
    const DeployStatus status = snap.status();
    if (isInProgress(status) || isFailure(status))
        return true;
    const double ageSeconds =
        (static_cast<double>(now.toMSecsSinceEpoch()) - lastMoment(*snap.latest)) / 1000;
    return ageSeconds < freshSeconds;
}

QString ageText(const ProjectSnapshot& snap, const QDateTime& now, bool french) {
    if (!snap.latest)
        return {};
    if (isInProgress(snap.status())) {
        const double nowMs = static_cast<double>(now.toMSecsSinceEpoch());
        const double started = snap.latest->startedAt().value_or(nowMs);
        return durationText(std::max(0.0, (nowMs - started) / 1000));
    }
    const double moment = lastMoment(*snap.latest);
    return relativeAgeText(dateFromMilliseconds(moment), now, french);
}

QString description(const ProjectSnapshot& snap, bool french) {
    if (!snap.latest)
        return tr(french, "No deployment yet", "Aucun déploiement");
    const VercelDeployment& d = *snap.latest;
    QString detail = d.commitTitle().value_or(QString());
    if (detail.isEmpty())
        detail = d.branch().value_or(QString());
    const auto withDetail = [&](const QString& head) {
        return detail.isEmpty() ? head : head + QStringLiteral(" · ") + detail;
    };
    const DeployStatus status = snap.status();
    switch (status) {
    case DeployStatus::ready:
        return detail.isEmpty() ? tr(french, "Deployed", "Déployé") : detail;
    case DeployStatus::unknown: // a state Quillon does not know: Vercel's word, and the commit
        return withDetail(d.statusTitle(french));
    case DeployStatus::blocked:
        return withDetail(title(status, french));
    case DeployStatus::building:
        return detail.isEmpty() ? title(status, french) : detail;
    case DeployStatus::queued:
    case DeployStatus::initializing:
    case DeployStatus::canceled:
        return withDetail(title(status, french));
    case DeployStatus::error:
        if (const auto duration = d.buildDuration())
            return withDetail(tr(french, "Failed after ", "Échec après ") +
                              durationText(*duration));
        return withDetail(tr(french, "Failed", "Échec"));
    }
    return detail;
}

bool showsPreviewBadge(const ProjectSnapshot& snap) {
    return snap.latest && !snap.latest->isProduction();
}

} // namespace ProjectRowTexts
