#include "core/monitor/PassAccumulator.h"

#include <gtest/gtest.h>

namespace {

const QDateTime midnight = QDateTime(QDate(2026, 11, 23), QTime(0, 0));
const double midnightMs = static_cast<double>(midnight.toMSecsSinceEpoch());

VercelDeployment deployment(const QString& id, const QString& state, double createdMs,
                            std::optional<double> buildSeconds = std::nullopt,
                            const QString& projectId = "p") {
    VercelDeployment d;
    d.id = id;
    d.projectId = projectId;
    d.readyState = state;
    d.createdAt = createdMs;
    if (buildSeconds) {
        d.buildingAt = createdMs;
        d.ready = createdMs + *buildSeconds * 1000.0;
    }
    return d;
}

double at(int hour) {
    return midnightMs + hour * 3'600'000.0;
}

ProjectRef ref(const QString& id, const QString& name, const QString& scope = "acme") {
    return {id, name, std::nullopt, scope};
}

} // namespace

TEST(PassAccumulator, LatestIsTheNewestDuplicatesCountOnceAndTodayStartsAtMidnight) {
    PassAccumulator pass({ref("p", "web"), ref("prj_api", "api")});
    pass.addProjects({VercelProject{"p", "web", QList{deployment("dpl_b", "READY", at(9), 20)}}});
    VercelDeployment yesterday = deployment("d0", "READY", midnightMs - 60'000);
    VercelDeployment atMidnight = deployment("d1", "READY", midnightMs);
    atMidnight.target = "production";
    pass.addDeployments("acme", {deployment("dpl_c", "READY", at(11), 30),
                                 deployment("dpl_b", "READY", at(9), 20),
                                 deployment("dpl_a", "READY", at(10), 10), yesterday, atMidnight});

    const auto result = pass.finish({"p", "prj_api"}, false, midnight);
    ASSERT_EQ(result.snapshots.size(), 2);
    EXPECT_EQ(result.snapshots[0].id, "p");
    EXPECT_EQ(result.snapshots[0].latest->deploymentID(), "dpl_c");
    EXPECT_EQ(result.snapshots[0].medianBuildDuration, 20.0); // 30, 10, 20: the middle
    EXPECT_EQ(result.todayCount, 4);
    // A monitored project with nothing seen still gets a snapshot, without latest.
    EXPECT_EQ(result.snapshots[1].id, "prj_api");
    EXPECT_FALSE(result.snapshots[1].latest);
    EXPECT_EQ(pass.finish({"p"}, true, midnight).todayCount, 1);
    // Unmonitored projects neither get a snapshot nor count.
    const auto none = pass.finish({}, false, midnight);
    EXPECT_TRUE(none.snapshots.isEmpty());
    EXPECT_EQ(none.todayCount, 0);
}

TEST(PassAccumulator, MedianUsesTheTenNewestReadyBuildsAndTheUpperMiddle) {
    QList<VercelDeployment> newestFirst;
    for (int i = 0; i < 12; ++i) // durations 12 … 1 s, newest first; the two oldest drop out
        newestFirst.append(deployment(QString("d%1").arg(i), "READY", at(12) - i, 12 - i));
    EXPECT_EQ(PassAccumulator::medianBuildDuration(newestFirst), 8.0);
    EXPECT_EQ(PassAccumulator::medianBuildDuration(
                  {deployment("a", "READY", 4, 30), deployment("b", "READY", 3, 10),
                   deployment("c", "READY", 2, 20), deployment("d", "READY", 1, 40)}),
              30.0);
    EXPECT_FALSE(PassAccumulator::medianBuildDuration({deployment("e", "READY", 5)}));
    // Failed builds do not count, and a ready time before the start counts as 0 s.
    VercelDeployment backwards = deployment("g", "READY", 7);
    backwards.buildingAt = 10'000;
    backwards.ready = 5'000;
    EXPECT_EQ(PassAccumulator::medianBuildDuration({deployment("f", "ERROR", 6, 99), backwards}),
              0.0);
}

TEST(PassAccumulator, BuildingFirstThenNewestAndAMissingProjectIdIsMatchedByScopeAndName) {
    PassAccumulator pass({ref("a", "alpha"), ref("b", "beta"), ref("c", "gamma"),
                          ref("d", "delta", "other"), ref("e", "delta")});
    VercelDeployment byName = deployment("d4", "READY", at(7), 5, QString());
    byName.projectId.reset();
    byName.name = "delta";
    VercelDeployment unknown = byName;
    unknown.id = "d5";
    unknown.name = "nowhere";
    pass.addDeployments("acme", {deployment("d1", "BUILDING", at(8), {}, "a"),
                                 deployment("d2", "READY", at(10), 5, "b"),
                                 deployment("d3", "QUEUED", at(9), {}, "c"), byName, unknown});
    const auto result = pass.finish({"a", "b", "c", "d", "e"}, false, midnight);
    QStringList order;
    for (const auto& s : result.snapshots)
        order << s.id + ":" + (s.latest ? s.latest->deploymentID() : "-");
    EXPECT_EQ(order, QStringList({"c:d3", "a:d1", "b:d2", "e:d4", "d:-"}));
    EXPECT_EQ(result.todayCount, 4);
}
