#include "core/common/BoundedGet.h"

#include <QCoreApplication>
#include <QCoro/QCoroNetworkReply>
#include <QNetworkAccessManager>
#include <QPointer>
#include <QThread>

namespace {

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

} // namespace

QCoro::Task<BoundedReply> boundedGet(QNetworkRequest request, qint64 maxBytes) {
    ReplyPtr reply(sharedNetwork().get(request));
    auto download = std::make_shared<Download>(Download{maxBytes, {}, false});
    QObject::connect(reply.get(), &QIODevice::readyRead, reply.get(),
                     [raw = reply.get(), download] { download->take(raw); });
    co_await reply.get();
    download->take(reply.get());
    co_return BoundedReply{std::move(reply), std::move(download->body), download->tooLarge};
}
