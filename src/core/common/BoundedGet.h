#pragma once

#include <QByteArray>
#include <QCoro/QCoroTask>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <memory>

struct ReplyDeleter {
    void operator()(QNetworkReply* reply) const { reply->deleteLater(); }
};
using ReplyPtr = std::unique_ptr<QNetworkReply, ReplyDeleter>;

// A finished GET: the reply (for its status and error) and the body read from it, or nothing
// and `tooLarge` once the body passed the cap, which abandons the transfer.
struct BoundedReply {
    ReplyPtr reply;
    QByteArray body;
    bool tooLarge = false;
};

// GETs `request` on the process's one network session (main thread only, redirects followed
// unless they leave https), reading at most `maxBytes` of body: a server that sends more is
// broken or hostile and must not be allowed to fill the memory.
QCoro::Task<BoundedReply> boundedGet(QNetworkRequest request, qint64 maxBytes);
