#include "ui/panel/Triangle.h"

#include <QLineF>
#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

QPointF unit(QPointF v) {
    const double length = std::hypot(v.x(), v.y());
    return length > 0 ? v / length : QPointF();
}

// Qt's arc angle (degrees, counter-clockwise, y up) of `point` seen from `centre`.
double arcAngle(QPointF centre, QPointF point) {
    return std::atan2(centre.y() - point.y(), point.x() - centre.x()) * 180 / std::numbers::pi;
}

// A line from the current point towards `corner`, then an arc of `radius` tangent to both
// sides that turns onto the way to `next`: the rounded corner of a polygon.
void tangentArc(QPainterPath& path, QPointF corner, QPointF next, double radius) {
    const QPointF toPrevious = unit(path.currentPosition() - corner);
    const QPointF toNext = unit(next - corner);
    const double cosine = std::clamp(QPointF::dotProduct(toPrevious, toNext), -1.0, 1.0);
    const double half = std::acos(cosine) / 2;
    if (half < 1e-6 || std::abs(half - std::numbers::pi / 2) < 1e-6) {
        path.lineTo(corner); // collinear sides: nothing to round
        return;
    }
    const double reach = radius / std::tan(half);
    const QPointF start = corner + toPrevious * reach;
    const QPointF end = corner + toNext * reach;
    const QPointF centre = corner + unit(toPrevious + toNext) * (radius / std::sin(half));
    path.lineTo(start);
    const double from = arcAngle(centre, start);
    double sweep = arcAngle(centre, end) - from;
    if (sweep > 180)
        sweep -= 360;
    else if (sweep < -180)
        sweep += 360;
    path.arcTo(QRectF(centre.x() - radius, centre.y() - radius, 2 * radius, 2 * radius), from,
               sweep);
}

} // namespace

std::array<QPointF, 3> Triangle::corners(const QRectF& rect) const {
    const double w = rect.width();
    const double h = rect.height();
    return {QPointF(rect.left() + (0.5 - 0.22 * pull) * w, rect.top()),
            QPointF(rect.right(), rect.bottom()),
            QPointF(rect.left() + 0.28 * pull * w, rect.bottom() - 0.9 * pull * h)};
}

double Triangle::effectiveRadius(const QRectF& rect) const {
    return std::min(cornerRadius, 0.25 * rect.width());
}

QPainterPath Triangle::path(const QRectF& rect) const {
    const auto [a, b, c] = corners(rect);
    QPainterPath outline;
    const double radius = effectiveRadius(rect);
    if (radius <= 0) {
        outline.moveTo(a);
        outline.lineTo(b);
        outline.lineTo(c);
        outline.closeSubpath();
        return outline;
    }
    outline.moveTo((a + c) / 2);
    tangentArc(outline, a, b, radius);
    tangentArc(outline, b, c, radius);
    tangentArc(outline, c, a, radius);
    outline.closeSubpath();
    return outline;
}
