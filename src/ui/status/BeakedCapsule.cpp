#include "ui/status/BeakedCapsule.h"

#include <QTransform>
#include <algorithm>

double BeakedCapsule::halfBase() const {
    return std::max(17.0, beak * 1.9);
}

double BeakedCapsule::tipX(const QRectF& rect) const {
    const QRectF r = rect.adjusted(inset, inset, -inset, -inset);
    const double w = halfBase();
    const double c = std::max(r.left() + radius + w, rect.left() + beakX);
    return std::min(c, r.right() - radius - w);
}

void BeakedCapsule::addBeak(QPainterPath& path, double c, double top, double rectTop) const {
    const double w = halfBase();
    path.cubicTo(c - 0.45 * w, top, c - 0.28 * w, rectTop, c, rectTop);
    path.cubicTo(c + 0.28 * w, rectTop, c + 0.45 * w, top, c + w, top);
}

QPainterPath BeakedCapsule::path(const QRectF& rect) const {
    if (edge == TrayEdge::top)
        return upward(rect);
    if (edge == TrayEdge::bottom) {
        // y' = top + bottom - y: the rectangle onto itself, upside down.
        const QTransform flip(1, 0, 0, -1, 0, rect.top() + rect.bottom());
        return flip.map(upward(rect));
    }
    // A side beak is a top beak drawn in the rectangle turned a quarter: its top edge laid along
    // the side, running upwards on the left and downwards on the right.
    BeakedCapsule turned = *this;
    turned.edge = TrayEdge::top;
    const QRectF across(0, 0, rect.height(), rect.width());
    if (edge == TrayEdge::left) {
        turned.beakX = rect.height() - beakX;
        return QTransform(0, -1, 1, 0, rect.left(), rect.bottom()).map(turned.upward(across));
    }
    return QTransform(0, 1, -1, 0, rect.right(), rect.top()).map(turned.upward(across));
}

QPainterPath BeakedCapsule::upward(const QRectF& rect) const {
    const QRectF r = rect.adjusted(inset, inset, -inset, -inset);
    const double top = r.top() + beak;
    const double w = halfBase();
    const double c = tipX(rect);
    QPainterPath path;
    if (onlyBeak) {
        path.moveTo(c - w, top + 3);
        path.lineTo(c - w, top);
        addBeak(path, c, top, r.top());
        path.lineTo(c + w, top + 3);
        path.closeSubpath();
        return path;
    }
    path.moveTo(r.left() + radius, top);
    path.lineTo(c - w, top);
    if (showBeak)
        addBeak(path, c, top, r.top());
    // Each corner is an arc tangent to its two sides; the sides meet at right angles, so the
    // arc is a quarter circle of `radius` tucked into the corner.
    const double rr = std::min({radius, r.width() / 2, (r.bottom() - top) / 2});
    path.arcTo(QRectF(r.right() - 2 * rr, top, 2 * rr, 2 * rr), 90, -90);
    path.arcTo(QRectF(r.right() - 2 * rr, r.bottom() - 2 * rr, 2 * rr, 2 * rr), 0, -90);
    path.arcTo(QRectF(r.left(), r.bottom() - 2 * rr, 2 * rr, 2 * rr), -90, -90);
    path.arcTo(QRectF(r.left(), top, 2 * rr, 2 * rr), 180, -90);
    path.closeSubpath();
    return path;
}
