#include "core/monitor/StatusJson.h"
#include "core/vercel/VercelTime.h"

#include "core/monitor/AppState.h"
#include "core/monitor/StatusLines.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace {

// Absent values are JSON null, so a script can tell "none" from an empty text.
QJsonValue orNull(const std::optional<QString>& text) {
    return text ? QJsonValue(*text) : QJsonValue(QJsonValue::Null);
}

QJsonValue ageSeconds(const std::optional<VercelDeployment>& deployment, const QDateTime& now) {
    if (!deployment)
        return QJsonValue::Null;
    const std::optional<double> created =
        deployment->createdAt ? deployment->createdAt : deployment->created;
    if (!created)
        return QJsonValue::Null;
    const qint64 age = (now.toMSecsSinceEpoch() - boundedMilliseconds(*created)) / 1000;
    return static_cast<qint64>(std::max<qint64>(0, age));
}

QJsonObject snapshotJson(const ProjectSnapshot& snapshot, const QDateTime& now) {
    const std::optional<VercelDeployment>& latest = snapshot.latest;
    const std::optional<QUrl> link = snapshot.dashboardURL();
    return {
        {QStringLiteral("id"), snapshot.id},
        {QStringLiteral("name"), snapshot.name},
        {QStringLiteral("scope"), snapshot.scopeSlug},
        {QStringLiteral("status"), rawValue(snapshot.status()).toLower()},
        {QStringLiteral("branch"), orNull(latest ? latest->branch() : std::nullopt)},
        {QStringLiteral("shortHash"), orNull(latest ? latest->shortSHA() : std::nullopt)},
        {QStringLiteral("ageSeconds"), ageSeconds(latest, now)},
        {QStringLiteral("url"), link ? QJsonValue(link->toString()) : QJsonValue::Null},
    };
}

} // namespace

QJsonObject statusJson(const AppState& state, const QDateTime& now) {
    QJsonArray projects;
    for (const ProjectSnapshot& snapshot : state.snapshots())
        projects.append(snapshotJson(snapshot, now));
    return {
        {QStringLiteral("tone"), toneName(state.overallTone())},
        {QStringLiteral("summary"), state.statusSummary()},
        {QStringLiteral("todayCount"), state.todayCount()},
        {QStringLiteral("projects"), projects},
    };
}

QByteArray statusJsonLine(const AppState& state, const QDateTime& now) {
    return QJsonDocument(statusJson(state, now)).toJson(QJsonDocument::Compact);
}
