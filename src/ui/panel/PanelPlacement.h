#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>
#include <optional>

// Where the drop-down panel opens: next to the tray icon on the side away from the tray's
// screen edge (under a top tray, above a bottom one, beside a side one), centred on the icon and
// kept inside the screen's usable area with a margin. Screen coordinates, y pointing down.
namespace PanelPlacement {

inline constexpr int margin = 6;

// `icon` is the tray icon's rectangle (or the click on it, one pixel); `area` the usable part of
// the screen that holds it, when known. The right and top margins win when the panel is
// larger than the area.
QRect frame(const QRect& icon, const QSize& size, const std::optional<QRect>& area);

} // namespace PanelPlacement
