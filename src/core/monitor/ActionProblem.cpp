#include "core/monitor/ActionProblem.h"

#include "core/common/Language.h"
#include "core/common/TimeTexts.h"

namespace {

// Vercel answers a cancel of a build that has already ended with a client error.
bool endedBeforeCancel(DeploymentAction action, int status) {
    return action == DeploymentAction::cancel && (status == 400 || status == 409);
}

ActionProblem::Kind kindOf(DeploymentAction action, const APIError& error) {
    using Kind = ActionProblem::Kind;
    switch (error.kind()) {
    case APIError::Kind::unauthorized:
        return Kind::tokenRejected;
    case APIError::Kind::forbidden:
        return error.requiresSaml() ? Kind::samlRequired : Kind::noPermission;
    case APIError::Kind::rateLimited:
        return Kind::rateLimited;
    case APIError::Kind::badResponse:
        return Kind::unreadable;
    case APIError::Kind::http:
        return endedBeforeCancel(action, error.status()) ? Kind::alreadyFinished : Kind::http;
    }
    Q_UNREACHABLE();
}

QString nothingToDo(DeploymentAction action) {
    if (action == DeploymentAction::redeploy)
        return Language::text("The latest deployment did not fail: there is nothing to redeploy.",
                              "Le dernier déploiement n'a pas échoué : il n'y a rien à "
                              "redéployer.");
    return Language::text("The latest deployment is not building: there is nothing to cancel.",
                          "Le dernier déploiement n'est pas en cours : il n'y a rien à annuler.");
}

QString slowDown(const std::optional<QDateTime>& retryAt) {
    if (!retryAt)
        return Language::text("Vercel asked Quillon to slow down. Try again in a minute.",
                              "Vercel a demandé à Quillon de ralentir. Réessayez dans une minute.");
    return Language::text("Vercel asked Quillon to slow down. Try again at %1.",
                          "Vercel a demandé à Quillon de ralentir. Réessayez à %1.")
        .arg(clockTimeText(*retryAt));
}

} // namespace

ActionProblem ActionProblem::from(DeploymentAction action, const RequestError& error) {
    const APIError* api = error.apiError();
    if (api == nullptr)
        return of(action, Kind::network);
    return {action, kindOf(action, *api), api->status(), api->retryAt()};
}

QString ActionProblem::sentence() const {
    switch (kind) {
    case Kind::tokenRejected:
        return Language::text("Vercel rejected the token: it is invalid or expired.",
                              "Vercel a refusé le jeton : il est invalide ou expiré.");
    case Kind::noPermission:
        return Language::text("Not allowed: this token may not change the deployments of this "
                              "team or project.",
                              "Action refusée : ce jeton ne peut pas modifier les déploiements de "
                              "cette équipe ou de ce projet.");
    case Kind::samlRequired:
        return Language::text("This team requires SAML sign-in: sign in on vercel.com, then try "
                              "again.",
                              "Cette équipe exige une connexion SAML : connectez-vous sur "
                              "vercel.com, puis réessayez.");
    case Kind::alreadyFinished:
        return Language::text("The deployment had already finished: there was nothing to cancel.",
                              "Le déploiement était déjà terminé : il n'y avait rien à annuler.");
    case Kind::nothingToDo:
        return nothingToDo(action);
    case Kind::notConnected:
        return Language::text("Quillon is not connected to Vercel: check the token in Settings.",
                              "Quillon n'est pas connecté à Vercel : vérifiez le jeton dans les "
                              "Réglages.");
    case Kind::rateLimited:
        return slowDown(retryAt);
    case Kind::network:
        return Language::text("Vercel could not be reached. Check the network, then try again.",
                              "Vercel est injoignable. Vérifiez le réseau, puis réessayez.");
    case Kind::unreadable:
        return Language::text("Vercel's answer could not be read. Try again later.",
                              "La réponse de Vercel est illisible. Réessayez plus tard.");
    case Kind::http:
        return Language::text("Vercel answered with an error (HTTP %1).",
                              "Vercel a répondu par une erreur (HTTP %1).")
            .arg(status);
    }
    Q_UNREACHABLE();
}
