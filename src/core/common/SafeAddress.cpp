#include "core/common/SafeAddress.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>

namespace {

bool isLoopbackV4(const QByteArray& host) {
    in_addr address{};
    // inet_aton also takes the short forms ("127.1") that resolvers accept.
    return inet_aton(host.constData(), &address) == 1 && (ntohl(address.s_addr) >> 24) == 127;
}

// ::1, or an IPv4 loopback address mapped into IPv6 (::ffff:127.0.0.1).
bool isLoopbackV6(const QByteArray& host) {
    std::array<unsigned char, 16> bytes{};
    if (inet_pton(AF_INET6, host.constData(), bytes.data()) != 1)
        return false;
    constexpr std::array<unsigned char, 16> one{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    constexpr std::array<unsigned char, 12> mapped{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff};
    return bytes == one ||
           (std::equal(mapped.begin(), mapped.end(), bytes.begin()) && bytes[12] == 127);
}

} // namespace

bool isLoopbackHost(const QString& host) {
    if (host.compare(QLatin1String("localhost"), Qt::CaseInsensitive) == 0)
        return true;
    const QByteArray latin = host.toLatin1();
    return isLoopbackV4(latin) || isLoopbackV6(latin);
}

bool usesSafeTransport(const QUrl& url) {
    return url.scheme() == QLatin1String("https") ||
           (url.scheme() == QLatin1String("http") && isLoopbackHost(url.host()));
}
