#include "VercelBodies.h"

#include "core/vercel/VercelDecoding.h"

#include <QJsonDocument>
#include <benchmark/benchmark.h>

// Each decode is paired with a floor: Qt's own JSON parser reading the same bytes and building
// nothing of ours. The full decode should stay within 1.2 times its floor.

namespace {

const QByteArray& deployments() {
    static const QByteArray body = deploymentsPage(100);
    return body;
}

const QByteArray& projects() {
    static const QByteArray body = projectsPage(100);
    return body;
}

template <typename Response> void decode(benchmark::State& state, const QByteArray& body) {
    if (!decodeResponse<Response>(body))
        state.SkipWithError("the generated body does not decode");
    for (auto _ : state) {
        std::optional<Response> decoded = decodeResponse<Response>(body);
        benchmark::DoNotOptimize(decoded);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * body.size());
}

void parseOnly(benchmark::State& state, const QByteArray& body) {
    for (auto _ : state) {
        QJsonDocument document = QJsonDocument::fromJson(body);
        benchmark::DoNotOptimize(document);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * body.size());
}

void BM_DecodeDeployments(benchmark::State& state) {
    decode<DeploymentsResponse>(state, deployments());
}
void BM_DecodeDeployments_Floor(benchmark::State& state) {
    parseOnly(state, deployments());
}
void BM_DecodeProjects(benchmark::State& state) {
    decode<ProjectsResponse>(state, projects());
}
void BM_DecodeProjects_Floor(benchmark::State& state) {
    parseOnly(state, projects());
}

} // namespace

BENCHMARK(BM_DecodeDeployments);
BENCHMARK(BM_DecodeDeployments_Floor);
BENCHMARK(BM_DecodeProjects);
BENCHMARK(BM_DecodeProjects_Floor);
