#include "core/common/AppVersion.h"

#ifndef QUILLON_VERSION
#define QUILLON_VERSION ""
#endif
#ifndef QUILLON_BUILD_NUMBER
#define QUILLON_BUILD_NUMBER ""
#endif

namespace AppVersion {

QString shortVersion() {
    return QStringLiteral(QUILLON_VERSION);
}

QString buildNumber() {
    return QStringLiteral(QUILLON_BUILD_NUMBER);
}

QString text(const QString& shortVersion, const QString& buildNumber) {
    const auto orZero = [](const QString& part) {
        return part.isEmpty() ? QStringLiteral("0") : part;
    };
    return QStringLiteral("%1 (%2)").arg(orZero(shortVersion), orZero(buildNumber));
}

} // namespace AppVersion
