#include "core/vercel/ProjectSnapshot.h"

#include <algorithm>

namespace {

// Estimates never reach the end: the build is done only when Vercel says so.
constexpr double progressCap = 0.95;
// Below this a median says too little to draw a meaningful bar.
constexpr double shortestUsefulMedian = 5.0;

std::optional<QUrl> parsedLink(const QString& text) {
    const QUrl url(text, QUrl::StrictMode);
    if (!url.isValid())
        return std::nullopt;
    return url;
}

} // namespace

QUrl vercelDashboardBase() {
    return QUrl(QStringLiteral("https://vercel.com/"));
}

DeployStatus ProjectSnapshot::status() const {
    return latest ? latest->status() : DeployStatus::unknown;
}

QString ProjectSnapshot::statusTitle(bool french) const {
    return latest ? latest->statusTitle(french) : title(DeployStatus::unknown, french);
}

std::optional<QUrl> ProjectSnapshot::dashboardURL() const {
    if (scopeSlug == QLatin1StringView("demo"))
        return std::nullopt;
    const QString project = vercelDashboardBase().toString() + scopeSlug + u'/' + name;
    if (!latest)
        return parsedLink(project);
    if (latest->inspectorUrl) {
        if (std::optional<QUrl> inspector = parsedLink(*latest->inspectorUrl))
            return inspector;
    }
    QString id = latest->deploymentID();
    if (id.startsWith(QLatin1StringView("dpl_")))
        id.remove(0, 4);
    return parsedLink(project + u'/' + id);
}

std::optional<double> ProjectSnapshot::progress(const QDateTime& now) const {
    if (!latest || latest->status() != DeployStatus::building || !medianBuildDuration ||
        !(*medianBuildDuration > shortestUsefulMedian))
        return std::nullopt;
    const double start = latest->startedAt().value_or(0.0) / 1000.0;
    const double elapsed = std::max(0.0, now.toMSecsSinceEpoch() / 1000.0 - start);
    return std::min(elapsed / *medianBuildDuration, progressCap);
}
