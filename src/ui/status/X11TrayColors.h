#pragma once

#include <QColor>
#include <optional>

// The foreground colour an XEmbed tray declares for its icons (_NET_SYSTEM_TRAY_COLORS on the
// owner of the tray selection), which matches the panel it sits on. Absent without such a tray
// or off X11.
std::optional<QColor> x11TrayForeground();
