#include "ui/status/LiveActivityGeometry.h"

#include <QtMath>
#include <algorithm>

namespace LiveActivityGeometry {

double contentHeight(int rows) {
    return std::max(1, rows) * rowHeight + spaceAbove;
}

double panelHeight(int rows) {
    return contentHeight(rows) + 2 * margin;
}

namespace {

Placement framed(const QRectF& content, double beakX, TrayEdge edge) {
    return {content.adjusted(-margin, -margin, margin, margin), beakX, edge};
}

// `low` when it fits, never past `high`; `low` wins when both cannot hold.
double clamp(double value, double low, double high) {
    return std::max(low, std::min(value, high));
}

} // namespace

Placement place(const std::optional<QRectF>& item, const QRectF& area, int rows) {
    const double height = contentHeight(rows);
    const double half = contentWidth / 2;
    if (!item) {
        // Where most trays sit: the top right corner.
        const QRectF content(area.right() - screenGap - contentWidth, area.top() + topGap,
                             contentWidth, height);
        return framed(content, contentWidth, TrayEdge::top);
    }
    const TrayEdge edge = trayEdge(*item, area);
    if (!isHorizontal(edge)) {
        // Beside a tray on a side of the screen, centred on the icon's row as far as the area
        // allows, the beak on the side facing the tray, level with the icon.
        const double x = edge == TrayEdge::left
                             ? std::max(item->right(), area.left()) + screenGap
                             : std::min(item->left(), area.right()) - screenGap - contentWidth;
        const double level = item->center().y();
        const double top = clamp(level - height / 2, area.top(), area.bottom() - height);
        return framed(QRectF(x, top, contentWidth, height), level - top, edge);
    }
    const double anchor = item->center().x();
    const double x = std::min(std::max(area.left() + screenGap, anchor - half),
                              area.right() - contentWidth - screenGap);
    // Touching the icon on the side away from the screen's edge, inside the usable area.
    const double top = edge == TrayEdge::top ? std::max(item->bottom(), area.top())
                                             : std::min(item->top(), area.bottom()) - height;
    return framed(QRectF(x, top, contentWidth, height), anchor - x, edge);
}

QMargins overTray(const QRectF& frame, const QRectF& item, const QRectF& area, TrayEdge edge) {
    const auto depth = [](double overlap) { return std::max(0, qCeil(overlap)); };
    switch (edge) {
    case TrayEdge::top:
        return {0, depth(std::max(item.bottom(), area.top()) - frame.top()), 0, 0};
    case TrayEdge::bottom:
        return {0, 0, 0, depth(frame.bottom() - std::min(item.top(), area.bottom()))};
    case TrayEdge::left:
        return {depth(std::max(item.right(), area.left()) - frame.left()), 0, 0, 0};
    case TrayEdge::right:
        return {0, 0, depth(frame.right() - std::min(item.left(), area.right())), 0};
    }
    return {};
}

} // namespace LiveActivityGeometry
