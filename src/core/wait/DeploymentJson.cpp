#include "core/wait/DeploymentJson.h"

#include "core/wait/DeploymentWait.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace {

QJsonValue orNull(const std::optional<double>& ms) {
    return ms ? QJsonValue(*ms) : QJsonValue();
}

QJsonValue orNull(const QString& text) {
    return text.isEmpty() ? QJsonValue() : QJsonValue(text);
}

} // namespace

QByteArray deploymentJsonLine(const VercelDeployment& deployment, const LinkedProject& project,
                              const CommitHash& commit) {
    const QString state = deployment.readyState.value_or(deployment.state.value_or(QString()));
    const QJsonObject line{
        {QStringLiteral("state"), orNull(state.toUpper())},
        {QStringLiteral("id"), orNull(deployment.deploymentID())},
        {QStringLiteral("url"), orNull(deploymentAddress(deployment))},
        {QStringLiteral("project"), project.ref.name},
        {QStringLiteral("projectId"), project.ref.id},
        {QStringLiteral("scope"), project.ref.scopeSlug},
        {QStringLiteral("commit"), deployment.commitSHA().value_or(commit.text())},
        {QStringLiteral("createdAt"),
         orNull(deployment.createdAt ? deployment.createdAt : deployment.created)},
        {QStringLiteral("buildingAt"), orNull(deployment.buildingAt)},
        {QStringLiteral("readyAt"), orNull(deployment.ready)},
    };
    return QJsonDocument(line).toJson(QJsonDocument::Compact);
}
