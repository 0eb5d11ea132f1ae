#pragma once

#include <QString>

// The version of this build as the user reads it: "1.4 (27)", with "0" standing in for a part
// the build did not set.
namespace AppVersion {

QString shortVersion();
QString buildNumber();
QString text(const QString& shortVersion, const QString& buildNumber);
inline QString text() {
    return text(shortVersion(), buildNumber());
}

} // namespace AppVersion
