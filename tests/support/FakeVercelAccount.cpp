#include "support/FakeVercelAccount.h"

#include <QJsonDocument>

namespace {

QString teamOf(const LoopbackHttpServer::Request& request) {
    for (const auto& [name, value] : request.queryItems()) {
        if (name == QLatin1String("teamId"))
            return value;
    }
    return {};
}

QByteArray body(const QJsonObject& object) {
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

// Vercel pages its lists; one page holds everything here.
QJsonObject pagination(int count) {
    return {{"count", count}, {"next", QJsonValue()}, {"prev", QJsonValue()}};
}

} // namespace

FakeVercelAccount::FakeVercelAccount(LoopbackHttpServer& server) : server_(server) {
    for (const QString path :
         {"/v2/user", "/v2/teams", "/v5/user/tokens/current", "/v9/projects", "/v6/deployments"}) {
        server_.route(path, [this, path](const auto& request) { return answer(path, request); });
    }
    server_.setFallback([this](const LoopbackHttpServer::Request& request) {
        const QString path = request.path;
        if (failures.contains(path))
            return failures.value(path);
        if (path.startsWith("/v3/deployments/") && path.endsWith("/events")) {
            const QString id = path.mid(16, path.size() - 16 - 7);
            if (events.contains(id))
                return LoopbackHttpServer::Response::json(
                    QJsonDocument(events.value(id)).toJson(QJsonDocument::Compact));
        }
        return LoopbackHttpServer::Response::vercelError(404, "not_found", "Not Found");
    });
}

LoopbackHttpServer::Response FakeVercelAccount::answer(const QString& path,
                                                       const LoopbackHttpServer::Request& request) {
    using Response = LoopbackHttpServer::Response;
    if (failures.contains(path))
        return failures.value(path);
    if (failEvery > 0 && ++served_ % failEvery == 0)
        return Response::vercelError(500, "internal_server_error", "An unexpected error occurred.");
    if (path == "/v2/user")
        return Response::json(body({{"user", user}}));
    if (path == "/v2/teams")
        return Response::json(body({{"teams", teams}, {"pagination", pagination(teams.size())}}));
    if (path == "/v5/user/tokens/current")
        return Response::json(body({{"token", token}}));
    const QString scope = teamOf(request);
    if (path == "/v9/projects") {
        const QJsonArray list = projects.value(scope);
        return Response::chunkedJson(
            body({{"projects", list}, {"pagination", pagination(list.size())}}), 512);
    }
    const QJsonArray list = deployments.value(scope);
    return Response::json(body({{"deployments", list}, {"pagination", pagination(list.size())}}));
}

void FakeVercelAccount::addTeam(const QString& id, const QString& slug) {
    teams.append(QJsonObject{{"id", id},
                             {"slug", slug},
                             {"name", slug.toUpper()},
                             {"membership", QJsonObject{{"role", "OWNER"}}}});
}

void FakeVercelAccount::addProject(const QString& scope, const QString& id, const QString& name,
                                   const QJsonArray& latest) {
    QJsonObject project{{"id", id},
                        {"name", name},
                        {"framework", "nextjs"},
                        {"accountId", scope.isEmpty() ? "usr_1" : scope}};
    if (!latest.isEmpty())
        project.insert("latestDeployments", latest);
    QJsonArray list = projects.value(scope);
    list.append(project);
    projects.insert(scope, list);
}

void FakeVercelAccount::addDeployment(const QString& scope, const QJsonObject& deployment) {
    QJsonArray list = deployments.value(scope);
    list.append(deployment);
    deployments.insert(scope, list);
}

int FakeVercelAccount::requestCount(const QString& path) const {
    return static_cast<int>(server_.requestsTo(path).size());
}

QJsonObject FakeVercelAccount::deployment(const QString& id, const QString& projectId,
                                          const QString& state, double createdAtMs,
                                          std::optional<double> readyAtMs) {
    // The list endpoint names the id `uid` and the state `state`, as Vercel does.
    QJsonObject d{{"uid", id},
                  {"name", "web"},
                  {"projectId", projectId},
                  {"url", id + ".vercel.app"},
                  {"state", state},
                  {"created", createdAtMs},
                  {"createdAt", createdAtMs},
                  {"buildingAt", createdAtMs},
                  {"ready", readyAtMs ? QJsonValue(*readyAtMs) : QJsonValue()},
                  {"target", QJsonValue()},
                  {"creator", QJsonObject{{"uid", "usr_1"}, {"username", "ada"}}},
                  {"meta", QJsonObject{{"githubCommitRef", "main"},
                                       {"githubCommitSha", "4f2a9c1e0b"},
                                       {"githubCommitMessage", "Fix login\n\nLonger text"},
                                       {"githubPrId", QJsonValue()}}}};
    return d;
}
