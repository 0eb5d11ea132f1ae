#pragma once

#include <QStringView>

// Orders version strings the way release feeds number them: dotted numeric components compared
// one by one as numbers ("1.10" is newer than "1.9"), a missing component counting as 0 ("1.0"
// equals "1"). A component's leading digits are its number; whatever follows them ("2b", "3-rc")
// is ignored, a component without digits counts as 0, and a leading "v" ("v1.2") is dropped.
namespace VersionOrder {

// Negative when `a` is older than `b`, zero when they are the same, positive when newer.
int compare(QStringView a, QStringView b);

inline bool isNewer(QStringView candidate, QStringView current) {
    return compare(candidate, current) > 0;
}

} // namespace VersionOrder
