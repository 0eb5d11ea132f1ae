#pragma once

#include "core/common/HttpTransport.h"

// Requests on the process's one QNetworkAccessManager (main thread only, redirects followed
// unless they leave https), reading at most the request's cap of body.
class QtHttpTransport final : public HttpTransport {
public:
    QCoro::Task<HttpReply> send(HttpRequest request) override;
};
