#include "core/common/SafeAddress.h"

#include <QHostAddress>

bool isLoopbackHost(const QString& host) {
    if (host.compare(QLatin1String("localhost"), Qt::CaseInsensitive) == 0)
        return true;
    const QHostAddress address(host);
    return !address.isNull() && address.isLoopback();
}

bool usesSafeTransport(const QUrl& url) {
    return url.scheme() == QLatin1String("https") ||
           (url.scheme() == QLatin1String("http") && isLoopbackHost(url.host()));
}
