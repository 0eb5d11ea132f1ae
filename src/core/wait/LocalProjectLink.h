#pragma once

#include "core/common/Expected.h"

#include <QString>
#include <QStringList>
#include <optional>

// The Vercel project a folder is linked to, as `vercel link` writes it in .vercel/project.json.
struct LocalProjectLink {
    QString projectId;
    QString orgId; // a team id ("team_…"), or the id of the personal account
    QString file;  // where it was read, for the messages

    // The team that owns the project; absent for the personal account.
    std::optional<QString> teamId() const;
};

// The link in the first of `folders` that holds .vercel/project.json; absent when none does. A
// file that is there but unreadable, or without `projectId` and `orgId`, gives the sentence
// that says so rather than being passed over.
Expected<std::optional<LocalProjectLink>, QString> findLocalProjectLink(const QStringList& folders);
