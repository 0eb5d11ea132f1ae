#include "soak/SoakScenario.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>

using Response = LoopbackHttpServer::Response;

namespace {

enum Step { failing, failed, serverError, hang, building, succeeded, stepCount };

const QString web = QStringLiteral("p_web");
const QString api = QStringLiteral("p_api");

QJsonArray failedBuildLog() {
    return {
        QJsonObject{{"type", "stdout"}, {"text", "Cloning github.com/acme/api (Branch: main)"}},
        QJsonObject{{"type", "command"}, {"payload", QJsonObject{{"text", "npm run build"}}}},
        QJsonObject{{"type", "stderr"},
                    {"text", "\x1b[31mType error: Property 'customerId' does not exist\x1b[39m"}},
        QJsonObject{{"type", "stderr"}, {"text", "Error: Command \"npm run build\" exited with 1"}},
        QJsonObject{{"type", "delimiter"}}};
}

} // namespace

SoakScenario::SoakScenario(LoopbackHttpServer& server) : server_(server), account_(server) {
    account_.addProject({}, web, QStringLiteral("web"));
    account_.addProject({}, api, QStringLiteral("api"));
    startCycle();
    server_.route(QStringLiteral("/v6/deployments"), [this](const auto&) { return nextPass(); });
}

void SoakScenario::startCycle() {
    ++cycle_;
    cycleStartMs_ = static_cast<double>(QDateTime::currentMSecsSinceEpoch());
    // Only the failure being played keeps a build log, so a long soak holds no growing data.
    account_.events.clear();
    account_.events.insert(QStringLiteral("dpl_api_%1").arg(cycle_), failedBuildLog());
}

Response SoakScenario::nextPass() {
    const int step = passes_ % stepCount;
    ++passes_;
    if (step == failing && passes_ > 1)
        startCycle();
    // The server records every request; a soak must not grow on its own side.
    server_.clearRequests();
    if (step == serverError)
        return Response::vercelError(500, "internal_server_error", "An unexpected error occurred.");
    if (step == hang)
        return Response::never();
    const QJsonObject body{{"deployments", deploymentsFor(step)},
                           {"pagination", QJsonObject{{"count", 2}, {"next", QJsonValue()}}}};
    return Response::json(QJsonDocument(body).toJson(QJsonDocument::Compact));
}

QJsonArray SoakScenario::deploymentsFor(int step) const {
    const double minute = 60'000;
    const QString webState = step == failing     ? QStringLiteral("QUEUED")
                             : step == succeeded ? QStringLiteral("READY")
                                                 : QStringLiteral("BUILDING");
    const QString apiState = step == failing ? QStringLiteral("BUILDING") : QStringLiteral("ERROR");
    // Started before the cycle, so no time lies in the future.
    const std::optional<double> webReady =
        step == succeeded ? std::optional(cycleStartMs_) : std::nullopt;
    const std::optional<double> apiReady =
        step == failing ? std::nullopt : std::optional(cycleStartMs_ - minute);
    return {FakeVercelAccount::deployment(QStringLiteral("dpl_web_%1").arg(cycle_), web, webState,
                                          cycleStartMs_ - 2 * minute, webReady),
            FakeVercelAccount::deployment(QStringLiteral("dpl_api_%1").arg(cycle_), api, apiState,
                                          cycleStartMs_ - 3 * minute, apiReady)};
}
