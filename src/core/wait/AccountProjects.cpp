#include "core/wait/AccountProjects.h"

#include "core/vercel/VercelPages.h"

namespace {

VercelAPI::Query firstPage() {
    return {{QStringLiteral("limit"), QStringLiteral("100")}};
}

struct Scope {
    std::optional<QString> teamId;
    QString slug;
};

QCoro::Task<RequestResult<QList<Scope>>> listScopes(VercelAPI api) {
    const QString userPath = QStringLiteral("/v2/user");
    const RequestResult<UserResponse> user = co_await api.get<UserResponse>(userPath, {});
    if (!user)
        co_return user.error();
    const QString teamsPath = QStringLiteral("/v2/teams");
    const RequestResult<TeamsResponse> teams =
        co_await getAllPages<TeamsResponse>(api, teamsPath, firstPage());
    if (!teams)
        co_return teams.error();
    QList<Scope> scopes;
    scopes.append(Scope{std::nullopt, user->user.username});
    for (const VercelTeam& team : teams->teams)
        scopes.append(Scope{team.id, team.slug});
    co_return scopes;
}

} // namespace

QCoro::Task<RequestResult<AccountProjects>> listAccountProjects(VercelAPI api, ProjectHints hints) {
    const RequestResult<QList<Scope>> scopes = co_await listScopes(api);
    if (!scopes)
        co_return scopes.error();
    AccountProjects account;
    for (const Scope& scope : scopes.value()) {
        if (!hints.wantsScope(scope.teamId))
            continue;
        const RequestResult<ProjectsResponse> listed = co_await getAllPages<ProjectsResponse>(
            api, QStringLiteral("/v9/projects"), VercelAPI::withTeam(scope.teamId, firstPage()));
        if (!listed && listed.error().isForbidden() && scope.teamId) {
            account.closed << scope.slug;
            continue;
        }
        if (!listed)
            co_return listed.error();
        for (const VercelProject& project : listed->projects)
            account.projects.append(
                {ProjectRef{project.id, project.name, scope.teamId, scope.slug}, project.link});
    }
    co_return account;
}
