#include "support/FakeVercelAccount.h"

#include <QJsonDocument>
#include <algorithm>

using Response = LoopbackHttpServer::Response;
using Request = LoopbackHttpServer::Request;

namespace {

QString queryValue(const Request& request, QLatin1StringView wanted) {
    for (const auto& [name, value] : request.queryItems()) {
        if (name == wanted)
            return value;
    }
    return {};
}

QString teamOf(const Request& request) {
    return queryValue(request, QLatin1StringView("teamId"));
}

QByteArray body(const QJsonObject& object) {
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

// The time stamp a list is ordered and paged by.
double pageKey(const QJsonObject& item, const QString& path) {
    if (path == QLatin1String("/v9/projects"))
        return item.value("updatedAt").toDouble();
    return item.value("createdAt").toDouble(item.value("created").toDouble());
}

// One page of `all` as Vercel serves it: newest first, created after "since" and before
// "until", of the project "projectId" when asked, at most "limit" (20 when not given, 100 at
// most), and pagination.next set while older items remain.
QJsonObject page(const QString& key, const QString& path, QJsonArray all, const Request& request) {
    QList<QJsonObject> items;
    for (const QJsonValue& item : all)
        items.append(item.toObject());
    std::stable_sort(items.begin(), items.end(), [&](const QJsonObject& a, const QJsonObject& b) {
        return pageKey(a, path) > pageKey(b, path);
    });
    const QString until = queryValue(request, QLatin1StringView("until"));
    if (!until.isEmpty()) {
        const double bound = until.toDouble();
        items.removeIf([&](const QJsonObject& item) { return pageKey(item, path) >= bound; });
    }
    const QString since = queryValue(request, QLatin1StringView("since"));
    if (!since.isEmpty()) {
        const double bound = since.toDouble();
        items.removeIf([&](const QJsonObject& item) { return pageKey(item, path) <= bound; });
    }
    const QString project = queryValue(request, QLatin1StringView("projectId"));
    if (!project.isEmpty())
        items.removeIf([&](const QJsonObject& item) { return item.value("projectId") != project; });
    // meta-KEY=VALUE keeps the deployments whose meta holds exactly that text.
    for (const auto& [name, value] : request.queryItems()) {
        if (!name.startsWith(QLatin1String("meta-")))
            continue;
        const QString key = name.mid(5);
        const QJsonValue wanted(value); // a structured binding cannot be captured before C++23
        items.removeIf([&](const QJsonObject& item) {
            return item.value("meta").toObject().value(key) != wanted;
        });
    }
    const QString limitText = queryValue(request, QLatin1StringView("limit"));
    const int limit = std::clamp(limitText.isEmpty() ? 20 : limitText.toInt(), 1, 100);
    QJsonArray kept;
    for (int i = 0; i < std::min<int>(limit, items.size()); ++i)
        kept.append(items.at(i));
    const QJsonValue next = items.size() > limit ? QJsonValue(pageKey(items.at(limit - 1), path))
                                                 : QJsonValue(QJsonValue::Null);
    return {{key, kept},
            {"pagination",
             QJsonObject{{"count", kept.size()}, {"next", next}, {"prev", QJsonValue()}}}};
}

// The newest `count` of `given` and `more`, as /v9/projects lists a project's deployments.
QJsonArray newestOf(const QJsonArray& given, QList<QJsonObject> more, int count) {
    for (const QJsonValue& item : given)
        more.append(item.toObject());
    std::stable_sort(more.begin(), more.end(), [](const QJsonObject& a, const QJsonObject& b) {
        return a.value("createdAt").toDouble() > b.value("createdAt").toDouble();
    });
    QJsonArray newest;
    for (int i = 0; i < std::min<int>(count, more.size()); ++i)
        newest.append(more.at(i));
    return newest;
}

} // namespace

FakeVercelAccount::FakeVercelAccount(LoopbackHttpServer& server) : server_(server) {
    for (const QString path :
         {"/v2/user", "/v2/teams", "/v5/user/tokens/current", "/v9/projects", "/v6/deployments"}) {
        server_.route(path, [this, path](const auto& request) { return answer(path, request); });
    }
    server_.setFallback([this](const Request& request) { return answer(request.path, request); });
}

Response FakeVercelAccount::samlRefusal(const QString& teamId, const QString& slug) {
    const QJsonObject error{
        {"code", "forbidden"},
        {"message", QStringLiteral("Not authorized: Trying to access resource under scope \"%1\". "
                                   "You must re-authenticate to this scope or use a token with "
                                   "access to this scope.")
                        .arg(slug)},
        {"saml", true},
        {"teamId", teamId},
        {"scope", slug},
        {"enforced", true}};
    return Response::json(body({{"error", error}}), 403);
}

std::optional<Response> FakeVercelAccount::pace(QList<LoopbackHttpServer::Header>& headers) {
    if (!rateLimit || rateLimit->perMinute <= 0)
        return std::nullopt;
    const qint64 seconds = rateLimit->now().toSecsSinceEpoch();
    if (seconds / 60 != window_) {
        window_ = seconds / 60;
        inWindow_ = 0;
    }
    ++inWindow_;
    const qint64 reset = (window_ + 1) * 60;
    const int remaining = std::max(0, rateLimit->perMinute - inWindow_);
    headers = {{"X-RateLimit-Limit", QByteArray::number(rateLimit->perMinute)},
               {"X-RateLimit-Remaining", QByteArray::number(remaining)},
               {"X-RateLimit-Reset", QByteArray::number(reset)}};
    if (inWindow_ <= rateLimit->perMinute)
        return std::nullopt;
    ++rateLimited_;
    Response limited = Response::vercelError(429, "rate_limited", "Rate limit exceeded");
    limited.headers = headers;
    limited.headers.append({"Retry-After", QByteArray::number(reset - seconds)});
    return limited;
}

Response FakeVercelAccount::answer(const QString& path, const Request& request) {
    QList<LoopbackHttpServer::Header> headers;
    if (std::optional<Response> limited = pace(headers))
        return *limited;
    Response response = [&] {
        if (failures.contains(path))
            return failures.value(path);
        const QString team = teamOf(request);
        if (!team.isEmpty() && samlTeams.contains(team))
            return samlRefusal(team, team);
        if (path.startsWith("/v3/deployments/") && path.endsWith("/events"))
            return eventsAnswer(path);
        if (QList<Response>& next = upcoming[path]; !next.isEmpty())
            return next.takeFirst();
        if (request.method != "GET")
            return writeAnswer(path, request);
        if (path.startsWith("/v13/deployments/"))
            return deploymentAnswer(path, request);
        if (failEvery > 0 && ++served_ % failEvery == 0)
            return Response::vercelError(500, "internal_server_error",
                                         "An unexpected error occurred.");
        return listAnswer(path, request);
    }();
    response.headers.append(headers);
    return response;
}

Response FakeVercelAccount::eventsAnswer(const QString& path) {
    const QString id = path.mid(16, path.size() - 16 - 7);
    if (events.contains(id))
        return Response::json(QJsonDocument(events.value(id)).toJson(QJsonDocument::Compact));
    return Response::vercelError(404, "not_found", "Not Found");
}

Response FakeVercelAccount::writeAnswer(const QString& path, const Request& request) {
    const QString team = teamOf(request);
    if (readOnlyTeams.contains(team))
        return Response::json(R"({"error":{"code":"forbidden","message":"You don't have )"
                              R"(permission to create the deployment.","invalidToken":false}})",
                              403);
    if (request.method == "POST" && path == "/v13/deployments")
        return redeployAnswer(team, request);
    static const QString cancelPrefix = QStringLiteral("/v12/deployments/");
    if (request.method == "PATCH" && path.startsWith(cancelPrefix) && path.endsWith("/cancel"))
        return cancelAnswer(team, path.mid(cancelPrefix.size()).chopped(7));
    return Response::vercelError(404, "not_found", "Not Found");
}

Response FakeVercelAccount::redeployAnswer(const QString& scope, const Request& request) {
    const QJsonObject asked = QJsonDocument::fromJson(request.body).object();
    const QString from = asked.value("deploymentId").toString();
    for (const QJsonValue& value : deployments.value(scope)) {
        const QJsonObject source = value.toObject();
        if (source.value("uid") != from)
            continue;
        const QString id = QStringLiteral("dpl_redeploy%1").arg(++redeployed_);
        QJsonObject created = deployment(id, source.value("projectId").toString(), "QUEUED",
                                         static_cast<double>(now().toMSecsSinceEpoch()));
        created.insert("name", asked.value("name"));
        created.insert("meta", source.value("meta"));
        created.insert("target",
                       asked.value("target").isString() ? asked.value("target") : QJsonValue());
        created.insert("buildingAt", QJsonValue());
        addDeployment(scope, created);
        // The one record Vercel answers with names the id `id` and the state `readyState`.
        created.insert("id", id);
        created.insert("readyState", "QUEUED");
        return Response::json(body(created));
    }
    return Response::vercelError(404, "not_found", "Deployment not found");
}

Response FakeVercelAccount::cancelAnswer(const QString& scope, const QString& id) {
    for (const QJsonValue& value : deployments.value(scope)) {
        QJsonObject found = value.toObject();
        if (found.value("uid") != id)
            continue;
        const QString state = found.value("state").toString();
        if (state != "QUEUED" && state != "INITIALIZING" && state != "BUILDING")
            return Response::json(R"({"error":{"code":"bad_request","message":"The deployment )"
                                  R"(is not building and cannot be canceled."}})",
                                  400);
        updateDeployment(scope, id, [this](QJsonObject& d) {
            d.insert("state", "CANCELED");
            d.insert("canceledAt", static_cast<double>(now().toMSecsSinceEpoch()));
        });
        found.insert("id", id);
        found.insert("readyState", "CANCELED");
        return Response::json(body(found));
    }
    return Response::vercelError(404, "not_found", "Deployment not found");
}

Response FakeVercelAccount::deploymentAnswer(const QString& path, const Request& request) {
    const QString id = path.mid(QStringLiteral("/v13/deployments/").size());
    const QJsonObject found = singleDeployment(teamOf(request), id);
    if (found.isEmpty())
        return Response::vercelError(404, "not_found", "The deployment could not be found.");
    return Response::json(body(found));
}

QJsonObject
FakeVercelAccount::singleDeployment(const QString& scope, const QString& id,
                                    const std::function<void(QJsonObject&)>& change) const {
    for (const QJsonValue& listed : deployments.value(scope)) {
        QJsonObject d = listed.toObject();
        if (d.value("uid") != id)
            continue;
        d.insert("id", d.take("uid"));
        d.insert("readyState", d.take("state"));
        d.insert("inspectorUrl", QStringLiteral("https://vercel.com/ada/%1/%2")
                                     .arg(d.value("name").toString(), id.mid(4)));
        if (change)
            change(d);
        return d;
    }
    return {};
}

void FakeVercelAccount::linkProject(const QString& scope, const QString& id,
                                    const QJsonObject& link) {
    QJsonArray list = projects.value(scope);
    for (QJsonValueRef value : list) {
        QJsonObject project = value.toObject();
        if (project.value("id") == id)
            project.insert("link", link);
        value = project;
    }
    projects.insert(scope, list);
}

Response FakeVercelAccount::listAnswer(const QString& path, const Request& request) {
    if (path == "/v2/user")
        return Response::json(body({{"user", user}}));
    if (path == "/v2/teams")
        return Response::json(body(page("teams", path, teams, request)));
    if (path == "/v5/user/tokens/current")
        return Response::json(body({{"token", token}}));
    const QString scope = teamOf(request);
    if (path == "/v9/projects")
        return Response::chunkedJson(body(page("projects", path, listedProjects(scope), request)),
                                     512);
    if (path == "/v6/deployments")
        return Response::json(body(page("deployments", path, deployments.value(scope), request)));
    return Response::vercelError(404, "not_found", "Not Found");
}

void FakeVercelAccount::addTeam(const QString& id, const QString& slug) {
    teams.append(QJsonObject{{"id", id},
                             {"slug", slug},
                             {"name", slug.toUpper()},
                             {"createdAt", 1'700'000'000'000.0 - teams.size() * 1000.0},
                             {"membership", QJsonObject{{"role", "OWNER"}}}});
}

void FakeVercelAccount::addSamlTeam(const QString& id, const QString& slug, const QString& name) {
    teams.append(QJsonObject{
        {"id", id},
        {"slug", slug},
        {"name", name},
        {"createdAt", 1'700'000'000'000.0 - teams.size() * 1000.0},
        {"limited", true},
        {"limitedBy", QJsonArray{"scope"}},
        {"saml", QJsonObject{{"enforced", true},
                             {"connection", QJsonObject{{"type", "okta"}, {"state", "active"}}}}},
        {"membership", QJsonObject{{"role", "MEMBER"}, {"confirmed", true}}}});
    samlTeams.insert(id);
}

void FakeVercelAccount::addProject(const QString& scope, const QString& id, const QString& name,
                                   const QJsonArray& latest) {
    QJsonArray list = projects.value(scope);
    // Listed newest first: each project added counts as updated a second before the one before.
    QJsonObject project{{"id", id},
                        {"name", name},
                        {"framework", "nextjs"},
                        {"updatedAt", 1'790'000'000'000.0 - list.size() * 1000.0},
                        {"accountId", scope.isEmpty() ? "usr_1" : scope}};
    if (!latest.isEmpty())
        project.insert("latestDeployments", latest);
    list.append(project);
    projects.insert(scope, list);
}

void FakeVercelAccount::addDeployment(const QString& scope, const QJsonObject& deployment) {
    QJsonArray list = deployments.value(scope);
    list.append(deployment);
    deployments.insert(scope, list);
}

QJsonArray FakeVercelAccount::listedProjects(const QString& scope) const {
    QJsonArray listed = projects.value(scope);
    if (latestPerProject <= 0)
        return listed;
    QHash<QString, QList<QJsonObject>> byProject;
    for (const QJsonValue& deployment : deployments.value(scope)) {
        const QJsonObject object = deployment.toObject();
        byProject[object.value("projectId").toString()].append(object);
    }
    for (QJsonValueRef value : listed) {
        QJsonObject project = value.toObject();
        const QString id = project.value("id").toString();
        const QJsonArray latest = newestOf(project.value("latestDeployments").toArray(),
                                           byProject.value(id), latestPerProject);
        project.remove("latestDeployments");
        if (!latest.isEmpty())
            project.insert("latestDeployments", latest);
        value = project;
    }
    return listed;
}

void FakeVercelAccount::updateDeployment(const QString& scope, const QString& id,
                                         const std::function<void(QJsonObject&)>& change) {
    QJsonArray list = deployments.value(scope);
    for (QJsonValueRef value : list) {
        QJsonObject deployment = value.toObject();
        if (deployment.value("uid") != id)
            continue;
        change(deployment);
        value = deployment;
    }
    deployments.insert(scope, list);
}

void FakeVercelAccount::removeDeployment(const QString& scope, const QString& id) {
    QJsonArray list = deployments.value(scope);
    for (qsizetype i = list.size() - 1; i >= 0; --i) {
        if (list.at(i).toObject().value("uid") == id)
            list.removeAt(i);
    }
    deployments.insert(scope, list);
}

void FakeVercelAccount::removeProject(const QString& scope, const QString& id) {
    QJsonArray list = projects.value(scope);
    for (qsizetype i = list.size() - 1; i >= 0; --i) {
        if (list.at(i).toObject().value("id") == id)
            list.removeAt(i);
    }
    projects.insert(scope, list);
    QJsonArray kept;
    for (const QJsonValue& deployment : deployments.value(scope)) {
        if (deployment.toObject().value("projectId") != id)
            kept.append(deployment);
    }
    deployments.insert(scope, kept);
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
