#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>
#include <optional>

// Where the drop-down panel opens: centred under the tray icon and kept inside the screen's
// usable area with a margin. Screen coordinates, y pointing down.
namespace PanelPlacement {

inline constexpr int margin = 6;

// `anchor` is the tray icon's bottom centre (or the click position); `area` the usable part of
// the screen that holds it, when known. Below the anchor when the panel fits there, otherwise
// above it (a tray at the bottom of the screen); the right margin wins when the panel is wider
// than the area.
QRect frame(const QPoint& anchor, const QSize& size, const std::optional<QRect>& area);

} // namespace PanelPlacement
