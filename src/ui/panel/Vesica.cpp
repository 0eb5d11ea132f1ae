#include "ui/panel/Vesica.h"

#include <cmath>
#include <numbers>

namespace Vesica {

QPainterPath path(const QRectF& rect) {
    QPainterPath outline;
    const double a = rect.width() / 2;
    const double b = rect.height() / 2;
    if (a <= 0 || b <= 0)
        return outline;
    const double radius = (a * a + b * b) / (2 * a);
    const double d = radius - a;
    const QPointF mid = rect.center();
    // Qt measures arc angles counter-clockwise with y pointing up, hence atan2(b, -d) names the
    // top point as seen from the right-hand centre.
    const double theta = std::atan2(b, -d) * 180 / std::numbers::pi;
    const double sweep = 2 * (180 - theta);
    const QRectF rightCircle(mid.x() + d - radius, mid.y() - radius, 2 * radius, 2 * radius);
    const QRectF leftCircle(mid.x() - d - radius, mid.y() - radius, 2 * radius, 2 * radius);

    outline.moveTo(mid.x(), mid.y() - b);
    outline.arcTo(rightCircle, theta, sweep);      // top → left side → bottom
    outline.arcTo(leftCircle, theta - 180, sweep); // bottom → right side → top
    outline.closeSubpath();
    return outline;
}

} // namespace Vesica
