// The list of every project the token can see, over every scope, for the picker and the passes.
#include "core/common/Preferences.h"
#include "core/monitor/AppState.h"
#include "core/monitor/PreferenceKeys.h"
#include "core/vercel/VercelPages.h"

#include <QCollator>

namespace {

const VercelAPI::Query limit100{{QStringLiteral("limit"), QStringLiteral("100")}};

} // namespace

QCoro::Task<> AppState::loadProjects() {
    if (!api_)
        co_return;
    QPointer<AppState> self(this);
    const quint64 generation = generation_;
    const VercelAPI client = *api_;
    const QList<Scope> scopes = scopes_;
    QList<ProjectRef> refs;
    QSet<QString> seen;
    QSet<QString> unlisted;
    for (const Scope& scope : scopes) {
        const QString key = scopeKey(scope);
        if (isLeftAlone(key)) {
            unlisted.insert(key);
            continue;
        }
        const RequestResult<ProjectsResponse> answer = co_await getAllPages<ProjectsResponse>(
            client, QStringLiteral("/v9/projects"), VercelAPI::withTeam(scope.teamId, limit100));
        if (!self || self->generation_ != generation)
            co_return;
        if (!answer) {
            // Listed without that scope; only a team that refuses the token is told.
            unlisted.insert(key);
            if (answer.error().isForbidden())
                setScopeProblem(key, ScopeProblem::fromError(
                                         *answer.error().apiError(), scopeNames_.value(key),
                                         ScopeProblem::askAgainFrom(services_.clock.now())));
            continue;
        }
        noteScopeAnswered(key, nullptr);
        for (const VercelProject& project : answer->projects) {
            if (seen.contains(project.id))
                continue;
            seen.insert(project.id);
            refs.append({project.id, project.name, scope.teamId, scope.slug});
        }
    }
    unlistedScopes_ = unlisted;
    publishProjects(std::move(refs));
}

void AppState::publishProjects(QList<ProjectRef> refs) {
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::stable_sort(refs.begin(), refs.end(), [&](const ProjectRef& a, const ProjectRef& b) {
        return collator.compare(a.name, b.name) < 0;
    });
    const bool changed = refs != availableProjects_;
    availableProjects_ = refs;
    Q_EMIT availableProjectsChanged();
    Q_EMIT this->changed();

    // Until the user chooses, every project is monitored; the choice is written down once every
    // scope has answered, so that a team missing from this listing is not left out for good.
    const bool configured =
        services_.preferences.boolean(PreferenceKeys::projectsConfigured).value_or(false);
    const bool everyScopeAnswered = unlistedScopes_.isEmpty() && !teamsMissing_;
    if (!configured && !refs.isEmpty() && everyScopeAnswered) {
        monitoredIDs_.clear();
        for (const ProjectRef& ref : refs)
            monitoredIDs_.insert(ref.id);
        persistMonitored();
    } else if (changed) {
        refresh();
    }
}
