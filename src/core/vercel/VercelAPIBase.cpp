// Where the API lives: Vercel itself, or a stand-in named by QUILLON_API_BASE (a test server, a
// recording proxy). The token travels in clear over http://, so that is only allowed when the
// request never leaves the machine.
#include "core/common/Language.h"
#include "core/common/SafeAddress.h"
#include "core/vercel/VercelAPI.h"

namespace {

// Why `url` cannot serve as the API base, or an empty text when it can.
QString baseProblem(const QUrl& url) {
    if (!url.isValid() || url.host().isEmpty())
        return Language::text("QUILLON_API_BASE is not an absolute address.",
                              "QUILLON_API_BASE n'est pas une adresse absolue.");
    if (!url.userInfo().isEmpty() || url.hasQuery() || url.hasFragment())
        return Language::text("QUILLON_API_BASE must not carry a user, a query or a fragment.",
                              "QUILLON_API_BASE ne doit contenir ni utilisateur, ni requête, "
                              "ni fragment.");
    if (usesSafeTransport(url))
        return {};
    return Language::text("QUILLON_API_BASE must use https:// (http:// only on this computer).",
                          "QUILLON_API_BASE doit utiliser https:// (http:// seulement sur cet "
                          "ordinateur).");
}

} // namespace

std::optional<QUrl> VercelAPI::baseFromEnvironment(QString* problem) {
    const QString value = qEnvironmentVariable("QUILLON_API_BASE").trimmed();
    if (value.isEmpty())
        return defaultBase();
    const QUrl url(value, QUrl::StrictMode);
    const QString why = baseProblem(url);
    if (why.isEmpty())
        return url;
    if (problem != nullptr)
        *problem = why;
    return std::nullopt;
}
