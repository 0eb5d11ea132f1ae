#include "support/SampleAccounts.h"

namespace SampleAccounts {

namespace {

// Build times that vary from one deployment to the next, so medians mean something.
int buildSecondsFor(int i) {
    return 30 + (i * 37) % 90;
}

// One deployment in three goes to production; every ninth failed, every thirteenth was canceled.
QString stateFor(int i) {
    if (i % 9 == 4)
        return QStringLiteral("ERROR");
    if (i % 13 == 6)
        return QStringLiteral("CANCELED");
    return QStringLiteral("READY");
}

void addHistory(FakeVercelAccount& account, const QString& scope, const QString& project,
                const QDateTime& newest, int count, int minutesApart) {
    for (int i = 0; i < count; ++i) {
        QJsonObject d =
            deployment(QStringLiteral("dpl_%1_%2").arg(project.mid(2)).arg(i), project, stateFor(i),
                       newest.addSecs(-60LL * minutesApart * i), buildSecondsFor(i));
        if (i % 3 == 0)
            d.insert("target", "production");
        account.addDeployment(scope, d);
    }
}

} // namespace

QJsonObject deployment(const QString& id, const QString& projectId, const QString& state,
                       const QDateTime& created, int buildSeconds) {
    const double createdMs = static_cast<double>(created.toMSecsSinceEpoch());
    const bool finished = state == "READY" || state == "ERROR" || state == "CANCELED";
    return FakeVercelAccount::deployment(id, projectId, state, createdMs,
                                         finished ? std::optional(createdMs + buildSeconds * 1000.0)
                                                  : std::nullopt);
}

void fillLoopback(FakeVercelAccount& account, const QDateTime& now) {
    account.latestPerProject = 3;
    account.addTeam("team_acme", "acme");
    for (const auto& [id, name] : {std::pair{"p_web", "web"}, {"p_api", "api"}, {"p_docs", "docs"}})
        account.addProject("", id, name);
    for (const auto& [id, name] : {std::pair{"p_shop", "shop"},
                                   {"p_blog", "blog"},
                                   {"p_admin", "admin"},
                                   {"p_status", "status"},
                                   {"p_legacy", "legacy"}})
        account.addProject("team_acme", id, name);
    const QDateTime today = now.date().startOfDay();
    addHistory(account, "", "p_web", now.addSecs(-3600), 24, 180);
    addHistory(account, "", "p_api", now.addSecs(-5 * 3600), 9, 480);
    addHistory(account, "", "p_docs", now.addDays(-1), 3, 1440);
    addHistory(account, "team_acme", "p_shop", today.addSecs(2 * 3600 + 129 * 360), 130, 6);
    addHistory(account, "team_acme", "p_blog", today.addSecs(-30 * 60), 20, 60);
    addHistory(account, "team_acme", "p_admin", today.addDays(-1), 15, 90);
    addHistory(account, "team_acme", "p_status", today.addSecs(-4 * 3600), 10, 30);
    addHistory(account, "team_acme", "p_legacy", now.addDays(-10), 4, 1440);
}

void fillLarge(FakeVercelAccount& account, const QDateTime& now, int scopes, int projects) {
    account.latestPerProject = 3;
    const QDateTime today = now.date().startOfDay();
    for (int s = 0; s < scopes; ++s) {
        const QString team = s == 0 ? QString() : QStringLiteral("team_%1").arg(s);
        if (s > 0)
            account.addTeam(team, QStringLiteral("team-%1").arg(s));
        for (int i = 0; i < projects; ++i) {
            const QString id = QStringLiteral("p_%1_%2").arg(s).arg(i);
            account.addProject(team, id, QStringLiteral("app-%1").arg(i, 3, 10, QLatin1Char('0')));
            // Twice over the ten days before today.
            for (int k = 0; k < 2; ++k) {
                const int minutesBack = 60 + (i * 37 + k * 4001) % (9 * 24 * 60);
                account.addDeployment(
                    team, deployment(QStringLiteral("dpl_%1_%2_%3").arg(s).arg(i).arg(k), id,
                                     stateFor(i + k), today.addSecs(-60LL * minutesBack),
                                     buildSecondsFor(i + k)));
            }
        }
        for (int j = 0; j < 100; ++j) {
            const QString id = QStringLiteral("p_%1_%2").arg(s).arg(j % 20);
            account.addDeployment(
                team, deployment(QStringLiteral("dpl_%1_today_%2").arg(s).arg(j), id, stateFor(j),
                                 today.addSecs(5 * 3600 + j * 360), buildSecondsFor(j)));
        }
    }
}

} // namespace SampleAccounts
