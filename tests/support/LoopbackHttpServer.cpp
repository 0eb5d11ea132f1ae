#include "support/LoopbackHttpServer.h"

#include <QHostAddress>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <optional>
#include <sys/socket.h>

using Request = LoopbackHttpServer::Request;
using Response = LoopbackHttpServer::Response;

struct LoopbackHttpServer::Connection {
    QPointer<QTcpSocket> socket;
    QByteArray buffer;
    bool silenced = false; // a `never` answer: everything after it is ignored
};

namespace {

bool hasHeader(const QList<LoopbackHttpServer::Header>& headers, QByteArrayView name) {
    for (const auto& header : headers) {
        if (header.first.compare(name, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

// Status line and headers, with the framing header that `delivery` needs.
QByteArray head(const Response& response, const QByteArray& framing) {
    // No client reads the reason phrase; one word serves every status.
    QByteArray out = "HTTP/1.1 " + QByteArray::number(response.status) + " Status\r\n";
    out += "server: Vercel\r\ncache-control: private, no-cache, no-store, max-age=0\r\n"
           "x-vercel-id: cdg1::iad1::loopback\r\n";
    if (!response.body.isEmpty() && !hasHeader(response.headers, "content-type"))
        out += "content-type: application/json; charset=utf-8\r\n";
    for (const auto& [name, value] : response.headers)
        out += name + ": " + value + "\r\n";
    return out + framing + "\r\n";
}

QByteArray chunkedBody(const Response& response) {
    QByteArray out;
    const int size = std::max(1, response.chunkSize);
    for (qsizetype at = 0; at < response.body.size(); at += size) {
        const QByteArray chunk = response.body.mid(at, size);
        out += QByteArray::number(chunk.size(), 16) + "\r\n" + chunk + "\r\n";
    }
    return out + "0\r\n\r\n";
}

void parseTarget(const QByteArray& target, Request& request) {
    const qsizetype mark = target.indexOf('?');
    request.hasQuery = mark >= 0;
    request.path = QString::fromLatin1(mark >= 0 ? target.left(mark) : target);
    if (mark >= 0)
        request.rawQuery = target.mid(mark + 1);
}

// Request line and headers; false when they are not HTTP.
bool parseHead(const QByteArray& head, Request& request) {
    const QList<QByteArray> lines = head.split('\n');
    const QList<QByteArray> requestLine = lines.first().trimmed().split(' ');
    if (requestLine.size() != 3 || !requestLine.at(2).startsWith("HTTP/1."))
        return false;
    request.method = requestLine.at(0);
    parseTarget(requestLine.at(1), request);
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const QByteArray line = lines.at(i).trimmed();
        const qsizetype colon = line.indexOf(':');
        if (colon <= 0)
            return false;
        request.headers.append({line.left(colon), line.mid(colon + 1).trimmed()});
    }
    return true;
}

enum class Parse { complete, incomplete, malformed };

// Takes one whole request off the front of `buffer`.
Parse takeRequest(QByteArray& buffer, Request& request) {
    const qsizetype end = buffer.indexOf("\r\n\r\n");
    if (end < 0)
        return Parse::incomplete;
    if (!parseHead(buffer.left(end), request))
        return Parse::malformed;
    if (!request.headerValues("transfer-encoding").isEmpty())
        return Parse::malformed; // clients send no bodies to this API
    const QList<QByteArray> lengths = request.headerValues("content-length");
    const qsizetype length = lengths.isEmpty() ? 0 : lengths.first().toLongLong();
    if (buffer.size() < end + 4 + length)
        return Parse::incomplete;
    request.body = buffer.mid(end + 4, length);
    buffer.remove(0, end + 4 + length);
    return Parse::complete;
}

// Closes with a TCP reset: a zero linger time makes the close abortive.
void reset(QTcpSocket& socket) {
    socket.flush();
    const linger abortive{1, 0};
    setsockopt(static_cast<int>(socket.socketDescriptor()), SOL_SOCKET, SO_LINGER, &abortive,
               sizeof abortive);
    socket.abort();
}

bool wantsClose(const Request& request) {
    for (const QByteArray& value : request.headerValues("connection")) {
        if (value.compare("close", Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

} // namespace

QList<QByteArray> Request::headerValues(QByteArrayView name) const {
    QList<QByteArray> values;
    for (const auto& [key, value] : headers) {
        if (key.compare(name, Qt::CaseInsensitive) == 0)
            values.append(value);
    }
    return values;
}

QList<std::pair<QString, QString>> Request::queryItems() const {
    const auto decode = [](QByteArray part) {
        return QUrl::fromPercentEncoding(part.replace('+', ' '));
    };
    QList<std::pair<QString, QString>> items;
    for (const QByteArray& item : rawQuery.split('&')) {
        if (item.isEmpty())
            continue;
        const qsizetype equals = item.indexOf('=');
        if (equals < 0)
            items.append({decode(item), QString()});
        else
            items.append({decode(item.left(equals)), decode(item.mid(equals + 1))});
    }
    return items;
}

Response Response::json(QByteArray body, int status) {
    Response response;
    response.status = status;
    response.body = std::move(body);
    return response;
}

namespace {

Response delivered(Response response, Response::Delivery delivery) {
    response.delivery = delivery;
    return response;
}

} // namespace

Response Response::chunkedJson(QByteArray body, int chunkSize) {
    Response response = delivered(json(std::move(body)), Delivery::chunked);
    response.chunkSize = chunkSize;
    return response;
}

Response Response::vercelError(int status, QByteArray code, QByteArray message) {
    QByteArray extra = status == 403 ? R"(,"invalidToken":true)" : "";
    return json(R"({"error":{"code":")" + code + R"(","message":")" + message + '"' + extra + "}}",
                status);
}

Response Response::redirect(QByteArray location, int status) {
    return Response{status,
                    {{"location", location}, {"content-type", "text/plain"}},
                    "Redirecting to " + location};
}

Response Response::cutMidBody(QByteArray body) {
    return delivered(json(std::move(body)), Delivery::cutMidBody);
}

Response Response::resetMidBody(QByteArray body) {
    return delivered(json(std::move(body)), Delivery::resetMidBody);
}

Response Response::never() {
    return delivered({}, Delivery::never);
}

Response&& Response::withHeader(QByteArray name, QByteArray value) && {
    headers.append({std::move(name), std::move(value)});
    return std::move(*this);
}

LoopbackHttpServer::LoopbackHttpServer(QObject* parent)
    : QObject(parent), server_(new QTcpServer(this)), fallback_([](const Request&) {
          return Response::vercelError(404, "not_found", "The requested path was not found.");
      }) {
    connect(server_, &QTcpServer::newConnection, this, &LoopbackHttpServer::accept);
    const bool listening = server_->listen(QHostAddress::LocalHost);
    Q_ASSERT(listening);
    Q_UNUSED(listening);
    port_ = server_->serverPort();
}

LoopbackHttpServer::~LoopbackHttpServer() {
    for (const auto& connection : connections_) {
        if (connection->socket)
            connection->socket->abort();
    }
}

quint16 LoopbackHttpServer::port() const {
    return port_;
}

void LoopbackHttpServer::setRefusing(bool refusing) {
    if (refusing)
        server_->close();
    else if (!server_->isListening())
        server_->listen(QHostAddress::LocalHost, port_);
}

QUrl LoopbackHttpServer::baseUrl() const {
    return QUrl(QStringLiteral("http://127.0.0.1:%1").arg(port()));
}

void LoopbackHttpServer::route(const QString& path, Handler handler) {
    routes_.insert(path, std::move(handler));
}

void LoopbackHttpServer::setFallback(Handler handler) {
    fallback_ = std::move(handler);
}

QList<Request> LoopbackHttpServer::requestsTo(const QString& path) const {
    QList<Request> found;
    for (const Request& request : requests_) {
        if (request.path == path)
            found.append(request);
    }
    return found;
}

void LoopbackHttpServer::accept() {
    while (QTcpSocket* socket = server_->nextPendingConnection()) {
        socket->setParent(this);
        auto connection = std::make_unique<Connection>();
        connection->socket = socket;
        Connection* raw = connection.get();
        connections_.push_back(std::move(connection));
        connect(socket, &QTcpSocket::readyRead, this, [this, raw] { serve(*raw); });
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    }
}

void LoopbackHttpServer::serve(Connection& connection) {
    QTcpSocket* socket = connection.socket;
    if (socket == nullptr)
        return;
    connection.buffer += socket->readAll();
    while (!connection.silenced && socket->state() == QAbstractSocket::ConnectedState) {
        Request request;
        const Parse parse = takeRequest(connection.buffer, request);
        if (parse == Parse::incomplete)
            return;
        if (parse == Parse::malformed) {
            socket->write("HTTP/1.1 400 Bad Request\r\ncontent-length: 0\r\n\r\n");
            socket->disconnectFromHost();
            return;
        }
        requests_.append(request);
        const qsizetype index = requests_.size() - 1;
        const qint64 sent = answer(connection, request);
        // The handler may have cleared the record.
        if (index < requests_.size())
            requests_[index].answeredBytes = sent;
    }
}

qint64 LoopbackHttpServer::answer(Connection& connection, const Request& request) {
    // A copy: the handler may replace its own route while it runs.
    const Handler handler = routes_.value(request.path, fallback_);
    const Response response = handler(request);
    QTcpSocket* socket = connection.socket;
    const QByteArray length =
        "content-length: " + QByteArray::number(response.body.size()) + "\r\n";
    switch (response.delivery) {
    case Response::Delivery::whole:
        // Two writes: the socket keeps the body as it is instead of copying a large one.
        socket->write(head(response, length));
        socket->write(response.body);
        break;
    case Response::Delivery::chunked:
        socket->write(head(response, "transfer-encoding: chunked\r\n") + chunkedBody(response));
        break;
    case Response::Delivery::cutMidBody:
        socket->write(head(response, length) + response.body.left(response.body.size() / 2));
        socket->disconnectFromHost();
        return response.body.size() / 2;
    case Response::Delivery::resetMidBody:
        socket->write(head(response, length) + response.body.left(response.body.size() / 2));
        reset(*socket);
        return response.body.size() / 2;
    case Response::Delivery::never:
        connection.silenced = true;
        return 0;
    }
    if (wantsClose(request))
        socket->disconnectFromHost();
    return response.body.size();
}
