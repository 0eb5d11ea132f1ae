#include "core/vercel/VercelAPI.h"

#include "core/common/HttpTransport.h"
#include "core/common/Language.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <memory>

namespace {

// Several times a full build log or 100 projects with their deployments; a server that sends
// more is broken or hostile, and must not fill the memory nor hold the main thread parsing it.
constexpr qint64 kMaxBodyBytes = 16 * 1024 * 1024;

bool isTimeout(int error) {
    // Qt reports its own transfer timeout as a cancellation; we cancel nothing else.
    return error == NetworkFailure::timeout || error == NetworkFailure::operationCanceled;
}

bool isRefusedRedirect(int error) {
    return error == NetworkFailure::tooManyRedirects || error == NetworkFailure::insecureRedirect;
}

// Failures below HTTP: the network layer (1-99) and proxies (101-199).
bool isTransportFailure(int error) {
    return error >= NetworkFailure::connectionRefused && error <= NetworkFailure::unknownProxy;
}

struct TransportSentence {
    int code;
    const char* english;
    const char* french;
};

// Qt's own texts are terse ("Connection closed") and follow Qt's translation; the failures a
// user meets most get a sentence of ours in both languages.
constexpr TransportSentence kTransportSentences[] = {
    {NetworkFailure::connectionRefused, "Could not connect to Vercel (connection refused).",
     "Impossible de se connecter à Vercel (connexion refusée)."},
    {NetworkFailure::remoteHostClosed,
     "The connection to Vercel was cut off before the answer ended.",
     "La connexion à Vercel a été coupée avant la fin de la réponse."},
    {NetworkFailure::hostNotFound,
     "Vercel's server could not be found. Check the network connection.",
     "Le serveur de Vercel est introuvable. Vérifiez la connexion au réseau."},
    {NetworkFailure::temporaryNetworkFailure, "The network is unreachable.",
     "Le réseau est inaccessible."},
    {NetworkFailure::networkSessionFailed, "The network is unreachable.",
     "Le réseau est inaccessible."},
    {NetworkFailure::sslHandshakeFailed,
     "No secure connection to Vercel could be made (TLS handshake failed).",
     "Aucune connexion sécurisée avec Vercel n'a pu être établie (échec de la négociation TLS)."},
};

TransportError transportError(const HttpReply& reply) {
    const int code = reply.failure;
    if (isTimeout(code))
        return {NetworkFailure::timeout, Language::text("The request to Vercel timed out.",
                                                        "La requête vers Vercel a expiré.")};
    for (const TransportSentence& sentence : kTransportSentences) {
        if (sentence.code == code)
            return {code, Language::text(sentence.english, sentence.french)};
    }
    if (code >= NetworkFailure::proxyConnectionRefused && code <= NetworkFailure::unknownProxy)
        return {code, Language::text("The proxy did not pass the request on to Vercel.",
                                     "Le proxy n'a pas transmis la requête à Vercel.")};
    return {code, reply.failureText};
}

bool isHttp(const QUrl& url) {
    return url.scheme() == QLatin1String("https") || url.scheme() == QLatin1String("http");
}

// Vercel's 403 says in its body whether the token itself is refused (`invalidToken`) or only
// kept out of this scope, and then whether the scope wants a SAML sign-in (`saml` with
// `enforced`, as Vercel's CLI reads it): {"error": {"code": "forbidden", "saml": true, …}}.
APIError forbiddenError(const QByteArray& body) {
    const QJsonObject error =
        QJsonDocument::fromJson(body).object().value(QLatin1String("error")).toObject();
    if (error.value(QLatin1String("invalidToken")).toBool())
        return APIError::unauthorized();
    return APIError::forbidden(error.value(QLatin1String("saml")).toBool() &&
                               error.value(QLatin1String("enforced")).toBool());
}

RequestResult<QByteArray> statusResult(int status, QByteArray body,
                                       std::optional<QDateTime> retryAt) {
    if (status >= 200 && status <= 299)
        return body;
    if (status == 401)
        return RequestError(APIError::unauthorized());
    if (status == 403)
        return RequestError(forbiddenError(body));
    if (status == 429)
        return RequestError(APIError::rateLimited(std::move(retryAt)));
    return RequestError(APIError::http(status));
}

// `retryAt`: when a 429 lets the next request go.
RequestResult<QByteArray> outcome(HttpReply& reply, std::optional<QDateTime> retryAt) {
    if (reply.tooLarge)
        return RequestError(APIError::badResponse());
    // A redirect the stack refused to follow is an answer like any other status.
    if (isRefusedRedirect(reply.failure) && reply.status)
        return statusResult(*reply.status, {}, retryAt);
    if (isTransportFailure(reply.failure))
        return RequestError(transportError(reply));
    // Qt gives file: and data: replies a status of 200 too; only the scheme tells HTTP apart.
    if (!isHttp(reply.url) || !reply.status)
        return RequestError(APIError::badResponse());
    return statusResult(*reply.status, std::move(reply.body), std::move(retryAt));
}

QByteArray encodedQuery(const VercelAPI::Query& query) {
    QByteArrayList items;
    items.reserve(query.size());
    for (const auto& [name, value] : query)
        items.append(QUrl::toPercentEncoding(name) + '=' + QUrl::toPercentEncoding(value));
    return items.join('&');
}

} // namespace

VercelAPI::VercelAPI(QString token, QUrl base) : token_(std::move(token)), base_(std::move(base)) {}

QUrl VercelAPI::defaultBase() {
    return QUrl(QStringLiteral("https://api.vercel.com"));
}

VercelAPI VercelAPI::withTimeout(std::chrono::milliseconds timeout) const {
    VercelAPI copy = *this;
    copy.timeout_ = timeout;
    return copy;
}

VercelAPI VercelAPI::withPacer(std::shared_ptr<RateLimitPacer> pacer) const {
    VercelAPI copy = *this;
    copy.pacer_ = std::move(pacer);
    return copy;
}

VercelAPI::Query VercelAPI::withTeam(const std::optional<QString>& teamId, Query query) {
    if (teamId)
        query.append({QStringLiteral("teamId"), *teamId});
    return query;
}

QUrl VercelAPI::requestUrl(const QString& path, const Query& query) const {
    QUrl url = base_;
    QString joined = url.path();
    while (joined.endsWith(u'/'))
        joined.chop(1);
    if (!path.startsWith(u'/'))
        joined += u'/';
    url.setPath(joined + path);
    // Encoded by hand: QUrlQuery would leave "+" as it is, which servers read as a space.
    if (!query.isEmpty())
        url.setQuery(QString::fromLatin1(encodedQuery(query)), QUrl::StrictMode);
    return url;
}

QCoro::Task<RequestResult<QByteArray>> VercelAPI::fetch(QString path, Query query) const {
    // A named request: gcc 12 destroys a braced temporary in a co_await expression twice.
    HttpRequest request{requestUrl(path, query), {}, timeout_, kMaxBodyBytes};
    co_return co_await send(std::move(request));
}

QCoro::Task<RequestResult<QByteArray>> VercelAPI::write(QByteArray method, QString path,
                                                        Query query, QByteArray json) const {
    HttpRequest request{requestUrl(path, query), {}, timeout_, kMaxBodyBytes, std::move(method)};
    if (!json.isEmpty()) {
        request.headers.append({QByteArrayLiteral("Content-Type"), "application/json"});
        request.body = std::move(json);
    }
    co_return co_await send(std::move(request));
}

QCoro::Task<RequestResult<QByteArray>> VercelAPI::send(HttpRequest request) const {
    const std::shared_ptr<RateLimitPacer> pacer = pacer_; // this copy may be gone on resuming
    if (pacer) {
        if (std::optional<QDateTime> held = pacer->heldUntil())
            co_return RequestError(APIError::rateLimited(std::move(held)));
        pacer->countSent();
    }
    request.headers.prepend(
        {QByteArrayLiteral("Authorization"), QByteArrayLiteral("Bearer ") + token_.toUtf8()});
    HttpReply reply = co_await boundedSend(std::move(request));
    if (!pacer)
        co_return outcome(reply, retryTimeOf(reply, QDateTime::currentDateTime()));
    pacer->observe(reply);
    co_return outcome(reply, pacer->heldUntil());
}
