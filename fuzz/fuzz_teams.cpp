// /v2/teams bodies.
#include "FuzzCheck.h"
#include "core/monitor/ScopeProblem.h"
#include "core/vercel/ProjectRef.h"
#include "core/vercel/VercelDecoding.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    if (const auto decoded = decodeResponse<TeamsResponse>(body)) {
        for (const VercelTeam& team : decoded->teams) {
            // Each team becomes a scope whose projects carry its id and slug.
            const ProjectRef ref{QStringLiteral("prj"), team.name.value_or(team.slug), team.id,
                                 team.slug};
            FUZZ_CHECK(ref == ref);
            (void)qHash(ref);
            // A limited team is told in one sentence that names it.
            if (const auto problem = ScopeProblem::fromTeam(team, QDateTime()))
                FUZZ_CHECK(problem->sentence().contains(teamDisplayName(team)));
        }
    }
    return 0;
}
