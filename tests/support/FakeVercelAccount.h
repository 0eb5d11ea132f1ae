#pragma once

#include "support/LoopbackHttpServer.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QMap>

// Plays one Vercel account on a LoopbackHttpServer: the user, its teams, the token, and the
// projects and deployments of each scope (keyed by team id; "" is the personal account).
// Tests change the data or inject a failure between passes.
class FakeVercelAccount {
public:
    explicit FakeVercelAccount(LoopbackHttpServer& server);

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

    void addTeam(const QString& id, const QString& slug);
    // A project in a scope, with optional latestDeployments.
    void addProject(const QString& scope, const QString& id, const QString& name,
                    const QJsonArray& latest = {});
    void addDeployment(const QString& scope, const QJsonObject& deployment);

    int requestCount(const QString& path) const;

    // A deployment as Vercel lists it: `createdAt` in ms, untidy extras included.
    static QJsonObject deployment(const QString& id, const QString& projectId, const QString& state,
                                  double createdAtMs,
                                  std::optional<double> readyAtMs = std::nullopt);

private:
    LoopbackHttpServer::Response answer(const QString& path,
                                        const LoopbackHttpServer::Request& request);
    LoopbackHttpServer& server_;
    int served_ = 0;
};
