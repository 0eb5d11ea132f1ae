#include "core/vercel/ProjectSnapshot.h"
#include "core/vercel/ProjectRef.h"

#include <QSet>
#include <gtest/gtest.h>

namespace {

const QDateTime now = QDateTime::fromMSecsSinceEpoch(1'732'351'260'000);
const double nowMs = static_cast<double>(now.toMSecsSinceEpoch());

VercelDeployment building(double startMs) {
    VercelDeployment d;
    d.uid = QStringLiteral("dpl_7Hk2");
    d.readyState = QStringLiteral("BUILDING");
    d.buildingAt = startMs;
    return d;
}

ProjectSnapshot snapshot(std::optional<VercelDeployment> latest,
                         std::optional<double> median = std::nullopt) {
    return {"prj_Qx81", "storefront", "acme", "team_acme", std::move(latest), median};
}

std::optional<QString> link(const ProjectSnapshot& s) {
    const std::optional<QUrl> url = s.dashboardURL();
    return url ? std::optional(url->toString()) : std::nullopt;
}

} // namespace

TEST(ProjectSnapshot, DashboardLinkSteps) {
    EXPECT_EQ(snapshot(std::nullopt).status(), DeployStatus::unknown);
    EXPECT_EQ(link(snapshot(std::nullopt)), "https://vercel.com/acme/storefront");

    VercelDeployment inspected = building(nowMs);
    inspected.inspectorUrl = "https://vercel.com/acme/storefront/7Hk2vQbN3cXyZ9aP?tab=logs";
    EXPECT_EQ(link(snapshot(inspected)),
              "https://vercel.com/acme/storefront/7Hk2vQbN3cXyZ9aP?tab=logs");

    // Without a usable inspector link, the id without its "dpl_" prefix.
    VercelDeployment fallback = building(nowMs);
    fallback.inspectorUrl = "";
    EXPECT_EQ(link(snapshot(fallback)), "https://vercel.com/acme/storefront/7Hk2");
    fallback.inspectorUrl = "http://exa mple.com/%zz";
    EXPECT_EQ(link(snapshot(fallback)), "https://vercel.com/acme/storefront/7Hk2");
    fallback.id = "abc_dpl_1";
    EXPECT_EQ(link(snapshot(fallback)), "https://vercel.com/acme/storefront/abc_dpl_1");
    fallback.id.reset();
    fallback.uid.reset();
    EXPECT_EQ(link(snapshot(fallback)), "https://vercel.com/acme/storefront/");

    // Demo projects never leave the application.
    ProjectSnapshot demo = snapshot(inspected);
    demo.scopeSlug = "demo";
    EXPECT_FALSE(demo.dashboardURL());
    demo.latest.reset();
    EXPECT_FALSE(demo.dashboardURL());

    // A slug that cannot be part of a link gives none.
    ProjectSnapshot broken = snapshot(std::nullopt);
    broken.scopeSlug = "my team";
    EXPECT_FALSE(broken.dashboardURL());
}

TEST(ProjectSnapshot, ProgressOnlyForBuildsWithAUsefulMedian) {
    const double started60sAgo = nowMs - 60'000;
    EXPECT_EQ(snapshot(building(started60sAgo), 120).progress(now), 0.5);
    EXPECT_FALSE(snapshot(building(started60sAgo), 5).progress(now));
    EXPECT_EQ(snapshot(building(nowMs - 11'000), 5.5).progress(now), 0.95);
    EXPECT_EQ(snapshot(building(started60sAgo), 30).progress(now), 0.95);
    EXPECT_EQ(snapshot(building(nowMs + 30'000), 120).progress(now), 0.0);
    EXPECT_FALSE(snapshot(building(started60sAgo)).progress(now));
    EXPECT_FALSE(snapshot(std::nullopt, 120).progress(now));

    VercelDeployment queued = building(started60sAgo);
    queued.readyState = "QUEUED";
    EXPECT_FALSE(snapshot(queued, 120).progress(now));

    // Start falls back to createdAt, then created, then the epoch.
    VercelDeployment created = building(0);
    created.buildingAt.reset();
    created.created = nowMs - 30'000;
    EXPECT_EQ(snapshot(created, 120).progress(now), 0.25);
    created.createdAt = nowMs - 60'000;
    EXPECT_EQ(snapshot(created, 120).progress(now), 0.5);
    created.createdAt.reset();
    created.created.reset();
    EXPECT_EQ(snapshot(created, 120).progress(now), 0.95);
}

TEST(ProjectRef, TeamIdAbsentDiffersFromEmpty) {
    const ProjectRef personal{"prj_1", "web", std::nullopt, "ana"};
    const ProjectRef emptyTeam{"prj_1", "web", QString(), "ana"};
    EXPECT_NE(personal, emptyTeam);
    EXPECT_EQ((QSet<ProjectRef>{personal, emptyTeam, personal}).size(), 2);
}
