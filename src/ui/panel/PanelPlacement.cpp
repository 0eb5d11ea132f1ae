#include "ui/panel/PanelPlacement.h"

#include <algorithm>

namespace PanelPlacement {

QRect frame(const QPoint& anchor, const QSize& size, const std::optional<QRect>& area) {
    QRect frame(QPoint(anchor.x() - size.width() / 2, anchor.y() + margin), size);
    if (!area)
        return frame;
    const int bottom = area->bottom() - margin;
    if (frame.bottom() > bottom)
        frame.moveBottom(std::min(anchor.y() - margin, bottom));
    frame.moveTop(std::max(frame.top(), area->top() + margin));
    frame.moveLeft(std::max(frame.left(), area->left() + margin));
    frame.moveLeft(std::min(frame.left(), area->right() + 1 - margin - frame.width()));
    return frame;
}

} // namespace PanelPlacement
