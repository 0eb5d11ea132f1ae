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

QRectF barAroundClick(const QPointF& click, const QRectF& area) {
    const QRectF point(click, QSizeF(0, 0));
    if (!area.contains(click))
        return point;
    switch (trayEdge(point, area)) {
    case TrayEdge::top:
        return QRectF(click.x(), area.top(), 0, 2 * (click.y() - area.top()));
    case TrayEdge::bottom:
        return QRectF(click.x(), 2 * click.y() - area.bottom(), 0, 2 * (area.bottom() - click.y()));
    case TrayEdge::left:
        return QRectF(area.left(), click.y(), 2 * (click.x() - area.left()), 0);
    case TrayEdge::right:
        return QRectF(2 * click.x() - area.right(), click.y(), 2 * (area.right() - click.x()), 0);
    }
    return point;
}

QPointF rightEndClick(const QRectF& area, double depth, TrayEdge edge) {
    return {area.right() - 2 * depth,
            edge == TrayEdge::bottom ? area.bottom() - depth : area.top() + depth};
}

std::optional<TrayEdge> reservedEdge(const QRectF& whole, const QRectF& area) {
    if (area.top() > whole.top())
        return TrayEdge::top;
    if (area.bottom() < whole.bottom())
        return TrayEdge::bottom;
    if (area.right() < whole.right())
        return TrayEdge::right;
    if (area.left() > whole.left())
        return TrayEdge::left;
    return std::nullopt;
}

QPointF cornerClick(const QRectF& whole, const QRectF& area) {
    constexpr double usualBarDepth = 16;
    // One pixel into the bar, so that the click lies outside the usable area.
    switch (reservedEdge(whole, area).value_or(TrayEdge::top)) {
    case TrayEdge::top:
        if (area.top() == whole.top())
            return rightEndClick(area, usualBarDepth, TrayEdge::top);
        return {area.right() - 1, area.top() - 1};
    case TrayEdge::bottom:
        return {area.right() - 1, area.bottom()};
    case TrayEdge::left:
        return {area.left() - 1, area.bottom() - 1};
    case TrayEdge::right:
        return {area.right(), area.bottom() - 1};
    }
    return area.topRight();
}
