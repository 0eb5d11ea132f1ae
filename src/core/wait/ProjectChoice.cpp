#include "core/wait/ProjectChoice.h"

#include "core/common/Language.h"

namespace {

QString listed(const QList<LinkedProject>& projects, bool withIds) {
    QStringList names;
    for (const LinkedProject& project : projects)
        names << (withIds ? project.ref.id : project.ref.name) + QStringLiteral(" (") +
                     project.ref.scopeSlug + u')';
    return names.join(QStringLiteral(", "));
}

QString closedNote(const QStringList& closed) {
    if (closed.isEmpty())
        return {};
    return u' ' + Language::text("Vercel kept these teams closed: %1.",
                                 "Vercel a gardé ces équipes fermées : %1.")
                      .arg(closed.join(QStringLiteral(", ")));
}

Expected<LinkedProject, QString> byName(const QList<LinkedProject>& projects, const QString& name,
                                        const QStringList& closed) {
    QList<LinkedProject> found;
    for (const LinkedProject& project : projects) {
        if (project.ref.id == name)
            return project; // an id names one project, whatever others are called
        if (project.ref.name == name)
            found << project;
    }
    if (found.size() == 1)
        return found.first();
    if (found.isEmpty())
        return Language::text("No project is named '%1'.", "Aucun projet ne s'appelle '%1'.")
                   .arg(name) +
               closedNote(closed);
    return Language::text("Several projects are named '%1': %2. Name one by its id.",
                          "Plusieurs projets s'appellent '%1' : %2. Nommez-en un par son "
                          "identifiant.")
        .arg(name, listed(found, true));
}

Expected<LinkedProject, QString> byLocalLink(const QList<LinkedProject>& projects,
                                             const LocalProjectLink& local,
                                             const QStringList& closed) {
    for (const LinkedProject& project : projects) {
        if (project.ref.id == local.projectId && project.ref.teamId == local.teamId())
            return project;
    }
    return Language::text("%1 links this folder to the project %2, which this token cannot see.",
                          "%1 lie ce dossier au projet %2, que ce jeton ne voit pas.")
               .arg(local.file, local.projectId) +
           closedNote(closed);
}

Expected<LinkedProject, QString> byRemote(const QList<LinkedProject>& projects,
                                          const RepositoryAddress& remote,
                                          const QStringList& closed) {
    QList<LinkedProject> found;
    for (const LinkedProject& project : projects) {
        const auto linked = project.link ? linkedRepository(*project.link) : std::nullopt;
        if (linked && isSameRepository(remote, *linked))
            found << project;
    }
    if (found.size() == 1)
        return found.first();
    if (found.isEmpty())
        return Language::text("No Vercel project deploys %1. Name one with --project.",
                              "Aucun projet Vercel ne déploie %1. Nommez-en un avec --project.")
                   .arg(remote.text()) +
               closedNote(closed);
    return Language::text("Several Vercel projects deploy %1: %2. Choose one with --project.",
                          "Plusieurs projets Vercel déploient %1 : %2. Choisissez-en un avec "
                          "--project.")
        .arg(remote.text(), listed(found, false));
}

} // namespace

bool ProjectHints::wantsScope(const std::optional<QString>& teamId) const {
    if (named || !local)
        return true;
    return local->teamId() == teamId;
}

Expected<LinkedProject, QString> chooseProject(const QList<LinkedProject>& projects,
                                               const ProjectHints& hints,
                                               const QStringList& closed) {
    if (hints.named)
        return byName(projects, *hints.named, closed);
    if (hints.local)
        return byLocalLink(projects, *hints.local, closed);
    if (hints.remote)
        return byRemote(projects, *hints.remote, closed);
    return Language::text("No project to wait for: this folder has no .vercel/project.json and no "
                          "git remote named origin. Name one with --project.",
                          "Aucun projet à attendre : ce dossier n'a ni .vercel/project.json ni "
                          "dépôt distant git nommé origin. Nommez-en un avec --project.");
}
