#pragma once

#include "core/vercel/VercelRecords.h"

#include <QDateTime>
#include <QUrl>
#include <optional>

// One monitored project as the views show it after a refresh pass.
struct ProjectSnapshot {
    QString id;
    QString name;
    QString scopeSlug;
    std::optional<QString> teamId;
    std::optional<VercelDeployment> latest;
    std::optional<double> medianBuildDuration; // seconds

    // unknown when there is no latest deployment.
    DeployStatus status() const;
    // "No deployment" without a latest deployment, else the latest deployment's status title.
    QString statusTitle(bool french) const;
    // The deployment's inspector page, or a link built from scope, name and id; none for the
    // demo scope.
    std::optional<QUrl> dashboardURL() const;
    // Estimated build progress in [0, 0.95]; absent unless building with a median above 5 s.
    std::optional<double> progress(const QDateTime& now) const;
};

// Vercel's web dashboard, with a trailing "/".
QUrl vercelDashboardBase();
