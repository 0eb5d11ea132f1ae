// /v6/deployments bodies: strict decode, then every derived value of each deployment.
#include "DeploymentProbe.h"
#include "core/vercel/VercelDecoding.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    prepareDeploymentProbe();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    if (const auto decoded = decodeResponse<DeploymentsResponse>(body)) {
        for (const VercelDeployment& deployment : decoded->deployments)
            probeDeployment(deployment, deployment.name.value_or(QStringLiteral("site")));
    }
    return 0;
}
