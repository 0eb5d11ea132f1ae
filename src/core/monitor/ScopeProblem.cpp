#include "core/monitor/ScopeProblem.h"

#include "core/common/Language.h"

QDateTime ScopeProblem::askAgainFrom(const QDateTime& now) {
    return now.addSecs(10 * 60);
}

QString teamDisplayName(const VercelTeam& team) {
    const QString name = team.name.value_or(QString()).trimmed();
    return name.isEmpty() ? team.slug : name;
}

QString ScopeProblem::sentence() const {
    switch (kind) {
    case Kind::saml:
        return Language::text("%1 requires SAML sign-in: sign in on vercel.com.",
                              "%1 exige une connexion SAML : connectez-vous sur vercel.com.")
            .arg(scopeName);
    case Kind::mfa:
        return Language::text("%1 requires two-factor authentication: turn it on in your Vercel "
                              "account.",
                              "%1 exige l'authentification à deux facteurs : activez-la dans "
                              "votre compte Vercel.")
            .arg(scopeName);
    case Kind::noAccess:
        break;
    }
    return Language::text("This token has no access to %1: create one with access to it on "
                          "vercel.com.",
                          "Ce jeton n'a pas accès à %1 : créez-en un qui y a accès sur "
                          "vercel.com.")
        .arg(scopeName);
}

ScopeProblem ScopeProblem::fromError(const APIError& error, QString scopeName,
                                     QDateTime askAgainAt) {
    return {error.requiresSaml() ? Kind::saml : Kind::noAccess, std::move(scopeName),
            std::move(askAgainAt)};
}

std::optional<ScopeProblem> ScopeProblem::fromTeam(const VercelTeam& team, QDateTime askAgainAt) {
    if (!team.limited.value_or(false))
        return std::nullopt;
    Kind kind = Kind::noAccess;
    if (team.samlEnforced.value_or(false))
        kind = Kind::saml;
    else if (team.limitedBy.value_or(QStringList()).contains(QLatin1String("mfa")))
        kind = Kind::mfa;
    return ScopeProblem{kind, teamDisplayName(team), std::move(askAgainAt)};
}
