#include "cli/ProjectLookup.h"

#include "cli/CliCommand.h"
#include "core/common/Language.h"
#include "core/monitor/AppState.h"

std::optional<ProjectRef> findProject(const AppState& state, const QString& wanted,
                                      const QString& command) {
    QList<ProjectRef> found;
    for (const ProjectRef& ref : state.availableProjects()) {
        if (ref.name == wanted || ref.id == wanted)
            found << ref;
    }
    if (found.size() == 1)
        return found.first();
    if (found.isEmpty()) {
        cliErr() << "quillon-cli " << command << ": "
                 << Language::text("no project is named '%1'.", "aucun projet ne s'appelle '%1'.")
                        .arg(wanted)
                 << '\n';
        if (state.lastError())
            cliErr() << *state.lastError() << '\n';
        return std::nullopt;
    }
    QStringList choices;
    for (const ProjectRef& ref : found)
        choices << ref.id + QStringLiteral(" (") + ref.scopeSlug + QLatin1Char(')');
    cliErr() << "quillon-cli " << command << ": "
             << Language::text("several projects are named '%1': %2. Name one by its id.",
                               "plusieurs projets s'appellent '%1' : %2. Nommez-en un par son "
                               "identifiant.")
                    .arg(wanted, choices.join(QStringLiteral(", ")))
             << '\n';
    return std::nullopt;
}
