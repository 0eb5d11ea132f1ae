#include "core/vercel/BuildLog.h"
#include "core/vercel/VercelDecoding.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <benchmark/benchmark.h>

// "Copy for AI" on a long build: decode 20,000 build events, strip their terminal sequences and
// cut out the relevant lines. Its floor is Qt's parse of the same bytes alone; the whole should
// stay within 1.2 times it.

namespace {

// A Next.js build log as Vercel streams it: coloured stdout lines, some events carrying their text
// only in `payload`, and the failure near the end.
const QByteArray& eventsBody() {
    static const QByteArray body = [] {
        QJsonArray events;
        for (int i = 0; i < 20000; ++i) {
            const QString text =
                i == 19950 ? QStringLiteral("\x1b[31mType error: Property 'customerId' does not "
                                            "exist on type 'CheckoutSession'.\x1b[39m")
                : i % 7 == 0
                    ? QStringLiteral(
                          "\x1b[2m[%1/20000]\x1b[22m Compiling \x1b[36m./src/module-%1.ts"
                          "\x1b[39m")
                          .arg(i)
                    : QStringLiteral("   Collecting page data for /products/%1 ...").arg(i);
            QJsonObject event{{"type", i % 3 == 0 ? "stderr" : "stdout"},
                              {"created", 1732351201250.0 + i},
                              {"serial", QString::number(i)},
                              {"deploymentId", "dpl_7Hk2vQbN3cXyZ9aP"}};
            if (i % 5 == 0)
                event.insert("payload", QJsonObject{{"text", text}, {"id", i}});
            else
                event.insert("text", text);
            events.append(event);
        }
        return QJsonDocument(events).toJson(QJsonDocument::Compact);
    }();
    return body;
}

void BM_BuildLogExcerpt(benchmark::State& state) {
    for (auto _ : state) {
        const std::optional<BuildEventList> events = decodeResponse<BuildEventList>(eventsBody());
        QStringList excerpt = relevantLogExcerpt(cleanBuildLog(*events));
        benchmark::DoNotOptimize(excerpt);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * eventsBody().size());
}

void BM_BuildLogExcerpt_Floor(benchmark::State& state) {
    for (auto _ : state) {
        QJsonDocument document = QJsonDocument::fromJson(eventsBody());
        benchmark::DoNotOptimize(document);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * eventsBody().size());
}

} // namespace

BENCHMARK(BM_BuildLogExcerpt)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BuildLogExcerpt_Floor)->Unit(benchmark::kMillisecond);
