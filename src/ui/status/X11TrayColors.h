#pragma once

#include <QColor>
#include <QRect>
#include <optional>

// The foreground colour an XEmbed tray declares for its icons (_NET_SYSTEM_TRAY_COLORS on the
// owner of the tray selection), which matches the panel it sits on. Absent without such a tray
// or off X11.
std::optional<QColor> x11TrayForeground();

// The colour on screen just left and right of `rect` (`alongRow`), or just above and below it,
// averaged: the bar an icon sits on. Absent off X11 or when the screen cannot be read.
std::optional<QColor> x11ColorBeside(const QRect& rect, bool alongRow);
