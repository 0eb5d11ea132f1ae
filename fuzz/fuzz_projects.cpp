// /v9/projects bodies: strict decode, then each project's latest deployments as the panel reads
// them.
#include "DeploymentProbe.h"
#include "core/vercel/ProjectRef.h"
#include "core/vercel/VercelDecoding.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    prepareDeploymentProbe();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto decoded = decodeResponse<ProjectsResponse>(body);
    if (!decoded)
        return 0;
    for (const VercelProject& project : decoded->projects) {
        (void)qHash(ProjectRef{project.id, project.name, std::nullopt, QStringLiteral("acme")});
        for (const VercelDeployment& deployment :
             project.latestDeployments.value_or(QList<VercelDeployment>()))
            probeDeployment(deployment, project.name);
    }
    return 0;
}
