#include "DeploymentProbe.h"

#include "FuzzCheck.h"
#include "core/common/Language.h"
#include "core/common/Preferences.h"
#include "core/monitor/StatusLines.h"
#include "core/vercel/FailureReport.h"
#include "core/vercel/ProjectSnapshot.h"

#include <QDir>

void prepareDeploymentProbe() {
    // A file that is never written: every preference reads as absent.
    static Preferences empty(QDir::temp().filePath(QStringLiteral("quillon-fuzz-absent.json")));
    Preferences::setStandard(&empty);
    Language::overrideSystemLanguages({QStringLiteral("en")});
}

void probeDeployment(const VercelDeployment& deployment, const QString& projectName) {
    (void)deployment.status();
    FUZZ_CHECK(!deployment.statusTitle(false).isEmpty() &&
               !deployment.statusTitle(true).isEmpty());
    (void)deployment.deploymentID();
    (void)deployment.branch();
    (void)deployment.isProduction();
    (void)deployment.commitTitle();
    if (const auto sha = deployment.shortSHA())
        FUZZ_CHECK(sha->size() <= 7);
    if (const auto duration = deployment.buildDuration())
        FUZZ_CHECK(*duration >= 0);

    ProjectSnapshot snapshot;
    snapshot.id = deployment.projectId.value_or(QStringLiteral("prj_fuzz"));
    snapshot.name = projectName;
    snapshot.scopeSlug = QStringLiteral("acme");
    snapshot.latest = deployment;
    snapshot.medianBuildDuration = deployment.buildDuration();
    (void)snapshot.dashboardURL();
    const QDateTime now = QDateTime::fromMSecsSinceEpoch(1'750'000'000'000, Qt::UTC);
    if (const auto progress = snapshot.progress(now))
        FUZZ_CHECK(*progress >= 0 && *progress <= 0.95);
    (void)snapshotLine(snapshot, now);
    const QString report = failureReportText(snapshot, {});
    FUZZ_CHECK(report.endsWith(QStringLiteral("propose the fix.\n")));
}
