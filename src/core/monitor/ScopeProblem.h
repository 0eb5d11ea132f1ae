#pragma once

#include "core/vercel/APIError.h"
#include "core/vercel/VercelRecords.h"

#include <QDateTime>
#include <QString>
#include <optional>

// Why Vercel keeps one scope of the account closed while the token itself is good: a team that
// wants a SAML sign-in or two-factor authentication, or one the token was not made for. Such a
// scope is left alone until `askAgainAt`, then asked again; the other scopes go on.
struct ScopeProblem {
    enum class Kind { saml, mfa, noAccess };
    Kind kind = Kind::noAccess;
    QString scopeName; // the team's name, else its slug
    QDateTime askAgainAt;

    // The sentence the user reads, in the language chosen when asked: "Acme Team requires SAML
    // sign-in: sign in on vercel.com."
    QString sentence() const;

    // When a scope found closed `now` is asked again: now and then, not at every pass.
    static QDateTime askAgainFrom(const QDateTime& now);
    // A 403 that did not reject the token.
    static ScopeProblem fromError(const APIError& error, QString scopeName, QDateTime askAgainAt);
    // A team that /v2/teams lists as `limited`; absent for any other.
    static std::optional<ScopeProblem> fromTeam(const VercelTeam& team, QDateTime askAgainAt);
};

// The name a team goes by in sentences.
QString teamDisplayName(const VercelTeam& team);
