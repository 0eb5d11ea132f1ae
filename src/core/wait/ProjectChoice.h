#pragma once

#include "core/common/Expected.h"
#include "core/vercel/ProjectRef.h"
#include "core/vercel/VercelRecords.h"
#include "core/wait/LocalProjectLink.h"
#include "core/wait/RepositoryAddress.h"

// A project of the account with the repository it deploys from.
struct LinkedProject {
    ProjectRef ref;
    std::optional<VercelGitLink> link;
};

// What names the project to wait on, strongest first.
struct ProjectHints {
    std::optional<QString> named = std::nullopt;            // --project: a name or an id
    std::optional<LocalProjectLink> local = std::nullopt;   // the folder's .vercel/project.json
    std::optional<RepositoryAddress> remote = std::nullopt; // the folder's remote named origin

    // Whether projects of this scope can be the one: only the linked project's scope matters
    // when nothing stronger or looser names it.
    bool wantsScope(const std::optional<QString>& teamId) const;
};

// The one project the hints name among `projects`, or the sentence that says why there is none:
// nothing matches, several do, or there is nothing to go by. `closed`: the scopes that could not
// be read (a team that wants SAML), named when nothing was found.
Expected<LinkedProject, QString> chooseProject(const QList<LinkedProject>& projects,
                                               const ProjectHints& hints,
                                               const QStringList& closed = {});
