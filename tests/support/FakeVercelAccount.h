#pragma once

#include "support/LoopbackHttpServer.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QMap>
#include <QSet>
#include <functional>

// Plays one Vercel account on a LoopbackHttpServer: the user, its teams, the token, and the
// projects and deployments of each scope (keyed by team id; "" is the personal account).
// Tests change the data or inject a failure between passes.
//
// As untidy as a real account: lists come in pages ("limit", 20 when not given, at most 100;
// "until" and pagination.next), newest first (projects by `updatedAt`, deployments by
// `createdAt`, teams by `createdAt`); deployments can be asked for by "since", "projectId" and
// "meta-KEY" filters, and one at a time from /v13/deployments/{id};
// a team may require a SAML sign-in; and a rate limit may hold every request to so many a minute.
class FakeVercelAccount {
public:
    explicit FakeVercelAccount(LoopbackHttpServer& server);

    // Requests per fixed minute of `now`: every answer carries X-RateLimit-Limit, -Remaining and
    // -Reset, and those over the limit answer 429 with Retry-After.
    struct RateLimit {
        int perMinute = 0;
        std::function<QDateTime()> now;
    };

    QJsonObject user{
        {"id", "usr_1"}, {"username", "ada"}, {"email", "ada@example.com"}, {"name", QJsonValue()}};
    QJsonArray teams;
    QJsonObject token{{"id", "tok_1"}, {"name", "quillon"}, {"expiresAt", QJsonValue()}};
    QMap<QString, QJsonArray> projects;    // scope team id → projects
    QMap<QString, QJsonArray> deployments; // scope team id → deployments
    QMap<QString, QJsonArray> events;      // deployment id → build events
    // Path → response that replaces the normal answer (a failure to inject).
    QMap<QString, LoopbackHttpServer::Response> failures;
    // When above 0, every failEvery-th request of the account's endpoints answers HTTP 500.
    int failEvery = 0;
    std::optional<RateLimit> rateLimit;
    // Teams whose every request answers 403 with Vercel's SAML body.
    QSet<QString> samlTeams;
    // When above 0, each project lists as its latestDeployments the newest so many of the
    // deployments given to addProject and of its scope's, as Vercel does; otherwise those given.
    int latestPerProject = 0;
    // Writes: POST /v13/deployments (a redeploy) adds a queued deployment of the same project and
    // target, created `now`; PATCH /v12/deployments/{id}/cancel turns a queued or building one
    // canceled and answers 400 for one that has finished. Teams listed here answer every write
    // with 403: the token may read them but not deploy.
    QSet<QString> readOnlyTeams;
    std::function<QDateTime()> now = &QDateTime::currentDateTime;
    // Path → answers for its next requests, one each, before the normal answer comes back (a
    // 429 during a wait, the states a build goes through).
    QMap<QString, QList<LoopbackHttpServer::Response>> upcoming;

    void addTeam(const QString& id, const QString& slug);
    // A team that requires a SAML sign-in: listed as `limited`, and closed to every request.
    void addSamlTeam(const QString& id, const QString& slug, const QString& name);
    // A project in a scope, with optional latestDeployments.
    void addProject(const QString& scope, const QString& id, const QString& name,
                    const QJsonArray& latest = {});
    void addDeployment(const QString& scope, const QJsonObject& deployment);
    // Changes the deployment with this uid in place.
    void updateDeployment(const QString& scope, const QString& id,
                          const std::function<void(QJsonObject&)>& change);
    void removeDeployment(const QString& scope, const QString& id);
    // The project goes, and its deployments with it, as on Vercel.
    void removeProject(const QString& scope, const QString& id);
    // The git repository the project deploys from, as /v9/projects shows it under `link`.
    void linkProject(const QString& scope, const QString& id, const QJsonObject& link);
    // The deployment with this uid as GET /v13/deployments/{id} answers it: `id` rather than
    // `uid`, `readyState` rather than `state`, changed by `change`.
    QJsonObject singleDeployment(const QString& scope, const QString& id,
                                 const std::function<void(QJsonObject&)>& change = {}) const;

    int requestCount(const QString& path) const;
    // Requests answered 429 so far.
    int rateLimitedCount() const { return rateLimited_; }
    // Vercel's 403 for a scope that wants a SAML sign-in.
    static LoopbackHttpServer::Response samlRefusal(const QString& teamId, const QString& slug);

    // A deployment as Vercel lists it: `createdAt` in ms, untidy extras included.
    static QJsonObject deployment(const QString& id, const QString& projectId, const QString& state,
                                  double createdAtMs,
                                  std::optional<double> readyAtMs = std::nullopt);

private:
    LoopbackHttpServer::Response answer(const QString& path,
                                        const LoopbackHttpServer::Request& request);
    LoopbackHttpServer::Response listAnswer(const QString& path,
                                            const LoopbackHttpServer::Request& request);
    LoopbackHttpServer::Response eventsAnswer(const QString& path);
    LoopbackHttpServer::Response writeAnswer(const QString& path,
                                             const LoopbackHttpServer::Request& request);
    LoopbackHttpServer::Response redeployAnswer(const QString& scope,
                                                const LoopbackHttpServer::Request& request);
    LoopbackHttpServer::Response cancelAnswer(const QString& scope, const QString& id);
    LoopbackHttpServer::Response deploymentAnswer(const QString& path,
                                                  const LoopbackHttpServer::Request& request);
    QJsonArray listedProjects(const QString& scope) const;
    // Counts the request against the rate limit: the 429 when over it, and the headers to add.
    std::optional<LoopbackHttpServer::Response> pace(QList<LoopbackHttpServer::Header>& headers);
    LoopbackHttpServer& server_;
    int served_ = 0;
    int redeployed_ = 0;
    int rateLimited_ = 0;
    qint64 window_ = -1; // the minute being counted, in minutes since the epoch
    int inWindow_ = 0;
};
