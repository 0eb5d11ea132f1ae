#include "core/vercel/APIError.h"

#include "core/common/Language.h"

QString APIError::errorDescription() const {
    switch (kind_) {
    case Kind::http: {
        const QString code = QString::number(status_);
        return Language::text("Vercel error (HTTP ", "Erreur Vercel (HTTP ") + code +
               QStringLiteral(").");
    }
    case Kind::unauthorized:
        return Language::text("Token rejected by Vercel. It is invalid or expired.",
                              "Jeton refusé par Vercel. Il est invalide ou expiré.");
    case Kind::forbidden:
        if (saml_)
            return Language::text("This team requires SAML sign-in: sign in on vercel.com.",
                                  "Cette équipe exige une connexion SAML : connectez-vous sur "
                                  "vercel.com.");
        return Language::text("This token has no access to this team or account.",
                              "Ce jeton n'a pas accès à cette équipe ou à ce compte.");
    case Kind::rateLimited:
        return Language::text("Vercel rate limit reached, retrying soon.",
                              "Limite d'appels Vercel atteinte, nouvel essai bientôt.");
    case Kind::badResponse:
        return Language::text("Unreadable Vercel response.", "Réponse Vercel illisible.");
    }
    Q_UNREACHABLE();
}

QString RequestError::message() const {
    if (const APIError* api = apiError())
        return api->errorDescription();
    return transportError()->description;
}

bool RequestError::canPass() const {
    const APIError* api = apiError();
    if (api == nullptr)
        return true;
    switch (api->kind()) {
    case APIError::Kind::rateLimited:
        return true;
    case APIError::Kind::http:
        return api->status() >= 500 || api->status() == 408;
    case APIError::Kind::unauthorized:
    case APIError::Kind::forbidden:
    case APIError::Kind::badResponse:
        return false;
    }
    Q_UNREACHABLE();
}
