#include "core/vercel/FailureReport.h"

#include "core/common/TimeTexts.h"

QString failureReportText(const ProjectSnapshot& snapshot, const QStringList& excerpt) {
    Q_ASSERT(snapshot.latest);
    const VercelDeployment& d = *snapshot.latest;
    QString report = QStringLiteral("# Vercel deployment failed: ") + snapshot.name + u'\n';
    if (const auto branch = d.branch()) {
        report += QStringLiteral("Branch: ") + *branch;
        if (const auto sha = d.shortSHA())
            report += QStringLiteral(" (") + *sha + u')';
        report += u'\n';
    }
    if (const auto title = d.commitTitle())
        report += QStringLiteral("Commit: ") + *title + u'\n';
    report += QStringLiteral("Target: ") +
              (d.isProduction() ? QStringLiteral("production") : QStringLiteral("preview")) + u'\n';
    if (const auto duration = d.buildDuration())
        report += QStringLiteral("Failed after: ") + durationText(*duration) + u'\n';
    if (const auto url = snapshot.dashboardURL())
        report += QStringLiteral("Dashboard: ") + url->toString() + u'\n';
    report += QStringLiteral("\n## Build log (relevant part)\n```\n");
    report += excerpt.isEmpty() ? QStringLiteral("(log unavailable)") : excerpt.join(u'\n');
    report += QStringLiteral(
        "\n```\n\nPlease find the cause of this failed build and propose the fix.\n");
    return report;
}
