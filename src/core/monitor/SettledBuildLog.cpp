#include "core/monitor/SettledBuildLog.h"

#include "core/vercel/BuildLog.h"

using namespace std::chrono_literals;

namespace {

constexpr double freshFailureMs = 60'000;
constexpr auto settleCheck = 1s;
constexpr auto settleLimit = 5s;

bool failedJustNow(const VercelDeployment& deployment, const QDateTime& now) {
    if (deployment.status() != DeployStatus::error)
        return false;
    const std::optional<double> at = deployment.ready ? deployment.ready : deployment.startedAt();
    return at && static_cast<double>(now.toMSecsSinceEpoch()) - *at < freshFailureMs;
}

} // namespace

QCoro::Task<QStringList> settledBuildLog(VercelAPI api, VercelDeployment deployment,
                                         std::optional<QString> teamId, Clock& clock,
                                         std::shared_ptr<Cancellation> cancel) {
    const QString id = deployment.deploymentID();
    const bool waitForEnd = failedJustNow(deployment, clock.now());
    RequestResult<QStringList> log = co_await buildLog(api, id, teamId);
    const QDateTime giveUp = clock.now().addMSecs(std::chrono::milliseconds(settleLimit).count());
    while (waitForEnd && !cancel->isCancelled() && clock.now() < giveUp) {
        co_await clock.sleep(settleCheck, cancel);
        if (cancel->isCancelled())
            break;
        RequestResult<QStringList> again = co_await buildLog(api, id, teamId);
        const bool settled = log && again && again->size() == log->size() && mentionsError(*again);
        log = std::move(again);
        if (settled)
            break;
    }
    co_return log ? log.value() : QStringList();
}
