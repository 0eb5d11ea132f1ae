// Build logs straight from bytes (no JSON in the way): events with text, payload text or none,
// then cleaning, the relevant excerpt and the whole failure report of a fuzzed deployment.
#include "DeploymentProbe.h"
#include "FuzzCheck.h"
#include "core/vercel/BuildLog.h"
#include "core/vercel/FailureReport.h"

#include <fuzzer/FuzzedDataProvider.h>

namespace {

std::optional<QString> maybeText(FuzzedDataProvider& input) {
    if (!input.ConsumeBool())
        return std::nullopt;
    return QString::fromStdString(input.ConsumeRandomLengthString(64));
}

VercelDeployment deploymentFrom(FuzzedDataProvider& input) {
    VercelDeployment d;
    d.uid = maybeText(input);
    d.inspectorUrl = maybeText(input);
    d.target = maybeText(input);
    d.meta.emplace();
    for (const char* key : {"githubCommitRef", "gitlabCommitSha", "githubCommitMessage"}) {
        if (std::optional<QString> text = maybeText(input))
            d.meta->insert(QString::fromLatin1(key), JSONScalar{text});
    }
    if (input.ConsumeBool())
        d.buildingAt = input.ConsumeFloatingPoint<double>();
    if (input.ConsumeBool())
        d.ready = input.ConsumeFloatingPoint<double>();
    return d;
}

BuildEventList eventsFrom(FuzzedDataProvider& input) {
    BuildEventList events;
    while (input.remaining_bytes() > 0) {
        VercelBuildEvent& event = events.emplaceBack();
        const QString text = QString::fromStdString(input.ConsumeRandomLengthString());
        switch (input.ConsumeIntegralInRange(0, 3)) {
        case 0:
            event.text = text;
            break;
        case 1:
            event.payload = VercelBuildEvent::Payload{text};
            break;
        case 2:
            event.payload = VercelBuildEvent::Payload{}; // a payload without text
            break;
        default:
            break; // no text at all
        }
    }
    return events;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    prepareDeploymentProbe();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider input(data, size);
    const VercelDeployment deployment = deploymentFrom(input);
    const BuildEventList events = eventsFrom(input);

    const QStringList lines = cleanBuildLog(events);
    for (const QString& line : lines)
        FUZZ_CHECK(!line.isEmpty());
    const QStringList excerpt = relevantLogExcerpt(lines);
    FUZZ_CHECK(excerpt.size() <= 80);
    FUZZ_CHECK(excerpt.size() <= lines.size());
    if (!excerpt.isEmpty())
        FUZZ_CHECK(lines.contains(excerpt.first()) && lines.contains(excerpt.last()));

    ProjectSnapshot snapshot{QStringLiteral("prj_1"),
                             QStringLiteral("site"),
                             QStringLiteral("acme"),
                             std::nullopt,
                             deployment,
                             std::nullopt};
    const QString report = failureReportText(snapshot, excerpt);
    FUZZ_CHECK(report.startsWith(QStringLiteral("# Vercel deployment failed: site\n")));
    FUZZ_CHECK(excerpt.isEmpty() ? report.contains(QStringLiteral("(log unavailable)"))
                                 : report.contains(excerpt.join(u'\n')));
    probeDeployment(deployment, snapshot.name);
    return 0;
}
