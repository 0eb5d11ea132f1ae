#include "core/vercel/VercelPages.h"

std::function<bool(const DeploymentsResponse&)> whileNotOlderThan(const QDateTime& since) {
    const double sinceMs = static_cast<double>(since.toMSecsSinceEpoch());
    return [sinceMs](const DeploymentsResponse& soFar) {
        if (soFar.deployments.isEmpty())
            return false;
        const VercelDeployment& oldest = soFar.deployments.constLast();
        return oldest.createdAt.value_or(oldest.created.value_or(0)) >= sinceMs;
    };
}
