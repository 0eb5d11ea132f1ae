#include "core/monitor/PassAccumulator.h"

#include <gtest/gtest.h>

namespace {

const QDateTime midnight = QDateTime(QDate(2026, 11, 23), QTime(0, 0));
const double midnightMs = static_cast<double>(midnight.toMSecsSinceEpoch());

VercelDeployment deployment(const QString& id, const QString& state, double createdMs,
                            std::optional<double> buildSeconds = std::nullopt) {
    VercelDeployment d;
    d.id = id;
    d.readyState = state;
    d.createdAt = createdMs;
    if (buildSeconds) {
        d.buildingAt = createdMs;
        d.ready = createdMs + *buildSeconds * 1000.0;
    }
    return d;
}

double at(int hour, int minute = 0) {
    return midnightMs + (hour * 60 + minute) * 60'000.0;
}

ProjectRef ref(const QString& id, const QString& name, const QString& scope = "acme") {
    return {id, name, std::nullopt, scope};
}

} // namespace

TEST(PassAccumulator, LatestIsTheNewestAndDuplicatesCountOnce) {
    const QList<ProjectRef> available{ref("prj_web", "web"), ref("prj_api", "api")};
    PassAccumulator pass(available);
    VercelProject web{"prj_web", "web",
                      QList<VercelDeployment>{deployment("dpl_b", "READY", at(9), 20)}};
    pass.addProjects({web});
    VercelDeployment fromList = deployment("dpl_c", "READY", at(11), 30);
    fromList.projectId = "prj_web";
    VercelDeployment again = deployment("dpl_b", "READY", at(9), 20);
    again.projectId = "prj_web";
    VercelDeployment early = deployment("dpl_a", "READY", at(10), 10);
    early.projectId = "prj_web";
    pass.addDeployments("acme", {fromList, again, early});

    const auto result = pass.finish({"prj_web", "prj_api"}, false, midnight);
    ASSERT_EQ(result.snapshots.size(), 2);
    EXPECT_EQ(result.snapshots[0].id, "prj_web");
    EXPECT_EQ(result.snapshots[0].latest->deploymentID(), "dpl_c");
    // 30, 10, 20 → 20: the middle of three.
    EXPECT_EQ(result.snapshots[0].medianBuildDuration, 20.0);
    EXPECT_EQ(result.todayCount, 3);
    // A monitored project with nothing seen still gets a snapshot, without latest.
    EXPECT_EQ(result.snapshots[1].id, "prj_api");
    EXPECT_FALSE(result.snapshots[1].latest);
}

TEST(PassAccumulator, MedianUsesTheTenNewestReadyBuildsAndTheUpperMiddle) {
    QList<VercelDeployment> newestFirst;
    for (int i = 0; i < 12; ++i) // durations 12 … 1 s, newest first; the two oldest drop out
        newestFirst.append(deployment(QString("d%1").arg(i), "READY", at(12) - i, 12 - i));
    EXPECT_EQ(PassAccumulator::medianBuildDuration(newestFirst), 8.0);

    QList<VercelDeployment> four{deployment("a", "READY", 4, 30), deployment("b", "READY", 3, 10),
                                 deployment("c", "READY", 2, 20), deployment("d", "READY", 1, 40)};
    EXPECT_EQ(PassAccumulator::medianBuildDuration(four), 30.0);

    VercelDeployment noReadyTime = deployment("e", "READY", 5);
    EXPECT_FALSE(PassAccumulator::medianBuildDuration({noReadyTime}));
    // Failed builds do not count, and a ready time before the start counts as 0 s.
    VercelDeployment failed = deployment("f", "ERROR", 6, 99);
    VercelDeployment backwards = deployment("g", "READY", 7);
    backwards.buildingAt = 10'000;
    backwards.ready = 5'000;
    EXPECT_EQ(PassAccumulator::medianBuildDuration({failed, backwards}), 0.0);
}

TEST(PassAccumulator, TodayCountStartsAtLocalMidnightAndCanBeProductionOnly) {
    const QList<ProjectRef> available{ref("p", "web")};
    PassAccumulator pass(available);
    VercelDeployment yesterday = deployment("d1", "READY", midnightMs - 60'000);
    VercelDeployment atMidnight = deployment("d2", "READY", midnightMs);
    atMidnight.target = "production";
    VercelDeployment preview = deployment("d3", "READY", at(8));
    preview.target = "preview";
    for (VercelDeployment* d : {&yesterday, &atMidnight, &preview})
        d->projectId = "p";
    pass.addDeployments("acme", {yesterday, atMidnight, preview});

    EXPECT_EQ(pass.finish({"p"}, false, midnight).todayCount, 2);
    EXPECT_EQ(pass.finish({"p"}, true, midnight).todayCount, 1);
    // Unmonitored projects neither get a snapshot nor count.
    const auto none = pass.finish({}, false, midnight);
    EXPECT_TRUE(none.snapshots.isEmpty());
    EXPECT_EQ(none.todayCount, 0);
}

TEST(PassAccumulator, DeploymentWithoutProjectIdIsMatchedByScopeAndName) {
    const QList<ProjectRef> available{ref("p1", "web", "acme-team"), ref("p2", "web", "other")};
    PassAccumulator pass(available);
    VercelDeployment byName = deployment("d1", "BUILDING", at(9));
    byName.name = "web";
    VercelDeployment unknown = deployment("d2", "BUILDING", at(9));
    unknown.name = "nowhere";
    pass.addDeployments("acme-team", {byName, unknown});
    const auto result = pass.finish({"p1", "p2"}, false, midnight);
    ASSERT_EQ(result.snapshots.size(), 2);
    EXPECT_EQ(result.snapshots[0].id, "p1");
    EXPECT_EQ(result.snapshots[0].latest->deploymentID(), "d1");
    EXPECT_FALSE(result.snapshots[1].latest);
    EXPECT_EQ(result.todayCount, 1);
}

TEST(PassAccumulator, BuildingProjectsComeFirstThenNewest) {
    const QList<ProjectRef> available{ref("a", "alpha"), ref("b", "beta"), ref("c", "gamma"),
                                      ref("d", "delta")};
    PassAccumulator pass(available);
    VercelDeployment oldBuild = deployment("d1", "BUILDING", at(8));
    oldBuild.projectId = "a";
    VercelDeployment newReady = deployment("d2", "READY", at(10), 5);
    newReady.projectId = "b";
    VercelDeployment queued = deployment("d3", "QUEUED", at(9));
    queued.projectId = "c";
    pass.addDeployments("acme", {oldBuild, newReady, queued});
    const auto result = pass.finish({"a", "b", "c", "d"}, false, midnight);
    QStringList order;
    for (const auto& s : result.snapshots)
        order << s.id;
    EXPECT_EQ(order, QStringList({"c", "a", "b", "d"}));
}
