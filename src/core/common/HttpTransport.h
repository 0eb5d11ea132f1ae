#pragma once

#include <QByteArray>
#include <QCoro/QCoroTask>
#include <QList>
#include <QString>
#include <QUrl>
#include <chrono>
#include <functional>
#include <optional>
#include <utility>

// Why a request got no usable HTTP answer, with the values of Qt's QNetworkReply::NetworkError so
// the transport hands its codes over unchanged. Only the codes the core tells apart are named.
namespace NetworkFailure {
enum Code : int {
    none = 0,
    connectionRefused = 1,
    remoteHostClosed = 2,
    hostNotFound = 3,
    timeout = 4,
    operationCanceled = 5,
    sslHandshakeFailed = 6,
    temporaryNetworkFailure = 7,
    networkSessionFailed = 8,
    tooManyRedirects = 10,
    insecureRedirect = 11,
    unknownNetwork = 99,
    proxyConnectionRefused = 101,
    unknownProxy = 199,
};
} // namespace NetworkFailure

struct HttpRequest {
    QUrl url;
    QList<std::pair<QByteArray, QByteArray>> headers;
    std::chrono::milliseconds transferTimeout{0}; // 0: no limit
    qint64 maxBodyBytes = 0;
    QByteArray method = QByteArrayLiteral("GET");
    QByteArray body{}; // sent as it is; its Content-Type goes in `headers`
};

// A finished request: where it ended (after redirects), its HTTP status and headers when an answer
// arrived, the transport's failure code and sentence, and the body, or nothing and `tooLarge`
// once the body passed the cap, which abandons the transfer.
struct HttpReply {
    QUrl url;
    std::optional<int> status;
    int failure = NetworkFailure::none;
    QString failureText;
    QByteArray body;
    bool tooLarge = false;
    QList<std::pair<QByteArray, QByteArray>> headers; // as received

    // The first header named `name`, compared without case.
    std::optional<QByteArray> header(QByteArrayView name) const;
};

// HTTP as the core needs it: requests made and answered on the main thread. The implementation
// (and the network stack under it) may be loaded only when the first request is made.
class HttpTransport {
public:
    virtual ~HttpTransport() = default;
    virtual QCoro::Task<HttpReply> send(HttpRequest request) = 0;

    // The process's transport, asked for at each request: the provider may load it then.
    static HttpTransport& shared();
    static void setProvider(std::function<HttpTransport&()> provider);
};

// Sends `request` on the shared transport, reading at most its `maxBodyBytes` of body: a server
// that sends more is broken or hostile and must not be allowed to fill the memory.
QCoro::Task<HttpReply> boundedSend(HttpRequest request);
