#include "core/vercel/DeploymentWrites.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace {

RequestResult<std::optional<VercelDeployment>>
deploymentOf(const RequestResult<QByteArray>& answer) {
    if (!answer)
        return answer.error();
    return decodeResponse<VercelDeployment>(answer.value());
}

} // namespace

QCoro::Task<RequestResult<std::optional<VercelDeployment>>>
requestRedeploy(VercelAPI api, VercelDeployment from, QString projectName,
                std::optional<QString> teamId) {
    QJsonObject body{{QStringLiteral("deploymentId"), from.deploymentID()},
                     {QStringLiteral("meta"),
                      QJsonObject{{QStringLiteral("action"), QStringLiteral("redeploy")}}},
                     {QStringLiteral("name"), from.name.value_or(projectName)}};
    // Vercel builds a preview when no target is named.
    if (from.target && !from.target->isEmpty())
        body.insert(QStringLiteral("target"), *from.target);
    const VercelAPI::Query query =
        VercelAPI::withTeam(teamId, {{QStringLiteral("forceNew"), QStringLiteral("1")}});
    co_return deploymentOf(co_await api.write(QByteArrayLiteral("POST"),
                                              QStringLiteral("/v13/deployments"), query,
                                              QJsonDocument(body).toJson(QJsonDocument::Compact)));
}

QCoro::Task<RequestResult<std::optional<VercelDeployment>>>
requestCancel(VercelAPI api, QString deploymentID, std::optional<QString> teamId) {
    const QString path = QStringLiteral("/v12/deployments/%1/cancel")
                             .arg(QString::fromLatin1(QUrl::toPercentEncoding(deploymentID)));
    co_return deploymentOf(
        co_await api.write(QByteArrayLiteral("PATCH"), path, VercelAPI::withTeam(teamId, {}), {}));
}
