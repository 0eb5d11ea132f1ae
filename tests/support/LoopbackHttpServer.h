#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <QString>
#include <QUrl>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

class QTcpServer;
class QTcpSocket;

// An HTTP/1.1 server on 127.0.0.1 for tests, as untidy as the real Vercel API when asked: it
// answers each request path with a handler, records every request it receives, and can send
// chunked bodies, redirect, close or reset a connection mid-body or never answer at all.
//
//   LoopbackHttpServer server;
//   server.route("/v2/user", [](const auto&) { return Response::json(R"({"user":…})"); });
//   VercelAPI api(token, server.baseUrl());
//
// It runs on the thread's event loop, so a test must let the loop turn (QCoro::waitFor) while a
// client talks to it.
class LoopbackHttpServer : public QObject {
    Q_OBJECT
public:
    using Header = std::pair<QByteArray, QByteArray>;

    struct Request {
        QByteArray method;
        QString path;          // as on the request line, before any "?", still percent-encoded
        QByteArray rawQuery;   // after the "?", still percent-encoded
        bool hasQuery = false; // a "?" was sent, even with nothing after it
        QList<Header> headers; // in the order received, names as the client wrote them
        QByteArray body;
        // The length of the body it was answered with (what a client reads, headers aside);
        // 0 until answered.
        qint64 answeredBytes = 0;

        // Every value of a header, its name compared without case.
        QList<QByteArray> headerValues(QByteArrayView name) const;
        // The query decoded the way web servers read it ("+" is a space), in order.
        QList<std::pair<QString, QString>> queryItems() const;
    };

    struct Response {
        enum class Delivery {
            whole,        // Content-Length and the full body
            chunked,      // Transfer-Encoding: chunked, `chunkSize` bytes per chunk
            cutMidBody,   // announces the full length, sends half of the body, then closes
            resetMidBody, // the same, but resets the connection (TCP RST) instead of closing it
            never,        // keeps the connection open and says nothing
        };

        int status = 200;
        QList<Header> headers;
        QByteArray body;
        Delivery delivery = Delivery::whole;
        int chunkSize = 16;

        // A JSON answer with the content type Vercel sends.
        static Response json(QByteArray body, int status = 200);
        static Response chunkedJson(QByteArray body, int chunkSize = 16);
        // Vercel's error shape: {"error":{"code":…,"message":…}}; 403 also says invalidToken.
        static Response vercelError(int status, QByteArray code, QByteArray message);
        static Response redirect(QByteArray location, int status = 307);
        static Response cutMidBody(QByteArray body);
        static Response resetMidBody(QByteArray body);
        static Response never();

        Response&& withHeader(QByteArray name, QByteArray value) &&;
    };

    using Handler = std::function<Response(const Request&)>;

    // Listens at once on 127.0.0.1 with a port chosen by the system.
    explicit LoopbackHttpServer(QObject* parent = nullptr);
    ~LoopbackHttpServer() override;

    quint16 port() const;
    // "http://127.0.0.1:PORT", the base address to give a client.
    QUrl baseUrl() const;

    // Answers requests whose path is exactly `path`; replaces an earlier handler for it.
    void route(const QString& path, Handler handler);
    // Answers every path without a route. By default: 404 with Vercel's "not_found" body.
    void setFallback(Handler handler);

    // Closes the port, so connections are refused, until called with false (same port).
    void setRefusing(bool refusing);

    // Every request received so far, in order of arrival (before it was answered).
    const QList<Request>& requests() const { return requests_; }
    QList<Request> requestsTo(const QString& path) const;
    void clearRequests() { requests_.clear(); }

private:
    struct Connection;
    void accept();
    void serve(Connection& connection);
    // Answers the bytes of body sent.
    qint64 answer(Connection& connection, const Request& request);

    QTcpServer* server_;
    quint16 port_ = 0;
    QHash<QString, Handler> routes_;
    Handler fallback_;
    QList<Request> requests_;
    std::vector<std::unique_ptr<Connection>> connections_; // kept until the server goes
};
