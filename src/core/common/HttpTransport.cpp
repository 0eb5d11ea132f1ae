#include "core/common/HttpTransport.h"

namespace {

std::function<HttpTransport&()>& provider() {
    static std::function<HttpTransport&()> current;
    return current;
}

} // namespace

std::optional<QByteArray> HttpReply::header(QByteArrayView name) const {
    for (const auto& [key, value] : headers) {
        if (key.compare(name, Qt::CaseInsensitive) == 0)
            return value;
    }
    return std::nullopt;
}

HttpTransport& HttpTransport::shared() {
    Q_ASSERT_X(provider(), "HttpTransport::shared", "the program wired no transport");
    return provider()();
}

void HttpTransport::setProvider(std::function<HttpTransport&()> provider) {
    ::provider() = std::move(provider);
}

QCoro::Task<HttpReply> boundedSend(HttpRequest request) {
    co_return co_await HttpTransport::shared().send(std::move(request));
}
