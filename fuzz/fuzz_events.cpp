// /v3/deployments/{id}/events bodies: strict decode, cleaning, excerpt and the report around it.
#include "FuzzCheck.h"
#include "core/vercel/BuildLog.h"
#include "core/vercel/FailureReport.h"
#include "core/vercel/VercelDecoding.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto events = decodeResponse<BuildEventList>(body);
    if (!events)
        return 0;
    const QStringList lines = cleanBuildLog(*events);
    FUZZ_CHECK(lines.size() <= events->size());
    for (const QString& line : lines)
        FUZZ_CHECK(!line.isEmpty());
    const QStringList excerpt = relevantLogExcerpt(lines);
    FUZZ_CHECK(excerpt.size() <= 80);
    ProjectSnapshot snapshot{QStringLiteral("prj_1"), QStringLiteral("site"),
                             QStringLiteral("acme"),  std::nullopt,
                             VercelDeployment{},      std::nullopt};
    const QString report = failureReportText(snapshot, excerpt);
    FUZZ_CHECK(excerpt.isEmpty() || report.contains(excerpt.join(u'\n')));
    return 0;
}
