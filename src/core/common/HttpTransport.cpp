#include "core/common/HttpTransport.h"

namespace {

std::function<HttpTransport&()>& provider() {
    static std::function<HttpTransport&()> current;
    return current;
}

} // namespace

HttpTransport& HttpTransport::shared() {
    Q_ASSERT_X(provider(), "HttpTransport::shared", "the program wired no transport");
    return provider()();
}

void HttpTransport::setProvider(std::function<HttpTransport&()> provider) {
    ::provider() = std::move(provider);
}

QCoro::Task<HttpReply> boundedGet(HttpRequest request) {
    co_return co_await HttpTransport::shared().get(std::move(request));
}
