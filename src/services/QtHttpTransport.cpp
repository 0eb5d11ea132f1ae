#include "services/QtHttpTransport.h"

#include <QCoreApplication>
#include <QCoro/QCoroNetworkReply>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>
#include <QThread>
#include <memory>

namespace {

// The core names the failures it tells apart by Qt's own values.
constexpr bool same(NetworkFailure::Code ours, QNetworkReply::NetworkError qt) {
    return static_cast<int>(ours) == static_cast<int>(qt);
}
static_assert(
    same(NetworkFailure::connectionRefused, QNetworkReply::ConnectionRefusedError) &&
    same(NetworkFailure::remoteHostClosed, QNetworkReply::RemoteHostClosedError) &&
    same(NetworkFailure::hostNotFound, QNetworkReply::HostNotFoundError) &&
    same(NetworkFailure::timeout, QNetworkReply::TimeoutError) &&
    same(NetworkFailure::operationCanceled, QNetworkReply::OperationCanceledError) &&
    same(NetworkFailure::sslHandshakeFailed, QNetworkReply::SslHandshakeFailedError) &&
    same(NetworkFailure::temporaryNetworkFailure, QNetworkReply::TemporaryNetworkFailureError) &&
    same(NetworkFailure::networkSessionFailed, QNetworkReply::NetworkSessionFailedError) &&
    same(NetworkFailure::tooManyRedirects, QNetworkReply::TooManyRedirectsError) &&
    same(NetworkFailure::insecureRedirect, QNetworkReply::InsecureRedirectError) &&
    same(NetworkFailure::unknownNetwork, QNetworkReply::UnknownNetworkError) &&
    same(NetworkFailure::proxyConnectionRefused, QNetworkReply::ProxyConnectionRefusedError) &&
    same(NetworkFailure::unknownProxy, QNetworkReply::UnknownProxyError));

// A reply deleted along with its manager never reports, and the coroutine waiting on it would
// never be freed; so the replies still in flight when the session goes are aborted first, which
// lets their waiters run to their end.
class AbortingNetwork final : public QNetworkAccessManager {
public:
    using QNetworkAccessManager::QNetworkAccessManager;
    ~AbortingNetwork() override {
        for (QNetworkReply* reply : findChildren<QNetworkReply*>(Qt::FindDirectChildrenOnly))
            reply->abort();
    }
};

// One session for the whole process, so connections are reused across calls and a reply still
// in flight never refers to a manager that is gone. It belongs to the application object and
// therefore to the main thread, where every call is made.
QNetworkAccessManager& sharedNetwork() {
    static QPointer<QNetworkAccessManager> manager;
    Q_ASSERT(QCoreApplication::instance() != nullptr);
    Q_ASSERT(QThread::currentThread() == QCoreApplication::instance()->thread());
    if (manager.isNull()) {
        manager = new AbortingNetwork(QCoreApplication::instance());
        manager->setRedirectPolicy(QNetworkRequest::NoLessSafeRedirectPolicy);
    }
    return *manager;
}

struct ReplyDeleter {
    void operator()(QNetworkReply* reply) const { reply->deleteLater(); }
};
using ReplyPtr = std::unique_ptr<QNetworkReply, ReplyDeleter>;

struct Download {
    qint64 maxBytes;
    QByteArray body;
    bool tooLarge = false;

    void take(QNetworkReply* reply) {
        if (tooLarge || !reply->isOpen())
            return;
        const qint64 announced = reply->header(QNetworkRequest::ContentLengthHeader).toLongLong();
        if (announced > maxBytes || body.size() + reply->bytesAvailable() > maxBytes) {
            tooLarge = true;
            body.clear();
            // Not from inside the signal that brought the data: the waiting coroutine resumes
            // on `finished`, and should not run nested in the reply's own emission.
            QMetaObject::invokeMethod(reply, &QNetworkReply::abort, Qt::QueuedConnection);
            return;
        }
        body += reply->readAll();
    }
};

QNetworkRequest qtRequest(const HttpRequest& request) {
    QNetworkRequest qt(request.url);
    qt.setTransferTimeout(static_cast<int>(request.transferTimeout.count()));
    for (const auto& [name, value] : request.headers)
        qt.setRawHeader(name, value);
    return qt;
}

HttpReply httpReply(const QNetworkReply& reply, Download& download) {
    HttpReply answer;
    answer.url = reply.url();
    const QVariant status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (status.isValid()) {
        answer.status = status.toInt();
        answer.headers = reply.rawHeaderPairs();
    }
    answer.failure = reply.error();
    if (reply.error() != QNetworkReply::NoError)
        answer.failureText = reply.errorString();
    answer.body = std::move(download.body);
    answer.tooLarge = download.tooLarge;
    return answer;
}

// Outside the coroutine: gcc 12 destroys the temporaries of a conditional expression twice
// inside one.
QNetworkReply* started(const HttpRequest& request) {
    const QNetworkRequest qt = qtRequest(request);
    if (request.method == "GET")
        return sharedNetwork().get(qt);
    return sharedNetwork().sendCustomRequest(qt, request.method, request.body);
}

} // namespace

QCoro::Task<HttpReply> QtHttpTransport::send(HttpRequest request) {
    ReplyPtr reply(started(request));
    auto download = std::make_shared<Download>(Download{request.maxBodyBytes, {}, false});
    QObject::connect(reply.get(), &QIODevice::readyRead, reply.get(),
                     [raw = reply.get(), download] { download->take(raw); });
    co_await reply.get();
    download->take(reply.get());
    co_return httpReply(*reply, *download);
}
