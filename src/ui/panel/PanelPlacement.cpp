#include "ui/panel/PanelPlacement.h"

#include "ui/status/TrayEdge.h"

#include <algorithm>

namespace PanelPlacement {

QRect frame(const QRect& icon, const QSize& size, const std::optional<QRect>& area) {
    const QPoint centre = icon.center();
    QRect frame(QPoint(centre.x() - size.width() / 2, icon.bottom() + 1 + margin), size);
    if (!area)
        return frame;
    switch (trayEdge(QRectF(icon), QRectF(*area))) {
    case TrayEdge::top:
        break;
    case TrayEdge::bottom:
        frame.moveBottom(icon.top() - 1 - margin);
        break;
    case TrayEdge::left:
        frame.moveTopLeft({icon.right() + 1 + margin, icon.top()});
        break;
    case TrayEdge::right:
        frame.moveTopRight({icon.left() - 1 - margin, icon.top()});
        break;
    }
    frame.moveBottom(std::min(frame.bottom(), area->bottom() - margin));
    frame.moveTop(std::max(frame.top(), area->top() + margin));
    frame.moveLeft(std::max(frame.left(), area->left() + margin));
    frame.moveRight(std::min(frame.right(), area->right() - margin));
    return frame;
}

} // namespace PanelPlacement
