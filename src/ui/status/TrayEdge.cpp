#include "ui/status/TrayEdge.h"

#include <algorithm>

TrayEdge trayEdge(const QRectF& icon, const QRectF& area) {
    const QPointF c = icon.center();
    if (c.y() < area.top())
        return TrayEdge::top;
    if (c.y() > area.bottom())
        return TrayEdge::bottom;
    if (c.x() < area.left())
        return TrayEdge::left;
    if (c.x() > area.right())
        return TrayEdge::right;
    const double top = c.y() - area.top();
    const double bottom = area.bottom() - c.y();
    const double left = c.x() - area.left();
    const double right = area.right() - c.x();
    constexpr double sideBias = 4;
    if (std::min(left, right) * sideBias < std::min(top, bottom))
        return left <= right ? TrayEdge::left : TrayEdge::right;
    return top <= bottom ? TrayEdge::top : TrayEdge::bottom;
}
