#include "core/vercel/VercelTime.h"

#include <algorithm>
#include <cmath>

namespace {

// The widest range of JavaScript dates, which is where Vercel's numbers come from.
constexpr double kLimitMs = 8.64e15;

} // namespace

qint64 boundedMilliseconds(double ms) {
    if (std::isnan(ms))
        return 0;
    return static_cast<qint64>(std::clamp(ms, -kLimitMs, kLimitMs));
}

QDateTime dateFromMilliseconds(double ms) {
    return QDateTime::fromMSecsSinceEpoch(boundedMilliseconds(ms), Qt::UTC);
}
