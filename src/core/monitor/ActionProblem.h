#pragma once

#include "core/monitor/DeploymentAction.h"
#include "core/vercel/APIError.h"

#include <QDateTime>
#include <QString>
#include <optional>

// Why an action on a deployment did not happen, as the row, the notification and quillon-cli
// tell it: one sentence per reason, in the user's language when asked.
struct ActionProblem {
    enum class Kind {
        tokenRejected,   // 401, or 403 whose body says invalidToken
        noPermission,    // any other 403: the token may not act in this team or project
        samlRequired,    // a 403 asking for the team's SAML sign-in
        alreadyFinished, // a cancel of a build that ended meanwhile
        nothingToDo,     // the latest deployment is not one the action applies to
        notConnected,    // no account connection to send it with
        rateLimited,     // 429, or held back because Vercel asked to wait
        network,         // no HTTP answer at all
        unreadable,      // an answer that is not Vercel's
        http,            // any other status
    };
    DeploymentAction action = DeploymentAction::redeploy;
    Kind kind = Kind::http;
    int status = 0;                   // for `http`
    std::optional<QDateTime> retryAt; // for `rateLimited`, when Vercel said

    static ActionProblem from(DeploymentAction action, const RequestError& error);
    static ActionProblem of(DeploymentAction action, Kind kind) {
        return {action, kind, 0, std::nullopt};
    }

    QString sentence() const;
};
