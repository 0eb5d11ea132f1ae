// Where the appcast lives: the address compiled into this build, or a stand-in named by
// QUILLON_APPCAST_URL (a test server, a staging feed). Plain http:// could be tampered with on
// the way, so it is only allowed when the request never leaves the machine.
#include "core/common/Language.h"
#include "core/common/SafeAddress.h"
#include "core/update/AppcastUpdater.h"

#ifndef QUILLON_APPCAST_URL
#define QUILLON_APPCAST_URL "https://fernhollow.com/quillon/appcast.xml"
#endif

namespace {

bool isUsable(const QUrl& url) {
    if (!url.isValid() || url.host().isEmpty() || !url.userInfo().isEmpty())
        return false;
    return usesSafeTransport(url);
}

} // namespace

QUrl AppcastUpdater::defaultFeed() {
    return QUrl(QStringLiteral(QUILLON_APPCAST_URL));
}

Expected<QUrl, QString> AppcastUpdater::feedFromEnvironment() {
    const QString value = qEnvironmentVariable("QUILLON_APPCAST_URL").trimmed();
    if (value.isEmpty())
        return defaultFeed();
    const QUrl url(value, QUrl::StrictMode);
    if (isUsable(url))
        return url;
    return Language::text("QUILLON_APPCAST_URL must be an https:// address (http:// only on "
                          "this computer).",
                          "QUILLON_APPCAST_URL doit être une adresse https:// (http:// seulement "
                          "sur cet ordinateur).");
}
