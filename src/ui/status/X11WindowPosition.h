#pragma once

#include <QPoint>
#include <QWindow>
#include <optional>

// Where a window's top-left corner is on the X11 screen, asked of the X server. Qt only knows
// the position of windows it placed itself; a tray icon's window is placed by the tray that
// embeds it, and Qt keeps reporting it at (0, 0). Absent on other platforms.
std::optional<QPoint> x11ScreenPosition(WId window);
