#pragma once

#include "support/FakeVercelAccount.h"

#include <QDateTime>

// Accounts with a history, shared by the engine's tests and the traffic measurement. Each project
// lists its three newest deployments, as Vercel does.
namespace SampleAccounts {

// Two scopes, eight projects: the personal account "ada" (web, api, docs) and the team "acme"
// (shop, blog, admin, status, legacy). Over the three days before `now`: web, api and docs
// deploy a few times a day; shop deployed 130 times today since 02:00 (more than a page), so
// every other project of the team lies beyond the team's 100 newest deployments; legacy last
// deployed ten days ago. `now` must be at 15:00 or later.
void fillLoopback(FakeVercelAccount& account, const QDateTime& now);

// `scopes` scopes (the personal account and teams team_1, team_2, …) of `projects` projects
// each: every project deployed twice over the last ten days, and twenty of them 100 times
// between them since 05:00 today. `now` must be at 15:00 or later.
void fillLarge(FakeVercelAccount& account, const QDateTime& now, int scopes, int projects);

// A deployment of the sample accounts: ready after `buildSeconds` unless still in progress.
QJsonObject deployment(const QString& id, const QString& projectId, const QString& state,
                       const QDateTime& created, int buildSeconds = 45);

} // namespace SampleAccounts
