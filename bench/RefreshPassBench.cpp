#include "VercelBodies.h"

#include "core/monitor/PassAccumulator.h"
#include "core/vercel/VercelDecoding.h"

#include <QJsonDocument>
#include <benchmark/benchmark.h>

// One refresh pass over 10 scopes, from bodies already received: decode every answer, attach the
// deployments, and build the ordered snapshots with today's count. Its floor is Qt's parse of the
// same bytes alone; the pass should stay within 1.2 times it (and well under 10 ms).

namespace {

constexpr int kScopes = 10;

struct ScopeBodies {
    QString slug;
    QByteArray projects;
    QByteArray deployments;
};

const QList<ScopeBodies>& bodies() {
    static const QList<ScopeBodies> scopes = [] {
        QList<ScopeBodies> list;
        for (int i = 0; i < kScopes; ++i)
            list.append(
                {QStringLiteral("team-%1").arg(i), projectsPage(100), deploymentsPage(100)});
        return list;
    }();
    return scopes;
}

// Every project of every scope is available and monitored.
const QList<ProjectRef>& available() {
    static const QList<ProjectRef> refs = [] {
        QList<ProjectRef> list;
        for (const ScopeBodies& scope : bodies()) {
            const std::optional<ProjectsResponse> page =
                decodeResponse<ProjectsResponse>(scope.projects);
            for (const VercelProject& p : page->projects)
                list.append({p.id, p.name, scope.slug, scope.slug});
        }
        return list;
    }();
    return refs;
}

void BM_RefreshPass(benchmark::State& state) {
    QSet<QString> monitored;
    for (const ProjectRef& ref : available())
        monitored.insert(ref.id);
    const QDateTime startOfDay = QDate::currentDate().startOfDay();
    for (auto _ : state) {
        PassAccumulator pass(available());
        for (const ScopeBodies& scope : bodies()) {
            const std::optional<ProjectsResponse> projects =
                decodeResponse<ProjectsResponse>(scope.projects);
            const std::optional<DeploymentsResponse> deployments =
                decodeResponse<DeploymentsResponse>(scope.deployments);
            pass.addProjects(projects->projects);
            pass.addDeployments(scope.slug, deployments->deployments);
        }
        PassAccumulator::Result result = pass.finish(monitored, false, startOfDay);
        benchmark::DoNotOptimize(result);
    }
}

void BM_RefreshPass_Floor(benchmark::State& state) {
    for (auto _ : state) {
        for (const ScopeBodies& scope : bodies()) {
            QJsonDocument projects = QJsonDocument::fromJson(scope.projects);
            QJsonDocument deployments = QJsonDocument::fromJson(scope.deployments);
            benchmark::DoNotOptimize(projects);
            benchmark::DoNotOptimize(deployments);
        }
    }
}

} // namespace

BENCHMARK(BM_RefreshPass)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RefreshPass_Floor)->Unit(benchmark::kMillisecond);
