#pragma once

#include "core/common/HttpTransport.h"
#include "core/vercel/APIError.h"
#include "core/vercel/RateLimitPacer.h"
#include "core/vercel/VercelDecoding.h"

#include <QCoro/QCoroTask>
#include <QList>
#include <QUrl>
#include <chrono>
#include <memory>
#include <optional>
#include <utility>

// The only component that talks to Vercel: an immutable token + base address that sends one
// authenticated request per call and decodes the answer. Cheap to copy.
class VercelAPI {
public:
    using Query = QList<std::pair<QString, QString>>;

    explicit VercelAPI(QString token, QUrl base = defaultBase());

    // https://api.vercel.com unless QUILLON_API_BASE names another (https://, or http:// on a
    // loopback host). An unusable override answers absent with `problem` set.
    static std::optional<QUrl> baseFromEnvironment(QString* problem = nullptr);
    static QUrl defaultBase();

    const QString& token() const { return token_; }
    const QUrl& base() const { return base_; }

    // 20 s unless lowered (tests).
    std::chrono::milliseconds timeout() const { return timeout_; }
    VercelAPI withTimeout(std::chrono::milliseconds timeout) const;
    // Requests paced by `pacer`, which every copy shares: while Vercel asks to wait they fail at
    // once with `rateLimited`, without being sent.
    VercelAPI withPacer(std::shared_ptr<RateLimitPacer> pacer) const;
    RateLimitPacer* pacer() const { return pacer_.get(); }

    // `query` plus "teamId" = teamId at the end when a team is given.
    static Query withTeam(const std::optional<QString>& teamId, Query query);

    // The address a call would request (no "?" when the query is empty).
    QUrl requestUrl(const QString& path, const Query& query) const;

    template <typename T> QCoro::Task<RequestResult<T>> get(QString path, Query query) const {
        RequestResult<QByteArray> body = co_await fetch(std::move(path), std::move(query));
        if (!body)
            co_return body.error();
        std::optional<T> decoded = decodeResponse<T>(body.value());
        if (!decoded)
            co_return RequestError(APIError::badResponse());
        co_return std::move(*decoded);
    }

    // The 2xx body of a GET, or why there is none.
    QCoro::Task<RequestResult<QByteArray>> fetch(QString path, Query query) const;
    // The 2xx body of a request that changes something (`method` POST, PATCH…), with `json` as
    // its body when not empty. Paced and answered like a GET, and never sent twice: a write that
    // fails is for the user to try again.
    QCoro::Task<RequestResult<QByteArray>> write(QByteArray method, QString path, Query query,
                                                 QByteArray json) const;

private:
    QCoro::Task<RequestResult<QByteArray>> send(HttpRequest request) const;

    QString token_;
    QUrl base_;
    std::chrono::milliseconds timeout_{20000};
    std::shared_ptr<RateLimitPacer> pacer_;
};
