#include "core/wait/LocalProjectLink.h"

#include "core/common/Language.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

Expected<std::optional<LocalProjectLink>, QString> readLink(const QString& path) {
    QFile file(path);
    const QJsonObject json = file.open(QIODevice::ReadOnly)
                                 ? QJsonDocument::fromJson(file.read(64 * 1024)).object()
                                 : QJsonObject();
    const QString projectId = json.value(QLatin1String("projectId")).toString();
    const QString orgId = json.value(QLatin1String("orgId")).toString();
    if (projectId.isEmpty() || orgId.isEmpty())
        return Language::text("%1 does not name a project (projectId and orgId). Run 'vercel "
                              "link' again, or name the project with --project.",
                              "%1 ne nomme pas de projet (projectId et orgId). Relancez "
                              "'vercel link', ou nommez le projet avec --project.")
            .arg(path);
    return std::optional(LocalProjectLink{projectId, orgId, path});
}

} // namespace

std::optional<QString> LocalProjectLink::teamId() const {
    if (orgId.startsWith(QLatin1String("team_")))
        return orgId;
    return std::nullopt;
}

Expected<std::optional<LocalProjectLink>, QString>
findLocalProjectLink(const QStringList& folders) {
    for (const QString& folder : folders) {
        const QString path = QDir(folder).filePath(QStringLiteral(".vercel/project.json"));
        if (QFile::exists(path))
            return readLink(path);
    }
    return std::optional<LocalProjectLink>();
}
