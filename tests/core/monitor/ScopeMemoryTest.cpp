#include "core/monitor/ScopeMemory.h"
#include "core/monitor/PassAccumulator.h"

#include <gtest/gtest.h>

namespace {

const QDateTime noon = QDateTime(QDate(2026, 11, 23), QTime(12, 0));
const double noonMs = static_cast<double>(noon.toMSecsSinceEpoch());
const double minute = 60'000;

VercelDeployment deployment(const QString& id, const QString& project, double createdMs,
                            const QString& state = "READY",
                            std::optional<double> buildSeconds = 30) {
    VercelDeployment d;
    d.uid = id;
    d.projectId = project;
    d.state = state;
    d.createdAt = createdMs;
    if (state == "READY" && buildSeconds) {
        d.buildingAt = createdMs;
        d.ready = createdMs + *buildSeconds * 1000;
    }
    return d;
}

ScopeMemory::Focus focus(QSet<QString> monitored = {"p_web"}) {
    ScopeMemory::Focus f;
    f.scopeSlug = "acme";
    f.known = {"p_web", "p_api", "p_docs"};
    f.projectByName = {{"web", "p_web"}, {"api", "p_api"}, {"docs", "p_docs"}};
    f.monitored = std::move(monitored);
    f.dayStartMs = static_cast<double>(noon.date().startOfDay().toMSecsSinceEpoch());
    return f;
}

VercelProject project(const QString& id, QList<VercelDeployment> latest) {
    return {id, id.mid(2), std::move(latest)};
}

// What Vercel answers a pass that asks for the deployments created after `since`.
ScopeMemory::Changes createdAfter(const QList<VercelDeployment>& all, qint64 since) {
    ScopeMemory::Changes changes;
    for (const VercelDeployment& d : all) {
        if (*d.createdAt > static_cast<double>(since))
            changes.created.append(d);
    }
    return changes;
}

// What the kept deployments give a pass: latest, median and today's count of p_web.
QString picture(const ScopeMemory& memory, const QSet<QString>& monitored = {"p_web"}) {
    PassAccumulator pass({{"p_web", "web", "team", "acme"}, {"p_api", "api", "team", "acme"}});
    memory.feed(pass, "acme");
    const auto result = pass.finish(monitored, false, noon.date().startOfDay());
    QStringList parts;
    for (const ProjectSnapshot& s : result.snapshots)
        parts << s.id + ":" + (s.latest ? s.latest->deploymentID() : "-") + ":" +
                     (s.medianBuildDuration ? QString::number(*s.medianBuildDuration) : "-");
    return parts.join(' ') + " today " + QString::number(result.todayCount);
}

} // namespace

// The kept window matches a complete reading of the same account as deployments pile up: 100
// newest whatever their project, the monitored project's deployments of today beyond them, its
// latest deployments; nothing else.
TEST(ScopeMemory, KeepsWhatACompleteReadingHoldsAndNoMore) {
    QList<VercelDeployment> all;
    // From 00:30, 5 deployments of p_web; from 01:00, 200 of p_api, every 3 minutes; one of p_web
    // yesterday.
    const double dayStart = focus().dayStartMs;
    for (int i = 0; i < 5; ++i)
        all.append(deployment(QStringLiteral("web_%1").arg(i), "p_web",
                              dayStart + (30 + i) * minute, "READY", 10 + i));
    for (int i = 0; i < 200; ++i)
        all.append(
            deployment(QStringLiteral("api_%1").arg(i), "p_api", dayStart + (60 + 3 * i) * minute));
    all.append(deployment("web_yesterday", "p_web", dayStart - 60 * minute, "READY", 99));
    const QList<VercelProject> projects{
        project("p_web", {all[4], all[3], all[2]}),
        project("p_api", {all[204], all[203], all[202]}),
        project("p_docs", {deployment("docs_old", "p_docs", dayStart - 90 * 24 * 60 * minute)})};

    ScopeMemory memory;
    memory.replace(projects, all, focus(), {noon, noon});
    // The 100 newest, the 5 of p_web today beyond them, and its 3 latest deployments.
    EXPECT_EQ(memory.size(), 100 + 5 + 3);
    EXPECT_EQ(picture(memory), "p_web:web_4:12 today 5");
    EXPECT_TRUE(memory.monitored() == QSet<QString>{"p_web"});

    // A new p_web deployment joins the latest ones, and pushes the oldest of them out.
    ScopeMemory::Changes changes = createdAfter(all, memory.since());
    all.append(deployment("web_5", "p_web", noonMs + minute, "READY", 40));
    changes.created.append(all.last());
    memory.merge(changes, focus(), {noon.addSecs(90), noon.addSecs(90)});
    ScopeMemory fresh;
    fresh.replace({project("p_web", {all.last(), all[4], all[3]}), projects[1], projects[2]}, all,
                  focus(), {noon, noon});
    EXPECT_EQ(picture(memory), picture(fresh));
    EXPECT_EQ(picture(memory), "p_web:web_5:13 today 6");
    EXPECT_EQ(memory.size(), fresh.size());

    // A new day: this morning's p_web deployments beyond the 100 newest leave; its latest stay.
    ScopeMemory::Focus tomorrow = focus();
    tomorrow.dayStartMs += 24 * 60 * minute;
    memory.merge(createdAfter(all, memory.since()), tomorrow,
                 {noon.addSecs(120), noon.addSecs(120)});
    EXPECT_EQ(memory.size(), 100 + 3);
}

// How far back a pass asks is measured on Vercel's clock, whatever the local clock says: the
// newest creation time seen, plus the local time elapsed since it was seen, less a margin.
TEST(ScopeMemory, AsksFromTheNewestKnownOnVercelsClockLessAMargin) {
    // The local clock runs an hour behind Vercel's.
    const QDateTime local = noon.addSecs(-3600);
    QList<VercelDeployment> all{deployment("d1", "p_web", noonMs)};
    ScopeMemory memory;
    EXPECT_EQ(memory.since(), 0); // nothing known yet: everything
    memory.replace({}, all, focus(), {local, local});
    EXPECT_EQ(memory.since(), qint64(noonMs - 2 * minute));

    // Passes with nothing new move it on by the local time elapsed when each was sent.
    memory.merge(createdAfter(all, memory.since()), focus(),
                 {local.addSecs(30), local.addSecs(31)});
    EXPECT_EQ(memory.since(), qint64(noonMs + 30'000 - 2 * minute));
    memory.merge(createdAfter(all, memory.since()), focus(),
                 {local.addSecs(600), local.addSecs(600)});
    EXPECT_EQ(memory.since(), qint64(noonMs + 8 * minute));

    // A deployment created later than that moves it to its own creation time less the margin.
    all.append(deployment("d2", "p_web", noonMs + 20 * minute));
    memory.merge(createdAfter(all, memory.since()), focus(),
                 {local.addSecs(660), local.addSecs(660)});
    EXPECT_EQ(memory.since(), qint64(noonMs + 18 * minute));
    // A local clock set back moves it neither back nor on.
    memory.merge(createdAfter(all, memory.since()), focus(),
                 {local.addSecs(-600), local.addSecs(-600)});
    EXPECT_EQ(memory.since(), qint64(noonMs + 18 * minute));
    EXPECT_EQ(memory.size(), 2);
}

// Builds the answer since since() would not cover are asked for again; what comes back replaces
// them, what Vercel no longer has leaves, and so does a deployment missing from that answer.
TEST(ScopeMemory, RunningBuildsAreAskedAgainAndDeletedOnesLeave) {
    ScopeMemory memory;
    const QList<VercelDeployment> start{
        deployment("build", "p_web", noonMs - 10 * minute, "BUILDING"),
        deployment("queued", "p_web", noonMs - 9 * minute, "QUEUED"),
        deployment("other", "p_api", noonMs - 9 * minute, "BUILDING"),
        deployment("fresh", "p_web", noonMs - minute, "INITIALIZING"),
        deployment("done", "p_web", noonMs - 20 * minute, "READY")};
    const QSet<QString> unknown = memory.replace(
        {}, start + QList{deployment("x", "p_new", noonMs - 30 * minute)}, focus(), {noon, noon});
    EXPECT_EQ(unknown, QSet<QString>{"p_new"});

    // Only the monitored project's, and only those created before since().
    QStringList running;
    for (const VercelDeployment& d : memory.stillRunning(focus()))
        running << d.deploymentID();
    EXPECT_EQ(running, QStringList({"queued", "build"}));

    ScopeMemory::Changes changes;
    changes.rechecked = {deployment("build", "p_web", noonMs - 10 * minute, "ERROR")};
    changes.gone = {"queued"};
    // "fresh" was created after since() and is missing from the answer: deleted.
    changes.created = {deployment("new", "p_web", noonMs + 10'000, "BUILDING")};
    EXPECT_TRUE(memory.merge(changes, focus(), {noon, noon}).isEmpty());
    EXPECT_EQ(picture(memory), "p_web:new:30 today 3");
    running.clear();
    for (const VercelDeployment& d : memory.stillRunning(focus()))
        running << d.deploymentID();
    EXPECT_TRUE(running.isEmpty()) << running.join(' ').toStdString();
    EXPECT_EQ(memory.size(), 5); // new, other, build (now failed), done, x
}
