#pragma once

#include "core/common/Expected.h"
#include "core/common/HttpTransport.h"

#include <QDateTime>
#include <QString>
#include <optional>
#include <variant>

// An HTTP status or body that Vercel's answer made unusable.
//
// `unauthorized`: 401, or 403 whose body says `invalidToken`: the token itself is refused.
// `forbidden`: any other 403: the token is good, but not for what was asked (a team that wants a
// SAML sign-in, a team or an account the token was not made for).
// `rateLimited`: 429, or a request held back because Vercel asked to wait; `retryAt` says until
// when, when known.
class APIError {
public:
    enum class Kind { http, unauthorized, forbidden, rateLimited, badResponse };

    static APIError http(int status) { return APIError(Kind::http, status); }
    static APIError unauthorized() { return APIError(Kind::unauthorized, 401); }
    // `saml`: Vercel's body says the scope wants a SAML sign-in (`saml` and `enforced`).
    static APIError forbidden(bool saml = false) {
        APIError error(Kind::forbidden, 403);
        error.saml_ = saml;
        return error;
    }
    static APIError rateLimited(std::optional<QDateTime> retryAt = std::nullopt) {
        APIError error(Kind::rateLimited, 429);
        error.retryAt_ = std::move(retryAt);
        return error;
    }
    static APIError badResponse() { return APIError(Kind::badResponse, 0); }

    Kind kind() const { return kind_; }
    int status() const { return status_; } // the HTTP status of `http`
    bool requiresSaml() const { return saml_; }
    const std::optional<QDateTime>& retryAt() const { return retryAt_; }
    // The sentence the user reads, in the language chosen when asked.
    QString errorDescription() const;

    friend bool operator==(const APIError&, const APIError&) = default;

private:
    APIError(Kind kind, int status) : kind_(kind), status_(status) {}
    Kind kind_;
    int status_;
    bool saml_ = false;
    std::optional<QDateTime> retryAt_;
};

// A request that never got an HTTP answer: no network, refused, timed out, TLS failure.
struct TransportError {
    int code = NetworkFailure::unknownNetwork; // a NetworkFailure::Code
    QString description; // the platform's own sentence (a clear one of ours for a timeout)
};

// Either failure of a request, with the one sentence the user reads.
class RequestError {
public:
    RequestError(APIError error) : error_(error) {}
    RequestError(TransportError error) : error_(std::move(error)) {}

    const APIError* apiError() const { return std::get_if<APIError>(&error_); }
    const TransportError* transportError() const { return std::get_if<TransportError>(&error_); }
    bool isUnauthorized() const { return is(APIError::Kind::unauthorized); }
    bool isForbidden() const { return is(APIError::Kind::forbidden); }
    bool isRateLimited() const { return is(APIError::Kind::rateLimited); }
    // True for what can pass by itself: no network, a refused or cut connection, a timeout, a
    // rate limit or a server error. A rejected token or an unreadable answer stays as it is.
    bool canPass() const;
    QString message() const;

private:
    bool is(APIError::Kind kind) const {
        return apiError() != nullptr && apiError()->kind() == kind;
    }
    std::variant<APIError, TransportError> error_;
};

template <typename T> using RequestResult = Expected<T, RequestError>;
