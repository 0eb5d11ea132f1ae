#pragma once

#include "core/common/Expected.h"
#include "core/common/HttpTransport.h"

#include <QString>
#include <variant>

// An HTTP status or body that Vercel's answer made unusable.
class APIError {
public:
    enum class Kind { http, unauthorized, rateLimited, badResponse };

    static APIError http(int status) { return APIError(Kind::http, status); }
    static APIError unauthorized() { return APIError(Kind::unauthorized, 0); }
    static APIError rateLimited() { return APIError(Kind::rateLimited, 0); }
    static APIError badResponse() { return APIError(Kind::badResponse, 0); }

    Kind kind() const { return kind_; }
    int status() const { return status_; } // the HTTP status of `http`
    // The sentence the user reads, in the language chosen when asked.
    QString errorDescription() const;

    friend bool operator==(const APIError&, const APIError&) = default;

private:
    APIError(Kind kind, int status) : kind_(kind), status_(status) {}
    Kind kind_;
    int status_;
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
    bool isUnauthorized() const {
        return apiError() != nullptr && apiError()->kind() == APIError::Kind::unauthorized;
    }
    // True for what can pass by itself: no network, a refused or cut connection, a timeout, a
    // rate limit or a server error. A rejected token or an unreadable answer stays as it is.
    bool canPass() const;
    QString message() const;

private:
    std::variant<APIError, TransportError> error_;
};

template <typename T> using RequestResult = Expected<T, RequestError>;
