#include "ui/status/LiveActivityGeometry.h"

#include <algorithm>

namespace LiveActivityGeometry {

double contentHeight(int rows) {
    return std::max(1, rows) * rowHeight + spaceAbove;
}

double panelHeight(int rows) {
    return contentHeight(rows) + 2 * margin;
}

namespace {

Placement framed(const QRectF& content, double beakX) {
    return {content.adjusted(-margin, -margin, margin, margin), beakX};
}

} // namespace

Placement place(const std::optional<QRectF>& item, const QRectF& area, int rows) {
    const double height = contentHeight(rows);
    const double half = contentWidth / 2;
    if (!item) {
        const QRectF content(area.center().x() - half, area.top() + topGap, contentWidth, height);
        return framed(content, half);
    }
    const double anchor = item->center().x();
    double x = std::max(area.left() + screenGap, anchor - half);
    x = std::min(x, area.right() - contentWidth - screenGap);
    // Touching the bottom of the icon; a panel at the bottom of the screen leaves no room
    // below, so the capsule then rests on the top of the icon instead.
    double top = std::max(item->bottom(), area.top());
    if (top + height > area.bottom())
        top = std::min(item->top(), area.bottom()) - height;
    return framed(QRectF(x, top, contentWidth, height), anchor - x);
}

} // namespace LiveActivityGeometry
